#include "registry/text_index.h"

#include <time.h>

#include <bit>
#include <utility>

#include "common/folded_text.h"
#include "os.h"

namespace arch {
namespace {

constexpr ulint64 prime = (ulint64{1} << 61) - 1;

// As many characters as stay below the prime, and their part of a word.
constexpr std::size_t step = 7;
constexpr ulint64 step_mask = (ulint64{1} << 8 * step) - 1;

// Below 2^62, and the same remainder by the prime as the product.
ulint64 product(ulint64 left, ulint64 right) {
    const unsigned __int128 whole = static_cast<unsigned __int128>(left) * right;
    return (static_cast<ulint64>(whole) & prime) + static_cast<ulint64>(whole >> 61);
}

ulint64 make_key(const void* address) {
    timespec now{};
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    const auto moment = static_cast<ulint64>(now.tv_nsec) << 32 ^ static_cast<ulint64>(now.tv_sec);
    const ulint64 mixed = (moment ^ reinterpret_cast<std::uintptr_t>(address)) * 0x9e3779b97f4a7c15;
    return mixed % (prime - 2) + 2;
}

}  // namespace

text_index::text_index() : key_(make_key(this)) {}

text_index::~text_index() {
    free_slots();
}

void text_index::free_slots() {
    if (fingerprints_ != own_fingerprints_.data()) os_free(fingerprints_);
}

// The text as a polynomial, with seven characters a coefficient, at the key; and its kind, so that
// it is never 0.
ulint64 text_index::fingerprint(text_kind kind, std::string_view text) const {
    ulint64 sum = text.size();
    for (; text.size() > step; text.remove_prefix(step))
        sum = product(sum + (fold_word(word_at(text.data())) & step_mask), key_);
    return product(sum + fold_word(head_of(text)), key_) << 2 | static_cast<ulint64>(kind);
}

std::size_t text_index::place_of(ulint64 fingerprint) const {
    return fingerprint * 0x9e3779b97f4a7c15 >> (64 - std::countr_zero(size_));
}

bool text_index::contains(text_kind kind, std::string_view text) const {
    const ulint64 sought = fingerprint(kind, text);
    for (std::size_t at = place_of(sought); fingerprints_[at] != 0; at = next(at))
        if (fingerprints_[at] == sought && same_text(texts_[at], text)) return true;
    return false;
}

void text_index::put(ulint64 fingerprint, const schar* text) {
    std::size_t at = place_of(fingerprint);
    while (fingerprints_[at] != 0)
        at = next(at);
    fingerprints_[at] = fingerprint;
    texts_[at] = text;
}

// One block holds both: the fingerprints, cleared, and behind them the texts.
bool text_index::grow() {
    const std::size_t larger = 2 * size_;
    auto* block =
        static_cast<ulint64*>(os_malloc(larger * (sizeof *fingerprints_ + sizeof *texts_)));
    if (block == nullptr) return false;
    ulint64* const fingerprints = std::exchange(fingerprints_, block);
    const schar** const texts =
        std::exchange(texts_, reinterpret_cast<const schar**>(block + larger));
    const std::size_t size = std::exchange(size_, larger);
    std::memset(block, 0, larger * sizeof *block);
    for (std::size_t at = 0; at < size; ++at)
        if (fingerprints[at] != 0) put(fingerprints[at], texts[at]);
    if (fingerprints != own_fingerprints_.data()) os_free(fingerprints);
    return true;
}

void text_index::add(text_kind kind, std::string_view text, const schar* kept) {
    is_complete_ = is_complete_ && (4 * used_ < 3 * size_ || grow());
    if (!is_complete_) return;
    put(fingerprint(kind, text), kept);
    ++used_;
}

}  // namespace arch
