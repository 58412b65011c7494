// Lists of archive paths, allocated from a caller's pool.
#ifndef ARCH_EXCHANGE_PATH_LISTS_H
#define ARCH_EXCHANGE_PATH_LISTS_H

#include <cstddef>
#include <type_traits>

#include "arch_cfg.h"
#include "common/text.h"

namespace arch {

// A block of the pool for a value of a type, or null.
template <typename Value>
Value* pool_block(kqenv_t env, ulint count = 1, int line = __builtin_LINE()) {
    return static_cast<Value*>(mem_malloc_ex(env, sizeof(Value) * ulint64{count},
                                             "cfg_dll/arch_cfg", static_cast<ulint>(line)));
}

// The name of this instance, empty when it has none.
std::string_view own_name();

// The instance whose archives a LOCAL or REMOTE destination holds, this one or the remote one, in
// at most 128 characters.
inline std::string_view owner_of(const arch_cfg_t& arch, std::string_view own) {
    const std::string_view name = arch.type == ARCH_TYPE_REMOTE ? text_in(arch.timer_name) : own;
    return name.substr(0, KQ_SYSNAME_MAX);
}

// An entry that is one block: the node first, so that freeing the node frees it all.
struct path_entry {
    kq_lst_node_t node;
    pathname_t path;
    sysname_t name;
    usint path_length;
    usint name_length;

    std::string_view path_text() const { return {path, path_length}; }
    std::string_view name_text() const { return {name, name_length}; }
};

// The entry of a node of a list of such entries.
static_assert(std::is_standard_layout_v<path_entry> && offsetof(path_entry, node) == 0);
inline const path_entry& entry_of(const kq_lst_node_t& node) {
    return reinterpret_cast<const path_entry&>(node);
}

// Appends an entry of one block; false when there is no memory. A text that is too long is cut.
bool append_entry(kqenv_t env, kq_lst_t& list, std::string_view path, std::string_view name);

void free_entries(kqenv_t env, kq_lst_t& list);  // of one block each
void free_entries_in_parts(kqenv_t env,
                           kq_lst_t& list);  // node, path and name in blocks of their own

// A list that frees its entries at the end of its scope.
template <void (*Free)(kqenv_t, kq_lst_t&)>
class scoped_list {
  public:
    explicit scoped_list(kqenv_t env) : env_(env) {}
    ~scoped_list() { Free(env_, list); }
    scoped_list(const scoped_list&) = delete;
    scoped_list& operator=(const scoped_list&) = delete;

    kq_lst_t list{};

  private:
    kqenv_t env_;
};

}  // namespace arch

#endif
