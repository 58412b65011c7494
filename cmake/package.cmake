# What `cpack -G DEB` needs to know.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME arch-cfg)
set(CPACK_PACKAGE_VENDOR "arch_cfg")
set(CPACK_PACKAGE_CONTACT "The maintainers of arch_cfg <maintainers@arch-cfg.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
  "The module that loads, checks, changes and writes kqarch.ini, as a library for servers, and \
kqarch, which does the same on the command line.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# Needed libraries are found out, and the linker's cache is renewed where the package goes.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
