// Commands about the Raft group, under the names of the module's functions, with the arguments in
// the order of their declaration. A call that hands out the text of kqarch.ini says what it is:
// the registry's, empty or another; with "rec=null" none is asked for.
#include <cstring>
#include <memory>

#include "support/binding.h"

namespace test_support {

namespace {

using context = command_context;

// The text that a call is to leave, with guard bytes behind it.
class record_text {
  public:
    explicit record_text(const context& call) {
        for (const std::string& each : call.arguments)
            asked = asked && each != "rec=null";
        memset(block.get(), 'x', size);
    }

    schar* get() { return asked ? block.get() : nullptr; }

    std::string verdict() const {
        static schar now[ARCH_CFG_TEXT_SIZE];
        if (!asked) return "";
        if (std::string(&block[ARCH_CFG_TEXT_SIZE], 64) != std::string(64, 'x'))
            return ", rec is too long";
        if (memchr(block.get(), 0, ARCH_CFG_TEXT_SIZE) == nullptr) return ", rec untouched";
        if (block[0] == '\0') return ", rec empty";
        arch_cfg_hold lock;
        kqcode_t code = arch_cfg_sys_write_to_rec(now);
        bool same = code == 0 && strcmp(now, block.get()) == 0;
        return same ? ", rec as the registry" : ", rec\n" + std::string(block.get());
    }

  private:
    static constexpr size_t size = ARCH_CFG_TEXT_SIZE + 64;
    bool asked = true;
    std::unique_ptr<schar[]> block = std::make_unique<schar[]>(size);
};

// The names of a list in the arguments from `first` on, up to one that is an option.
std::vector<schar> name_list(const context& call, size_t first, usint& count) {
    std::vector<schar> block;
    count = 0;
    for (size_t i = first; i < call.arguments.size(); i++) {
        const std::string& name = call.argument(i);
        if (name.find('=') != std::string::npos) break;
        block.resize(block.size() + sizeof(sysname_t));
        memcpy(&block[count++ * sizeof(sysname_t)], name.c_str(), name.size() + 1);
    }
    return block;
}

sysname_t* names_of(std::vector<schar>& block) {
    return block.empty() ? nullptr : reinterpret_cast<sysname_t*>(block.data());
}

// DEST IP PORT DEST_ID CENTER_ID TYPE
std::string add(const context& call) {
    record_text rec(call);
    arch_cfg_t junk;
    arch_cfg_t* added = &junk;
    kqcode_t code = arch_cfg_add_learner_or_raft(
        call.text(0), call.text(1), argument_of<usint>(call, 2), argument_of<usint>(call, 3),
        argument_of<usint>(call, 4), argument_of<usint>(call, 5), &added, rec.get());
    std::string name = added == &junk ? "record not written" : added ? added->name : "null";
    return code_text(code) + ", " + name + rec.verdict();
}

std::string delete_learner(const context& call) {
    record_text rec(call);
    kqcode_t code = arch_cfg_delete_learner(call.text(0), argument_of<usint>(call, 1), rec.get());
    return code_text(code) + rec.verdict();
}

// NAME... [count=N]: a count that is not the list's.
std::string change_to_new(const context& call) {
    record_text rec(call);
    usint count = 0;
    std::vector<schar> block = name_list(call, 0, count);
    count = static_cast<usint>(call.option("count", count));
    kqcode_t code = arch_cfg_change_to_new(count, names_of(block), rec.get());
    return code_text(code) + rec.verdict();
}

// NAME... [count=N] [n_learner=0] [ids=0]: without the count, or without the identifiers.
std::string promote(const context& call) {
    record_text rec(call);
    usint count = 0, promoted = 77;
    std::vector<schar> block = name_list(call, 0, count);
    count = static_cast<usint>(call.option("count", count));
    std::vector<usint> ids(count + 1u, 77);
    bool counted = call.option("n_learner", 1) != 0;
    bool listed = call.option("ids", 1) != 0;
    kqcode_t code = arch_cfg_change_learner_to_raft(count, names_of(block), rec.get(),
                                                    counted ? &promoted : nullptr,
                                                    listed ? ids.data() : nullptr);
    std::string text = code_text(code) + rec.verdict();
    if (counted) text += ", " + std::to_string(promoted) + " promoted:";
    for (usint id : ids)
        if (id != 77) text += " " + std::to_string(id);
    return text;
}

}  // namespace

const command_table& raft_commands() {
    static const command_table table = {
        {"arch_cfg_add_learner_or_raft", add},
        {"arch_cfg_delete_learner", delete_learner},
        {"arch_cfg_change_to_new", change_to_new},
        {"arch_cfg_change_learner_to_raft", promote},
        {"arch_cfg_set_raft_cnt",
         [](const context&) {
             arch_cfg_set_raft_cnt();
             return "raft_cnt " + std::to_string(arch_cfg_get_raft_cnt());
         }},
    };
    return table;
}

}  // namespace test_support
