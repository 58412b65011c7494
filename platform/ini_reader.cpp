// The walk over the lines of an INI file, and the reader of kqarch.ini on top of it.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "arch_cfg.h"
#include "elog.h"
#include "ini.h"
#include "kq_instance.h"
#include "os.h"
#include "posix_file.h"
#include "text.h"

using namespace platform;

namespace {

struct block_deleter {
    void operator()(char* block) const { os_free(block); }
};
using text_block = std::unique_ptr<char, block_deleter>;

// The whole file, with room for a terminator behind it.
struct file_text {
    text_block data;
    std::size_t size = 0;
    std::size_t capacity = 0;
};

bool grow(file_text& text, std::size_t capacity) {
    text_block larger(static_cast<char*>(os_malloc(capacity + 1)));
    if (larger == nullptr) return false;
    if (text.size > 0) std::memcpy(larger.get(), text.data.get(), text.size);
    text.data = std::move(larger);
    text.capacity = capacity;
    return true;
}

// Reads until the end is seen, whatever size the file was said to have when it was opened.
kqcode_t read_whole(const schar* path, file_text& text) {
    struct stat status;
    unique_fd file = open_regular_file(path, status);
    if (!file) return ARCH_E_FILE_OPEN;
    const std::size_t size = static_cast<std::size_t>(status.st_size);
    if (!grow(text, size + 1)) return ARCH_E_OUT_OF_MEMORY;
    for (;;) {
        if (text.size == text.capacity && !grow(text, 2 * text.capacity)) {
            return ARCH_E_OUT_OF_MEMORY;
        }
        ssize_t length =
            read_some(file.get(), text.data.get() + text.size, text.capacity - text.size);
        if (length < 0) return ARCH_E_FILE_OPEN;
        text.size += static_cast<std::size_t>(length);
        // One character more was asked for than the file was said to have: the end was seen.
        if (length == 0 || (text.size == size && size > 0)) return 0;
    }
}

// A carriage return before the line feed is none of the text either, and no text that ends with one
// would be read back from the line that is written of it.
bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

// A piece of the text, from `begin` up to `end`.
struct span {
    char* begin;
    char* end;

    std::size_t size() const { return static_cast<std::size_t>(end - begin); }
    char* find(char c) const { return static_cast<char*>(std::memchr(begin, c, size())); }
    char* find_or_end(char c) const {
        char* found = find(c);
        return found != nullptr ? found : end;
    }
};

inline span trimmed(span piece) {
    while (piece.begin < piece.end && is_blank(*piece.begin))
        ++piece.begin;
    while (piece.begin < piece.end && is_blank(piece.end[-1]))
        --piece.end;
    return piece;
}

// The text of a piece, ended in place: what follows it has been looked at already.
char* terminated(span piece) {
    *piece.end = '\0';
    return piece.begin;
}

// A message that the callback may change like any other value.
struct bad_line {
    schar message[64];

    void fill(kq_ini_line_t& line, const schar* what) {
        copy_text(message, what);
        line.kind = KQ_INI_BAD;
        line.key = message + std::strlen(message);
        line.value = message;
    }
};

// False for a line that says nothing: a blank one or a comment.
bool parse_line(span piece, kq_ini_line_t& line, bad_line& bad) {
    piece = trimmed(piece);
    if (piece.begin == piece.end || *piece.begin == '#' || *piece.begin == ';') return false;
    if (*piece.begin == '[') {
        if (piece.size() < 2 || piece.end[-1] != ']') {
            bad.fill(line, "a section header without ]");
            return true;
        }
        line.kind = KQ_INI_SECTION;
        line.value = piece.end;
        line.key = terminated(trimmed({piece.begin + 1, piece.end - 1}));
        *line.value = '\0';
        return true;
    }
    char* equals = piece.find('=');
    if (equals == nullptr || equals == piece.begin) {
        bad.fill(line, equals == nullptr ? "neither a section nor KEY = VALUE" : "no key before =");
        return true;
    }
    line.kind = KQ_INI_KEY;
    line.value = terminated(trimmed({equals + 1, piece.end}));
    line.key = terminated(trimmed({piece.begin, equals}));
    return true;
}

kqcode_t walk_lines(span text, kq_ini_line_fn each, void* context) {
    char* next = text.begin;
    char* end = text.end;
    if (text.size() >= 3 && std::memcmp(next, "\xef\xbb\xbf", 3) == 0) next += 3;
    char* nul = span{next, end}.find_or_end('\0');
    kq_ini_line_t line{};
    bad_line bad;
    while (next < end) {
        span piece{next, span{next, end}.find_or_end('\n')};
        next = std::min(piece.end + 1, end);
        ++line.number;
        if (nul < piece.end) {
            bad.fill(line, "NUL byte");
            nul = span{next, end}.find_or_end('\0');
        } else if (!parse_line(piece, line, bad)) {
            continue;
        }
        kqcode_t code = each(&line, context);
        if (code < 0) return code;
    }
    return 0;
}

// The section that the keys of kqarch.ini belong to.
struct arch_section {
    arch_cfg_t* record = nullptr;
};

void print_refusal(const kq_ini_line_t& line, kqcode_t code) noexcept {
    bool is_bad = line.kind == KQ_INI_BAD;
    try {
        std::string what = is_bad ? line.value : escape_controls(line.key) + " refused";
        aq_fprintf_inner(stderr, "kqarch.ini:%u: %s, code %d\n", line.number, what.c_str(), code);
    } catch (const std::bad_alloc&) {
        aq_fprintf_inner(stderr, "kqarch.ini:%u: refused, code %d\n", line.number, code);
    }
}

// Start-up has the registry for itself: naming it leaves its lock alone.
kqcode_t hand_over(const kq_ini_line_t* line, void* context) {
    auto* section = static_cast<arch_section*>(context);
    kqcode_t code = ARCH_E_INVALID_VALUE;
    if (line->kind == KQ_INI_SECTION) {
        code = arch_cfg_create(&arch_cfg_sys, line->key, &section->record);
    } else if (line->kind == KQ_INI_KEY) {
        code = arch_cfg_add_value(&arch_cfg_sys, section->record, line->key, line->value);
    }
    if (code < 0) print_refusal(*line, code);
    return code;
}

struct {
    kq_arch_reader_fn read;
    void* context;
} other_reader;

}  // namespace

void kq_ini_read_arch_by(kq_arch_reader_fn reader, void* context) {
    other_reader = {reader, context};
}

kqcode_t kq_ini_walk(const schar* path, kq_ini_line_fn each, void* context) {
    std::string buffer;
    const schar* real = real_path(path, buffer);
    if (real == nullptr) return ARCH_E_FILE_OPEN;
    file_text text;
    kqcode_t code = read_whole(real, text);
    return code < 0 ? code : kq_ini_walk_text(text.data.get(), text.size, each, context);
}

kqcode_t kq_ini_walk_text(schar* text, ulint64 size, kq_ini_line_fn each, void* context) {
    return walk_lines({text, text + size}, each, context);
}

kqcode_t ini_read_other_info_for_posix(const schar* path, ulint which) {
    if (which != INI_READ_ARCH) return ARCH_E_PARA_NOT_ALLOWED;
    if (other_reader.read != nullptr) return other_reader.read(other_reader.context);
    arch_section section;
    return kq_ini_walk(path, hand_over, &section);
}
