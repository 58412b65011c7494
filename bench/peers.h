// What the module is measured beside: the plain way to do the same.
#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include <pthread.h>

#include <string>
#include <vector>

#include "description.h"

namespace bench {

// A mutex of the registry's kind, and nothing else.
class bare_mutex {
  public:
    bare_mutex();
    ~bare_mutex() { pthread_mutex_destroy(&mutex_); }
    bare_mutex(const bare_mutex&) = delete;
    bare_mutex& operator=(const bare_mutex&) = delete;

    void lock() { pthread_mutex_lock(&mutex_); }
    void unlock() { pthread_mutex_unlock(&mutex_); }

  private:
    pthread_mutex_t mutex_;
};

// The names of all destinations behind each other, searched by strcasecmp under a bare mutex.
class name_list {
  public:
    explicit name_list(const std::vector<destination>& destinations);

    // The place of the destination that a text names, or -1.
    int find(const char* text) const;

    // The same for the whole text or else the first of its pieces that is found.
    int find_list(const char* text) const;

    // Copies the destination texts of a type; how many there are.
    usint copy_type(usint type, sysname_t* copies) const;

  private:
    struct entry {
        std::string name;
        int place;
    };
    struct typed {
        arch_cfg_type type;
        std::string dest;
    };

    std::vector<entry> entries_;
    std::vector<typed> by_place_;
    mutable bare_mutex mutex_;
};

// The names of all keys behind each other, searched by strcasecmp.
class key_list {
  public:
    key_list();
    const std::vector<const char*>& names() const { return names_; }
    lint find(const char* name) const;

  private:
    std::vector<const char*> names_;
    std::vector<lint> indexes_;
};

// The text of kqarch.ini by one snprintf a line, for the types that the instances have.
void print_registry(const arch_cfg_sys_t& registry, schar* text);

// What the operating system has to do for a load, and for the probe of one archive directory.
// False when it fails.
bool read_file_bare(const char* path, std::vector<char>& buffer);
bool probe_directory_bare(const char* directory);

// The part of it that asks whether files can be made there.
bool create_and_delete_bare(const char* directory);

}  // namespace bench

#endif
