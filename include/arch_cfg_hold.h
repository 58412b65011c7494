/* The registry lock as an object, for C++: held from its construction to the end of its scope, also
 * when an exception ends it. It needs C++11 and adds nothing for C.
 *
 *     arch_cfg_hold hold;
 *     const arch_cfg_t* arch = arch_cfg_find_by_dest_low_without_enter(nullptr, "STANDBY1");
 *
 * With clang and -Wthread-safety the compiler knows that the lock is held there. */
#ifndef ARCH_CFG_HOLD_H
#define ARCH_CFG_HOLD_H

#include "arch_cfg.h"

#ifdef __cplusplus

class KQ_SCOPED_CAPABILITY arch_cfg_hold {
  public:
    arch_cfg_hold() KQ_ACQUIRE(arch_cfg_sys.mutex) { arch_cfg_sys_enter(); }
    ~arch_cfg_hold() KQ_RELEASE() { arch_cfg_sys_exit(); }
    arch_cfg_hold(const arch_cfg_hold&) = delete;
    arch_cfg_hold& operator=(const arch_cfg_hold&) = delete;
};

#endif

#endif
