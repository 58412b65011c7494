// The configuration message of a cluster: made, and a peer's checked.
#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <utility>

#include "benchmarks.h"
#include "foreign_peers.h"
#include "peers.h"

namespace bench {
namespace {

// 8 LOCAL and 8 REMOTE destinations, loaded, and their message with names.
class exchanging {
  public:
    exchanging() : on_(full_instance(), storage::asm_disk_group), loaded_(on_) {
        const arch_cfg_hold hold;
        message_.resize(arch_cfg_info_len_calc(1));
        check(encode() == message_.size(), "the message is not as long as calculated");
    }

    ulint measure() const KQ_REQUIRES(arch_cfg_sys.mutex) { return arch_cfg_info_len_calc(1); }
    ulint encode() KQ_REQUIRES(arch_cfg_sys.mutex) {
        return arch_cfg_info_encode(message_.data(), 0, 0, 1);
    }

    const byte* body() const { return message_.data() + 4; }
    ulint body_length() const { return static_cast<ulint>(message_.size() - 4); }
    std::size_t length() const { return message_.size(); }

    std::vector<packed_entry> entries() const {
        std::vector<packed_entry> made;
        for (const destination& dest : on_.destinations())
            if (!dest.directory.empty())
                made.push_back({dest.directory, dest.instances.empty() ? std::string(own_name)
                                                                       : dest.instances.front()});
        return made;
    }

  private:
    instance on_;
    loaded_registry loaded_;
    std::vector<byte> message_;
};

// A node of the plain decoder's lists.
struct node {
    node* next;
    pathname_t path;
    sysname_t name;
};

class node_list {
  public:
    ~node_list() {
        while (first_ != nullptr)
            std::free(std::exchange(first_, first_->next));
    }

    node& add() {
        node* made = static_cast<node*>(std::malloc(sizeof(node)));
        check(made != nullptr, "no memory");
        made->next = nullptr;
        *end_ = made;
        end_ = &made->next;
        return *made;
    }

    const node* first() const { return first_; }

    bool has(const node& wanted) const {
        for (const node* at = first_; at != nullptr; at = at->next)
            if (std::strcmp(at->path, wanted.path) == 0 && strcasecmp(at->name, wanted.name) == 0)
                return true;
        return false;
    }

  private:
    node* first_ = nullptr;
    node** end_ = &first_;
};

template <std::size_t Size>
const byte* take_text(const byte* at, const byte* end, schar (&text)[Size]) {
    if (end - at < 2) return nullptr;
    const std::size_t length = static_cast<std::size_t>(at[0] | at[1] << 8);
    if (length >= Size || length > static_cast<std::size_t>(end - at - 2)) return nullptr;
    std::memcpy(text, at + 2, length);
    text[length] = '\0';
    return at + 2 + length;
}

// Decodes into a list and looks for every REMOTE destination of the registry in it.
bool decode_plainly(const byte* at, const byte* end) {
    node_list peer;
    while (at != end) {
        node& entry = peer.add();
        at = take_text(at, end, entry.path);
        if (at != nullptr) at = take_text(at, end, entry.name);
        if (at == nullptr) return false;
    }
    node_list own;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch != nullptr;
         arch = arch->link.next) {
        if (arch->type != ARCH_TYPE_REMOTE) continue;
        node& entry = own.add();
        std::strcpy(entry.path, arch->dest);
        std::strcpy(entry.name, arch->timer_name);
    }
    for (const node* wanted = own.first(); wanted != nullptr; wanted = wanted->next)
        if (!peer.has(*wanted)) return false;
    return true;
}

}  // namespace

void encode_message(benchmark::State& state) {
    exchanging on;
    const arch_cfg_hold hold;
    ulint worst = 0;
    for (auto _ : state) {
        const ulint length = on.measure();
        worst |= length ^ on.encode();
        benchmark::ClobberMemory();
    }
    check(worst == 0, "the message is not as long as calculated");
}

void encode_message_only(benchmark::State& state) {
    exchanging on;
    const arch_cfg_hold hold;
    for (auto _ : state) {
        benchmark::DoNotOptimize(on.encode());
        benchmark::ClobberMemory();
    }
}

void pack_message(benchmark::State& state) {
    const exchanging on;
    const std::vector<packed_entry> entries = on.entries();
    check(entries.size() == 16, "there are not 16 paths");
    msgpack_packer packer;
    for (auto _ : state)
        benchmark::DoNotOptimize(packer.pack(entries));
}

void decode_message(benchmark::State& state) {
    const exchanging on;
    const kqenv_t pool = mem_env_create(0);
    const arch_cfg_hold hold;
    kqcode_t worst = 0;
    for (auto _ : state)
        worst |= arch_cfg_info_decode_and_check(pool, on.body(), on.body_length(), 1);
    check(mem_env_destroy(pool) == 0, "a block of the pool is still held");
    check(worst == 0, "the message does not agree");
}

void decode_message_plainly(benchmark::State& state) {
    const exchanging on;
    const arch_cfg_hold hold;
    bool is_good = true;
    for (auto _ : state)
        is_good = decode_plainly(on.body(), on.body() + on.body_length()) && is_good;
    check(is_good, "the message does not agree");
}

}  // namespace bench
