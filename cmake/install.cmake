# Installs the libraries as the package arch_cfg (for CMake and for pkg-config) with their headers,
# and kqarch with its manual page, completions and documents. `cpack -G DEB` makes a Debian package
# of the same.
include(GNUInstallDirs)
# Under the Debian package's name, where its users look.
set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/arch-cfg)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/arch_cfg)
set(pkg_config_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# In a folder of their own, which the targets name: some have names that others have too.
set(header_dir include/arch_cfg)

install(TARGETS arch_cfg arch_cfg_shared arch_cfg_platform arch_cfg_platform_and_module
  EXPORT arch_cfg)
install(EXPORT arch_cfg NAMESPACE arch_cfg:: FILE arch_cfg-targets.cmake DESTINATION ${package_dir})
install(DIRECTORY include/ DESTINATION ${header_dir} FILES_MATCHING PATTERN "*.h")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/arch_cfg-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES cmake/arch_cfg-config.cmake ${PROJECT_BINARY_DIR}/arch_cfg-config-version.cmake
  DESTINATION ${package_dir})

# Named from where the file lies, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pkg_config
  ${CMAKE_INSTALL_PREFIX}/${pkg_config_dir} ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/arch_cfg.pc.in ${PROJECT_BINARY_DIR}/arch_cfg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/arch_cfg.pc DESTINATION ${pkg_config_dir})

install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.json")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES COPYRIGHT DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright)

if(ARCH_CFG_BUILD_TOOLS)
  install(TARGETS kqarch)
  install(FILES docs/kqarch.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES docs/check.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/arch_cfg)
  install(FILES tools/kqarch/completion/kqarch
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  # Where Debian's zsh looks.
  install(FILES tools/kqarch/completion/_kqarch
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
endif()

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/package.cmake)
endif()
