# `make package` (cpack): one Debian package with the library, the headers, the drivers,
# the command-line program and both package files, installed under /usr, so that
# find_package(qvnrt) and pkg-config find it with no further setting.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvnrt)
set(CPACK_PACKAGE_VENDOR "Quorvane")
set(CPACK_PACKAGE_CONTACT "QvnRT developers <qvnrt@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Client-side real-time market data library (C++20)")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Built with debug information for the developer's own runs; the package is stripped.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# Runtime dependencies come from the binaries themselves (dpkg-shlibdeps); the shlibs file
# and the ldconfig trigger come with the shared library.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The package exists to build applications against: a compiler comes with it.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "g++ (>= 4:12), cmake (>= 3.25), pkg-config")
# One package, not one per install component.
set(CPACK_DEB_COMPONENT_INSTALL OFF)
include(CPack)
