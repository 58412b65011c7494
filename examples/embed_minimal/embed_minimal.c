/* Loads the archive configuration of an instance directory and lists its destinations: the whole of
 * what a program needs to use the module. */
#include <stdio.h>

#include "arch_cfg.h"
#include "kq_instance.h"

static void list_destinations(void) {
    const arch_cfg_sys_t* registry = arch_cfg_sys_get(); /* takes the lock */
    for (const arch_cfg_t* arch = registry->arch_lst.start; arch; arch = arch->link.next)
        printf("%s: %s to %s\n", arch->name, arch_cfg_get_arch_name_by_type(arch->type),
               arch->dest);
    arch_cfg_sys_release();
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: embed_minimal INSTANCE_DIRECTORY\n");
        return 2;
    }
    kqcode_t code = kq_instance_open(argv[1]);
    if (code >= 0) {
        code = arch_cfg_sys_init(NULL, 1, 1); /* reads and checks kqarch.ini */
        if (code >= 0) {
            list_destinations();
            arch_cfg_sys_destroy();
        }
    }
    kq_instance_close();
    if (code < 0) fprintf(stderr, "embed_minimal: refused with code %d\n", code);
    return code < 0;
}
