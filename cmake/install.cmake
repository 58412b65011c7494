# Installs the libraries as the package arch_cfg, with their headers, and kqarch.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/arch_cfg)

install(TARGETS arch_cfg arch_cfg_shared arch_cfg_platform arch_cfg_platform_and_module
  EXPORT arch_cfg)
install(EXPORT arch_cfg NAMESPACE arch_cfg:: FILE arch_cfg-targets.cmake DESTINATION ${package_dir})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/arch_cfg-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES cmake/arch_cfg-config.cmake ${PROJECT_BINARY_DIR}/arch_cfg-config-version.cmake
  DESTINATION ${package_dir})
if(ARCH_CFG_BUILD_TOOLS)
  install(TARGETS kqarch)
endif()
