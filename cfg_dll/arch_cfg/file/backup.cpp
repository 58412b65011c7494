// Backups of kqarch.ini, named by log sequence number.
#include "arch_cfg.h"
#include "elog.h"
#include "file/ini_file.h"
#include "osfile.h"

using namespace arch;

kqcode_t arch_file_gen_bak(ulint64 lsn) {
    file_path source;
    file_path backup;
    config_file(source);
    backup_file(backup, lsn);
    if (os_file_copy(source, backup, 1) == 0) {
        elog_report_ex(ELOG_REFUSAL, "arch_file_gen_bak, os_file_copy failed!");
        return ARCH_E_BACKUP;
    }
    return 0;
}

kqcode_t arch_file_delete_bak(ulint64 lsn) {
    file_path backup;
    backup_file(backup, lsn);
    if (os_file_delete(backup) == 0) {
        elog_report_ex(ELOG_REFUSAL, "arch_file_delete_bak, os_file_delete failed!");
        return ARCH_E_BACKUP;
    }
    return 0;
}
