// Commands that are functions, with the arguments in the order of their declaration: numbers, texts
// (null for none), registries (null, process for the address of the process's, or own) and records
// (a section's name or null).
#ifndef TESTS_SUPPORT_BINDING_H
#define TESTS_SUPPORT_BINDING_H

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "support/scenario.h"

namespace test_support {

inline arch_cfg_sys_t* registry_of(const command_context& call, size_t index) {
    if (call.argument(index) == "own") return &call.own_registry;
    return call.argument(index) == "process" ? &arch_cfg_sys : nullptr;
}

inline arch_cfg_t* record_of(const command_context& call, size_t index) {
    if (call.argument(index) == "null") return nullptr;
    for (const arch_cfg_sys_t* registry : {&arch_cfg_sys, &call.own_registry}) {
        if (arch_cfg_t* arch = find_record(*registry, call.argument(index))) return arch;
    }
    throw std::runtime_error("no record " + call.argument(index));
}

inline std::string name_of(const arch_cfg_t* arch) {
    return arch ? arch->name : "null";
}

template <class Parameter>
Parameter argument_of(const command_context& call, size_t index) {
    if constexpr (std::is_same_v<Parameter, arch_cfg_sys_t*>)
        return registry_of(call, index);
    else if constexpr (std::is_same_v<std::remove_const_t<std::remove_pointer_t<Parameter>>,
                                      arch_cfg_t>)
        return record_of(call, index);
    else if constexpr (std::is_pointer_v<Parameter>)
        return call.text(index);
    else
        return static_cast<Parameter>(std::stoull(call.argument(index)));
}

template <class Result>
std::string shown(Result result) {
    if constexpr (std::is_same_v<Result, arch_cfg_t*>)
        return name_of(result);
    else if constexpr (std::is_pointer_v<Result>)
        return result ? result : "null";
    else
        return std::to_string(result);
}

template <class Result, class... Parameters, size_t... Indices>
std::string call_with(const command_context& call, Result (*function)(Parameters...),
                      std::index_sequence<Indices...>) {
    if constexpr (std::is_void_v<Result>) {
        function(argument_of<Parameters>(call, Indices)...);
        return "ok";
    } else {
        return shown(function(argument_of<Parameters>(call, Indices)...));
    }
}

template <class Result, class... Parameters>
std::string call_bound(const command_context& call, Result (*function)(Parameters...)) {
    return call_with(call, function, std::index_sequence_for<Parameters...>());
}

template <auto Function>
std::string bound(const command_context& call) {
    return call_bound(call, Function);
}

// The same with the registry lock held.
template <auto Function>
std::string bound_locked(const command_context& call) {
    arch_cfg_hold lock;
    return call_bound(call, Function);
}

#define BOUND(function) command_table::value_type(#function, bound<function>)
#define BOUND_LOCKED(function) command_table::value_type(#function, bound_locked<function>)

}  // namespace test_support

#endif
