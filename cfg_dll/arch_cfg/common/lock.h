// The registry lock as an object: held from its construction to the end of its scope.
#ifndef ARCH_COMMON_LOCK_H
#define ARCH_COMMON_LOCK_H

#include "arch_cfg.h"

namespace arch {

class KQ_SCOPED_CAPABILITY registry_hold {
  public:
    registry_hold() KQ_ACQUIRE(arch_cfg_sys.mutex) { arch_cfg_sys_enter(); }
    ~registry_hold() KQ_RELEASE() { arch_cfg_sys_exit(); }
    registry_hold(const registry_hold&) = delete;
    registry_hold& operator=(const registry_hold&) = delete;
};

}  // namespace arch

#endif
