#include "placement.h"

#include <algorithm>
#include <functional>

#include "catalogue.h"
#include "text.h"

namespace {

bool has(const std::string& text, const std::string& piece) {
    return text.find(piece) != text.npos;
}

// Messages that do not name their key, or name another before it. The first fragment that a
// message has decides; of its two keys the first that the section has.
struct message_row {
    const char* fragment;
    const char* key;
    const char* other_key;
};

constexpr message_row message_rows[] = {
    {"ARCH_INCOMING_PATH", "ARCH_INCOMING_PATH", nullptr},
    {"out of space", "ARCH_INCOMING_PATH", "ARCH_DEST"},
    {"too long(max 16)", "ARCH_DEST", nullptr},
    {"too long(max 256)", "ARCH_INCOMING_PATH", "ARCH_DEST"},
    {"DFS path", "ARCH_INCOMING_PATH", "ARCH_DEST"},
    {"kqmal.ini", "ARCH_DEST", nullptr},
    {"Mal sys not configured", "ARCH_DEST", nullptr},
    {"kqtimer.ini", "ARCH_TIMER_NAME", nullptr},
    {"set ARCH_WAIT_APPLY or WAIT_APPLY", "WAIT_APPLY", nullptr},
    {"ARCH_DEST_IP and ARCH_DEST_PORT", nullptr, nullptr},
};

bool use_key(placement& place, const char* key, const config_file& file) {
    ulint line = key != nullptr ? file.key_line(place.section, key) : 0;
    if (line == 0) return false;
    place.key = key;
    place.line = line;
    return true;
}

// The section's key with the longest name that the message mentions: ARCH_DEST_ID, not ARCH_DEST.
const char* mentioned_key(const std::string& said, const std::string& section,
                          const config_file& file) {
    const char* found = nullptr;
    for (const key_entry& entry : all_keys()) {
        bool longer =
            found == nullptr || std::string(entry.name).size() > std::string(found).size();
        if (longer && has(said, entry.name) && file.key_line(section, entry.name) != 0)
            found = entry.name;
    }
    return found;
}

using arch_test = std::function<bool(const arch_cfg_t&)>;

const arch_cfg_t* nth(ulint number, const arch_test& test) KQ_REQUIRES(arch_cfg_sys.mutex) {
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        if (test(*arch) && --number == 0) return arch;
    return nullptr;
}

bool is_one_of(const arch_cfg_t& arch, type_set types) {
    return (types & type_bit(arch.type)) != 0;
}

constexpr type_set path_types = type_bit(ARCH_TYPE_LOCAL) | type_bit(ARCH_TYPE_REMOTE);
constexpr type_set raft_types = type_bit(ARCH_TYPE_RAFT) | type_bit(ARCH_TYPE_LEARNER);

// Rules that count: the code, and which destination of the types is the one too many (or, with 1,
// the one that is in the way).
struct count_row {
    kqcode_t code;
    ulint number;
    type_set types;
};

constexpr count_row count_rows[] = {
    {ARCH_E_TOO_MANY_SYNC, 9, type_bit(ARCH_TYPE_SYNC)},
    {ARCH_E_TOO_MANY_LOCAL, 9, type_bit(ARCH_TYPE_LOCAL)},
    {ARCH_E_TOO_MANY_LOCAL, 9, type_bit(ARCH_TYPE_REMOTE)},
    {ARCH_E_TOO_MANY_ASYNC, 9, type_bit(ARCH_TYPE_ASYNC)},
    {ARCH_E_TOO_MANY_REALTIME, 9, type_bit(ARCH_TYPE_REALTIME)},
    {ARCH_E_TOO_MANY_TIMELY, 9, type_bit(ARCH_TYPE_TIMELY)},
    {ARCH_E_TOO_MANY_LEARNER, 10, type_bit(ARCH_TYPE_LEARNER)},
    {ARCH_E_TOO_MANY_RAFT, 19, raft_types},
    {ARCH_E_TOO_MANY_SUBSCRIBE, 2, type_bit(ARCH_TYPE_SUBSCRIBE)},
    {ARCH_E_SYNC_CONFLICT, 1, type_bit(ARCH_TYPE_SYNC)},
    {ARCH_E_REALTIME_TIMELY_CONFLICT, 1, type_bit(ARCH_TYPE_TIMELY)},
    {ARCH_E_SUBSCRIBE_CONFLICT, 1, type_bit(ARCH_TYPE_SUBSCRIBE)},
    {ARCH_E_MPP_NOT_SUPPORTED, 1, type_bit(ARCH_TYPE_TIMELY) | type_bit(ARCH_TYPE_REMOTE)},
    {ARCH_E_NO_LOCAL, 1, ~type_bit(ARCH_TYPE_LOCAL)},
    {ARCH_E_INVALID_VALUE, 1, type_bit(ARCH_TYPE_RAFT)},
};

const arch_cfg_t* counted(kqcode_t code) KQ_REQUIRES(arch_cfg_sys.mutex) {
    for (const count_row& row : count_rows) {
        if (row.code != code) continue;
        const arch_cfg_t* found =
            nth(row.number, [&row](const arch_cfg_t& arch) { return is_one_of(arch, row.types); });
        if (found != nullptr) return found;
    }
    return nullptr;
}

using pair_test = std::function<bool(const arch_cfg_t&, const arch_cfg_t&)>;

struct arch_pair {
    const arch_cfg_t* earlier;
    const arch_cfg_t* later;
};

// The first pair for which the test holds, in the order in which the rules compare.
arch_pair find_pair(type_set types, const pair_test& test) KQ_REQUIRES(arch_cfg_sys.mutex) {
    for (const arch_cfg_t* first = arch_cfg_sys.arch_lst.start; first; first = first->link.next)
        for (const arch_cfg_t* later = first->link.next; later; later = later->link.next)
            if (is_one_of(*first, types) && is_one_of(*later, types) && test(*first, *later))
                return {first, later};
    return {nullptr, nullptr};
}

bool same_directory(const arch_cfg_t& left, const arch_cfg_t& right) {
    return std::string(left.dest) == right.dest;
}

bool same_remote_instance(const arch_cfg_t& left, const arch_cfg_t& right) {
    return left.type == ARCH_TYPE_REMOTE && right.type == ARCH_TYPE_REMOTE &&
           same_text(left.timer_name, right.timer_name);
}

placement header_of(const arch_cfg_t& arch, const config_file& file) {
    return {arch.name, "", std::max(file.section_line(arch.name), 1U), ""};
}

placement place_duplicate_path(const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    arch_pair pair = find_pair(path_types, [](const arch_cfg_t& left, const arch_cfg_t& right) {
        return same_directory(left, right) || same_remote_instance(left, right);
    });
    if (pair.later == nullptr) return {};
    placement place = header_of(*pair.later, file);
    bool directory = same_directory(*pair.earlier, *pair.later);
    bool incoming = directory && use_key(place, "ARCH_INCOMING_PATH", file);
    if (!incoming) use_key(place, "ARCH_DEST", file);
    place.text = std::string("section [") + pair.earlier->name + "] " +
                 (directory ? "uses the same directory" : "names the same instance");
    return place;
}

// A Raft member that has the same as another, or as this node itself.
placement place_raft_clash(const char* key, const pair_test& same, const arch_test& is_self,
                           const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    const arch_cfg_t* found = find_pair(raft_types, same).later;
    if (found == nullptr)
        found = nth(1, [&](const arch_cfg_t& arch) {
            return is_one_of(arch, raft_types) && is_self(arch);
        });
    if (found == nullptr) return {};
    placement place = header_of(*found, file);
    use_key(place, key, file);
    return place;
}

placement place_raft_address(const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    auto same = [](const arch_cfg_t& left, const arch_cfg_t& right) {
        return same_text(left.arch_dest_ip, right.arch_dest_ip) &&
               left.arch_dest_port == right.arch_dest_port;
    };
    auto is_self = [](const arch_cfg_t& arch) KQ_NO_THREAD_ANALYSIS {
        return same_text(arch.arch_dest_ip, arch_cfg_sys.xmal_ip) &&
               arch.arch_dest_port == arch_cfg_sys.xmal_port;
    };
    return place_raft_clash("ARCH_DEST_IP", same, is_self, file);
}

placement place_raft_id(const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    auto same = [](const arch_cfg_t& left, const arch_cfg_t& right) {
        return left.arch_dest_id == right.arch_dest_id;
    };
    auto is_self = [](const arch_cfg_t& arch) KQ_NO_THREAD_ANALYSIS {
        return arch.arch_dest_id == arch_cfg_sys.raft_self_id;
    };
    return place_raft_clash("ARCH_DEST_ID", same, is_self, file);
}

placement place_raft_name(const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    auto same = [](const arch_cfg_t& left, const arch_cfg_t& right) {
        return same_text(left.dest, right.dest);
    };
    return place_raft_clash(
        "ARCH_DEST", same, [](const arch_cfg_t&) { return false; }, file);
}

// The first global key that the message mentions; line 1 when the file does not have it.
placement place_global_key(const std::string& said, const config_file& file) {
    placement place;
    size_t first = said.npos;
    for (const key_entry& entry : all_keys()) {
        size_t at = said.find(entry.name);
        if (entry.scope != key_scope::global || at >= first) continue;
        first = at;
        place.key = entry.name;
        place.line = std::max(file.key_line(entry.name), 1U);
    }
    return place;
}

}  // namespace

placement place_in(const arch_cfg_t& arch, const std::string& said, const config_file& file) {
    placement place = header_of(arch, file);
    for (const message_row& row : message_rows) {
        if (!has(said, row.fragment)) continue;
        if (!use_key(place, row.key, file)) use_key(place, row.other_key, file);
        return place;
    }
    use_key(place, mentioned_key(said, place.section, file), file);
    return place;
}

placement place_in_whole(kqcode_t code, const std::string& said, const config_file& file) {
    const arch_cfg_t* named = nth(
        1, [&said](const arch_cfg_t& arch) { return has(said, "[" + visible(arch.name) + "]"); });
    if (named != nullptr) return place_in(*named, said, file);
    if (code == ARCH_E_DEST_EXISTS) return place_duplicate_path(file);
    if (has(said, "has same ARCH_DEST name")) return place_raft_name(file);
    if (has(said, "has same ARCH_DEST_ID")) return place_raft_id(file);
    if (has(said, "ARCH_DEST_IP")) return place_raft_address(file);
    placement global = place_global_key(said, file);
    if (!global.key.empty()) return global;
    const arch_cfg_t* found = counted(code);
    if (code == ARCH_E_SYNC_CONFLICT && said.empty())
        found = nth(1, [](const arch_cfg_t& arch) { return arch.n_inst > 1; });
    return found != nullptr ? header_of(*found, file) : placement{};
}
