#include "peers.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <mutex>

#include "ini.h"
#include "instance.h"

namespace bench {

namespace {

// A record's `dest`: the path or the one instance; nothing for several instances.
std::string stored_dest(const destination& dest) {
    if (!dest.directory.empty()) return dest.directory;
    return dest.instances.size() == 1 ? dest.instances.front() : "";
}

}  // namespace

bare_mutex::bare_mutex() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

name_list::name_list(const std::vector<destination>& destinations) {
    for (const destination& dest : destinations) {
        const int place = static_cast<int>(by_place_.size());
        if (dest.type == ARCH_TYPE_LOCAL) entries_.push_back({dest.directory, place});
        for (const std::string& name : dest.instances)
            entries_.push_back({name, place});
        const std::string stored = stored_dest(dest);
        check(stored.size() <= KQ_SYSNAME_MAX, "a destination is longer than a look-up copies");
        by_place_.push_back({dest.type, stored});
    }
}

int name_list::find(const char* text) const {
    const std::lock_guard hold(mutex_);
    for (const entry& candidate : entries_)
        if (strcasecmp(candidate.name.c_str(), text) == 0) return candidate.place;
    return -1;
}

int name_list::find_list(const char* text) const {
    const int whole = find(text);
    if (whole >= 0) return whole;
    for (;;) {
        const char* separator = std::strchr(text, '/');
        const std::size_t length =
            separator != nullptr ? static_cast<std::size_t>(separator - text) : std::strlen(text);
        sysname_t piece;
        if (length >= sizeof piece) return -1;
        std::memcpy(piece, text, length);
        piece[length] = '\0';
        const int found = length > 0 ? find(piece) : -1;
        if (found >= 0 || separator == nullptr) return found;
        text = separator + 1;
    }
}

usint name_list::copy_type(usint type, sysname_t* copies) const {
    const std::lock_guard hold(mutex_);
    usint count = 0;
    for (const typed& candidate : by_place_) {
        if (candidate.type != type) continue;
        std::memcpy(copies[count++], candidate.dest.c_str(), candidate.dest.size() + 1);
    }
    return count;
}

key_list::key_list() {
    for (ulint index = 0; index <= ini_index_arch_asm_striping; ++index) {
        const other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(index);
        if (entry == nullptr) continue;
        names_.push_back(entry->para_name);
        indexes_.push_back(static_cast<lint>(index));
    }
}

lint key_list::find(const char* name) const {
    for (std::size_t i = 0; i < names_.size(); ++i)
        if (strcasecmp(names_[i], name) == 0) return indexes_[i];
    return -1;
}

bool read_file_bare(const char* path, std::vector<char>& buffer) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const ssize_t length = read(file, buffer.data(), buffer.size());
    return close(file) == 0 && length > 0;
}

bool probe_directory_bare(const char* directory) {
    struct stat status;
    struct statvfs space;
    return stat(directory, &status) == 0 && statvfs(directory, &space) == 0 &&
           create_and_delete_bare(directory);
}

bool create_and_delete_bare(const char* directory) {
    static constexpr char zeros[4096] = {};
    struct stat status;
    if (stat(directory, &status) != 0) return false;
    const std::string name = std::string(directory) + "/.ARCHIVE_probe.DAT";
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) return false;
    const bool is_written = write(file, zeros, sizeof zeros) == sizeof zeros;
    return close(file) == 0 && unlink(name.c_str()) == 0 && is_written;
}

}  // namespace bench
