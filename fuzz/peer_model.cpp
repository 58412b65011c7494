#include "peer_model.h"

#include <strings.h>

#include <algorithm>

namespace test_support {

namespace {

void append(std::vector<byte>& body, const std::string& text) {
    body.push_back(static_cast<byte>(text.size() % 256));
    body.push_back(static_cast<byte>(text.size() / 256));
    body.insert(body.end(), text.begin(), text.end());
}

bool is_control(char character) {
    auto value = static_cast<unsigned char>(character);
    return value < 32 || value == 127;
}

// Takes a text with its length from the front; false when there is none that is allowed.
bool take(std::string& rest, size_t longest, std::string& text) {
    if (rest.size() < 2) return false;
    size_t length =
        static_cast<unsigned char>(rest[0]) + 256u * static_cast<unsigned char>(rest[1]);
    if (length > longest || 2 + length > rest.size()) return false;
    text = rest.substr(2, length);
    rest.erase(0, 2 + length);
    return std::none_of(text.begin(), text.end(), is_control);
}

bool has(const std::vector<archive_path>& entries, const archive_path& wanted, bool with_name) {
    return std::any_of(entries.begin(), entries.end(), [&](const archive_path& each) {
        if (each.path != wanted.path) return false;
        return !with_name || strcasecmp(each.owner.c_str(), wanted.owner.c_str()) == 0;
    });
}

}  // namespace

std::vector<byte> message_of(const std::vector<archive_path>& own, bool with_names) {
    std::vector<byte> body;
    for (const archive_path& each : own) {
        append(body, each.path);
        if (with_names) append(body, each.owner);
    }
    return body;
}

std::optional<std::vector<archive_path>> read_message(const byte* body, size_t size,
                                                      bool with_names) {
    std::string rest(body, body + size);
    std::vector<archive_path> entries;
    while (!rest.empty()) {
        archive_path& each = entries.emplace_back();
        if (!take(rest, 256, each.path)) return std::nullopt;
        if (with_names && !take(rest, 128, each.owner)) return std::nullopt;
    }
    return entries;
}

kqcode_t answer_of(const std::vector<archive_path>& own, ulint nodes, const byte* body, size_t size,
                   bool is_shared) {
    auto entries = read_message(body, size, is_shared);
    if (!entries) return ARCH_E_PEER_CFG_MISMATCH;
    if (!is_shared && nodes > 1) return ARCH_E_PEER_CFG_MISMATCH;
    for (const archive_path& each : own) {
        if (is_shared && each.is_remote && !has(*entries, each, true))
            return ARCH_E_PEER_CFG_MISMATCH;
        if (!is_shared && has(*entries, each, false)) return ARCH_E_PEER_PATH_CONFLICT;
    }
    return 0;
}

void fill_registry(const std::vector<archive_path>& own) {
    arch_cfg_sys_destroy();
    arch_cfg_sys_init_env();
    for (const archive_path& each : own) {
        arch_cfg_t* arch = nullptr;
        std::string name = "S" + std::to_string(arch_cfg_sys.arch_lst.count);
        arch_cfg_create(nullptr, name.c_str(), &arch);
        arch->type = each.is_remote ? ARCH_TYPE_REMOTE : ARCH_TYPE_LOCAL;
        arch_cfg_set_dest(arch, each.path.c_str());
        if (each.is_remote) arch->timer_name[each.owner.copy(arch->timer_name, 256)] = '\0';
    }
}

}  // namespace test_support
