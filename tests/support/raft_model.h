// What a Raft group's registry ought to be after each operation, written a second time and simpler:
// directories and members in a list, and this node's own settings.
#ifndef TESTS_SUPPORT_RAFT_MODEL_H
#define TESTS_SUPPORT_RAFT_MODEL_H

#include <arch_cfg.h>

#include <string>
#include <vector>

namespace test_support {

struct model_section {
    std::string name;
    ulint type;
    std::string dest;
    std::string ip = "";
    usint port = 0;
    usint id = ARCH_UNSET_SHORT;
    usint center = 0;

    bool is_member() const { return type == ARCH_TYPE_RAFT || type == ARCH_TYPE_LEARNER; }
};

struct raft_model {
    std::string self;      // this instance's name
    bool bp_mode = false;  // no addresses are needed

    std::vector<model_section> sections;
    kqbool wait_apply = ARCH_UNSET_FLAG;
    ulint xmal_hb = ARCH_UNSET_LONG, raft_hb = 0, raft_vote = ARCH_UNSET_LONG;
    ulint self_id = ARCH_UNSET_SHORT;
    std::string xmal_ip;
    usint xmal_port = 0, center = 0, raft_cnt = 0;
    ulint pkg_interval = 0;
    kqbool learner = 0;

    ulint count(ulint type) const;
    // The first section of that destination, a member's only or any.
    model_section* find(const std::string& dest, bool members_only);

    kqcode_t check_new(const std::string& name, const model_section& member) const;
    kqcode_t add(const model_section& member);
    kqcode_t check_member(const std::string& dest, ulint type);
    void remove(ulint type, const std::string& dest);
    void clear_settings();

    // The result of the check of the whole, and of reading the text at start-up; a start-up that
    // succeeds changes the model to what was read.
    kqcode_t validate();
    kqcode_t start();

    std::string text() const;
    // What of the process registry is not so; empty when all is.
    std::string difference() const;
};

bool same_name(const std::string& left, const std::string& right);

// Whether a text comes back from the file as it is written.
bool is_writable(const std::string& text);

}  // namespace test_support

#endif
