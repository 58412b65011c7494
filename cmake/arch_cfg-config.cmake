include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/arch_cfg-targets.cmake)

# The static libraries hold C++. A project in C alone has no linker for that: its own links what
# they need by name.
get_property(arch_cfg_languages GLOBAL PROPERTY ENABLED_LANGUAGES)
if(NOT CXX IN_LIST arch_cfg_languages)
  foreach(arch_cfg_library arch_cfg::arch_cfg arch_cfg::platform_archive)
    get_target_property(arch_cfg_configurations ${arch_cfg_library} IMPORTED_CONFIGURATIONS)
    foreach(arch_cfg_configuration ${arch_cfg_configurations})
      set_target_properties(${arch_cfg_library} PROPERTIES
        IMPORTED_LINK_INTERFACE_LANGUAGES_${arch_cfg_configuration} C)
    endforeach()
    set_property(TARGET ${arch_cfg_library} APPEND PROPERTY INTERFACE_LINK_LIBRARIES stdc++)
  endforeach()
endif()
