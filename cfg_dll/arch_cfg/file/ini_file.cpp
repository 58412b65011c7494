// Writing kqarch.ini.
//
// The file is rewritten in place, so that its owner, mode and links stay as the administrator made
// them. The text is whole before the file is opened: only a failure of the writing itself leaves
// the file short, and that is never taken for success.
#include "file/ini_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "arch_cfg_hold.h"
#include "common/text.h"
#include "elog.h"
#include "ini.h"

using namespace arch;

namespace arch {
namespace {

const schar* separator() {
    return global_ini_info.config_path[0] != '\0' ? "/" : "";
}

// A pipe in the file's place would hold the caller up.
bool is_no_regular_file(const schar* path) {
    struct stat status;
    return stat(path, &status) == 0 && !S_ISREG(status.st_mode);
}

// Opens the file and empties it; negative when that fails.
int open_for_rewrite(const schar* path) {
    if (is_no_regular_file(path)) return -1;
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY;
    int file = -1;
    do {
        file = open(path, flags, 0600);
    } while (file < 0 && errno == EINTR);
    return file;
}

bool write_whole(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = EIO;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool sync_to_disk(int file) {
    while (fsync(file) != 0)
        if (errno != EINTR) return false;
    return true;
}

// An interrupted close has closed the file.
bool close_file(int file) {
    return close(file) == 0 || errno == EINTR;
}

kqcode_t refuse_write(const schar* path, int reason) {
    schar buffer[128];
    elog_report_ex(ELOG_REFUSAL, "%s could not be written whole: %s", path,
                   strerror_r(reason, buffer, sizeof buffer));
    return ARCH_E_FILE_OPEN;
}

kqcode_t rewrite_config_file(std::string_view text) {
    file_path path;
    config_file(path);
    const int file = open_for_rewrite(path);
    if (file < 0) return ARCH_E_FILE_OPEN;
    const bool written = write_whole(file, text) && sync_to_disk(file);
    const int reason = written ? 0 : errno;
    const bool closed = close_file(file);
    if (!written) return refuse_write(path, reason);
    if (!closed) return refuse_write(path, errno);
    return 0;
}

}  // namespace

void config_file(file_path& path) {
    static_assert(sizeof path > sizeof global_ini_info.config_path + sizeof "/kqarch.ini");
    std::size_t length = 0;
    for (const std::string_view part :
         {text_in(global_ini_info.config_path), std::string_view(separator()),
          std::string_view("kqarch.ini")}) {
        copy_characters(path + length, part);
        length += part.size();
    }
    path[length] = '\0';
}

void backup_file(file_path& path, ulint64 lsn) {
    (void)std::snprintf(path, sizeof path, "%s%s%s_%lld.log", global_ini_info.config_path,
                        separator(), "kqarch_bak", static_cast<lint64>(lsn));
}

}  // namespace arch

kqcode_t arch_cfg_sys_write_to_file(void) {
    // Too large for a server thread's stack; the registry lock, which the caller holds, guards it.
    static schar text[ARCH_CFG_TEXT_SIZE];
    const kqcode_t code = arch_cfg_sys_write_to_rec(text);
    return code < 0 ? code : rewrite_config_file(text);
}

kqcode_t arch_cfg_sys_write_by_rec(const schar* rec, kqbool with_enter) {
    if (rec == nullptr) return ARCH_E_INVALID_VALUE;
    if (with_enter != 1) return rewrite_config_file(rec);
    const arch_cfg_hold hold;
    return rewrite_config_file(rec);
}
