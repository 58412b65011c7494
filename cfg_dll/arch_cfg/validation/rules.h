// The rules of single destinations, by kind of type. Each runs its rules in order and returns the
// code of the first that fails, with the registry lock held by the caller.
#ifndef ARCH_VALIDATION_RULES_H
#define ARCH_VALIDATION_RULES_H

#include "arch_cfg.h"
#include "common/text.h"

namespace arch {

struct check_options {
    bool timers;          // timers must be in the timer configuration
    kqbool asm_path_chk;  // probe paths on ASM storage like others
};

// The name of an archive file as a LOCAL or REMOTE destination will hold them; nothing for another.
class sample_file {
  public:
    explicit sample_file(const arch_cfg_t& arch);
    const schar* path() const { return path_; }
    bool is_valid() const;

  private:
    void append(std::string_view text);

    schar path_[1024];
    std::size_t length_ = 0;
};

kqcode_t validate_destination(const arch_cfg_sys_t& registry, arch_cfg_t& arch,
                              check_options options);

kqcode_t validate_local(const arch_cfg_sys_t& registry, const arch_cfg_t& arch,
                        const sample_file& sample, check_options options);
kqcode_t validate_remote(const arch_cfg_sys_t& registry, const arch_cfg_t& arch,
                         const sample_file& sample, check_options options);
kqcode_t validate_sync(const arch_cfg_t& arch);
kqcode_t validate_async(const arch_cfg_t& arch, check_options options);
// REALTIME or TIMELY; fills in their two defaults.
kqcode_t validate_applying(const arch_cfg_sys_t& registry, arch_cfg_t& arch);
// RAFT or LEARNER.
kqcode_t validate_raft_member(const arch_cfg_t& arch);
// Delay, mode and threshold of a subscriber; a change of one is held to them too.
kqcode_t check_subscriber_values(const arch_cfg_t& arch);
kqcode_t validate_subscriber(const arch_cfg_t& arch, check_options options);

}  // namespace arch

#endif
