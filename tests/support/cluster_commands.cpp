// Commands about the cluster: the configuration message, what nodes tell one another, the guard of
// configuration changes. Where a function expects the lock, the command holds it.
#include <elog.h>
#include <ini.h>
#include <kq_instance.h>

#include <cctype>
#include <cstring>
#include <memory>
#include <regex>
#include <sstream>
#include <utility>

#include "support/binding.h"
#include "support/fields.h"

namespace test_support {

namespace {

using context = command_context;

constexpr byte guard_byte = 0x5A;

// A pool of a directive, with room for `pool` bytes; says what the module still holds of it.
class pool {
  public:
    explicit pool(ulint limit) : env(mem_env_create(limit)) {}
    pool(const pool&) = delete;
    pool& operator=(const pool&) = delete;
    ~pool() { mem_env_destroy(std::exchange(env, nullptr)); }
    std::string end() {
        ulint held = mem_env_destroy(std::exchange(env, nullptr));
        return held == 0 ? "" : "held " + std::to_string(held) + " blocks\n";
    }
    kqenv_t env;
};

std::string text_or_null(const void* text) {
    return text ? "\"" + std::string(static_cast<const schar*>(text)) + "\"" : "null";
}

bool is_plain(byte value) {
    return isalnum(value) || (value != 0 && strchr("/._-", value) != nullptr);
}

void append(std::vector<byte>& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void append_with_length(std::vector<byte>& bytes, const std::string& text) {
    bytes.push_back(static_cast<byte>(text.size()));
    bytes.push_back(static_cast<byte>(text.size() >> 8));
    append(bytes, text);
}

// Bytes of a message as text, such as 05 00 "/arch" 01 00 "A": letters, digits and "/._-" stand in
// double quotes, any other byte as two hexadecimal digits.
std::string wire_text(const byte* bytes, size_t size) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (size_t at = 0; at < size;) {
        if (at > 0) text += ' ';
        size_t end = at;
        while (end < size && is_plain(bytes[end]))
            end++;
        if (end > at) {
            text += "\"" + std::string(bytes + at, bytes + end) + "\"";
            at = end;
        } else {
            text += digits[bytes[at] >> 4];
            text += digits[bytes[at++] & 15];
        }
    }
    return text;
}

// The bytes of a text in that form, in which a line "entry PATH NAME" or "entry PATH" also stands
// for an entry with its lengths.
std::vector<byte> wire_bytes(const std::string& text) {
    static const std::regex word(R"RE("([^"]*)"|(\S+))RE");
    std::vector<byte> bytes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        bool entry = line.rfind("entry ", 0) == 0;
        if (entry) line.erase(0, 6);
        for (std::sregex_iterator at(line.begin(), line.end(), word), end; at != end; ++at) {
            bool quoted = (*at)[1].matched;
            std::string each = quoted ? (*at)[1] : (*at)[2];
            if (entry)
                append_with_length(bytes, each);
            else if (quoted)
                append(bytes, each);
            else
                bytes.push_back(static_cast<byte>(std::stoul(each, nullptr, 16)));
        }
    }
    return bytes;
}

// arch_cfg_info_encode INST_CHECK [off=N] [buf_len=N], into a block of exactly the size that was
// calculated, behind N guard bytes.
std::string encode(const context& call) {
    arch_cfg_hold lock;
    ulint size = arch_cfg_info_len_calc(call.number(0)), offset = call.option("off", 0);
    auto block = std::make_unique<byte[]>(offset + size);
    memset(block.get(), guard_byte, offset + size);
    ulint written = arch_cfg_info_encode(block.get(), offset, call.option("buf_len", offset + size),
                                         call.number(0));
    std::string text = std::to_string(written) + " bytes: ";
    if (written != size) return text + "but " + std::to_string(size) + " were calculated";
    for (ulint i = 0; i < offset; i++)
        if (block[i] != guard_byte) return text + "byte " + std::to_string(i) + " was changed";
    return text + wire_text(block.get() + offset, written);
}

// arch_cfg_info_decode_and_check ARCH_LOCAL_SHARE [pool=N]: the message's entries are the input, in
// a block of exactly their size; without input the block is null.
std::string decode(const context& call) {
    std::vector<byte> bytes = wire_bytes(call.input);
    auto block = bytes.empty() ? nullptr : std::make_unique<byte[]>(bytes.size());
    if (block) memcpy(block.get(), bytes.data(), bytes.size());
    pool blocks(call.option("pool", 0));
    arch_cfg_hold lock;
    kqcode_t code = arch_cfg_info_decode_and_check(
        blocks.env, block.get(), static_cast<ulint>(bytes.size()), call.number(0));
    bool changed = block && memcmp(block.get(), bytes.data(), bytes.size()) != 0;
    return code_text(code) + "\n" + (changed ? "the message was changed\n" : "") + blocks.end();
}

// arch_cfg_cmp FIELD=VALUE...: two records with a value in every field, the second with those.
std::string compare(const context& call) {
    arch_cfg_t first;
    memset(static_cast<void*>(&first), 0, sizeof first);
    arch_init(&first, "Name");
    for (const auto& each : record_fields())
        each.set(first, "77");
    arch_cfg_t second = first;
    for (const std::string& each : call.arguments)
        if (each.rfind("name=", 0) == 0)
            strcpy(second.name, each.c_str() + 5);
        else
            set_field(record_fields(), second, each);
    kqbool result = arch_cfg_cmp(&first, &second);
    bool symmetric = result == arch_cfg_cmp(&second, &first);
    return std::to_string(result) + (symmetric ? "" : " but the other way round it is not");
}

// The entries of a list, and what is wrong with its links.
std::string show_list(const kq_lst_t& list) {
    std::string text;
    ulint count = 0;
    const kq_lst_node_t* previous = nullptr;
    for (const kq_lst_node_t* node = list.start; node != nullptr; node = node->next) {
        text += ", " + text_or_null(node->data) + " " + text_or_null(node->flag);
        if (node->prev != previous) text += "\na node's prev is not its predecessor";
        previous = node;
        count++;
    }
    if (previous != list.end) text += "\nthe list's end is not its last node";
    if (count != list.count) text += "\nthe list counts " + std::to_string(list.count);
    return text + "\n";
}

// What a caller's list holds before the call.
kq_lst_t junk_list() {
    static kq_lst_node_t junk;
    return {7, &junk, &junk};
}

// arch_cfg_get_all_remote_dest [pool=N]
// arch_cfg_get_all_local_and_remote_dest ARCH_LOCAL_SHARE GET_ONE_LOCAL [pool=N]: here each text is
// a block of its own.
template <bool WithLocal>
std::string list(const context& call) {
    pool blocks(call.option("pool", 0));
    kq_lst_t list = junk_list();
    arch_cfg_hold lock;
    kqcode_t code = 0;
    if constexpr (WithLocal)
        code = arch_cfg_get_all_local_and_remote_dest(blocks.env, &list, call.number(0),
                                                      call.number(1));
    else
        code = arch_cfg_get_all_remote_dest(blocks.env, &list);
    std::string text = code_text(code) + show_list(list);
    for (kq_lst_node_t* node = list.start; node != nullptr;) {
        if (WithLocal) mem_free(blocks.env, node->data);
        if (WithLocal && node->flag != nullptr) mem_free(blocks.env, node->flag);
        mem_free(blocks.env, std::exchange(node, node->next));
    }
    return text + blocks.end();
}

// arch_cfg_remote_all_other_ep_check [language=N]
std::string endpoint_check(const context& call) {
    schar description[512] = "untouched";
    ulint size = 77;
    arch_cfg_hold lock;
    kqcode_t code = arch_cfg_remote_all_other_ep_check(
        static_cast<lint>(call.option("language", 0)), &size, description);
    return code_text(code) + ", " + description + " (" + std::to_string(size) + ")";
}

std::string guard_text() {
    arch_cfg_hold lock;
    return "guard " + std::to_string(arch_cfg_sys.arch_cfg_changing);
}

std::string take_guard(const context& call) {
    kqcode_t code = arch_set_cfg_changing(static_cast<byte>(call.number(0)));
    return code_text(code) + ", " + guard_text();
}

std::string release_guard(const context& call) {
    arch_reset_cfg_changing(static_cast<byte>(call.number(0)));
    return guard_text();
}

// arch_cfg_collect_inst_name START [n_rac=N]: the entries from START on, of which the first has
// N names already.
std::string collect(const context& call) {
    std::vector<arch_collect_t> entries(64);
    memset(static_cast<void*>(entries.data()), 0, entries.size() * sizeof entries[0]);
    ulint start = call.number(0);
    usint index = static_cast<usint>(start);
    entries.at(start).n_rac = static_cast<usint>(call.option("n_rac", 0));
    arch_cfg_collect_inst_name(&index, entries.data());
    std::string text = "index " + std::to_string(index) + "\n";
    for (ulint i = 0; i < entries.size(); i++) {
        if (i < index && i >= start) text += std::to_string(i) + ":";
        for (int name = 0; name < entries[i].n_rac; name++)
            text += " \"" + std::string(entries[i].inst_name_arr[name]) + "\"";
        if ((i < index && i >= start) || entries[i].n_rac > 0) text += "\n";
    }
    return text;
}

// rarch_cfg_arch_path_get [pool=N]
std::string paths(const context& call) {
    pool blocks(call.option("pool", 0));
    pathname_t unwritten;
    pathname_t* found = &unwritten;
    ulint count = 77;
    arch_cfg_hold lock;
    kqcode_t code = rarch_cfg_arch_path_get(blocks.env, &count, &found);
    std::string text =
        code_text(code) + ", " + std::to_string(count) + " paths" + (found ? "" : ", null");
    for (ulint i = 0; i < count; i++)
        text += " " + std::string(found[i]);
    mem_free(blocks.env, found);
    return text + "\n" + blocks.end();
}

}  // namespace

const command_table& cluster_commands() {
    static const command_table table = {
        {"arch_cfg_info_encode", encode},
        {"arch_cfg_info_decode_and_check", decode},
        {"arch_cfg_cmp", compare},
        {"arch_cfg_get_all_remote_dest", list<false>},
        {"arch_cfg_get_all_local_and_remote_dest", list<true>},
        {"arch_cfg_remote_all_other_ep_check", endpoint_check},
        {"arch_set_cfg_changing", take_guard},
        {"arch_reset_cfg_changing", release_guard},
        {"arch_cfg_collect_inst_name", collect},
        {"rarch_cfg_arch_path_get", paths},
        {"nodes",
         done<[](const context& call) { ini_set_value(ini_index_hpc_node, call.number(0)); }>},
        {"close_instance", bound<kq_instance_close>},
    };
    return table;
}

}  // namespace test_support
