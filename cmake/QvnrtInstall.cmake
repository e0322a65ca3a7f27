# Install rules: the library with its soname, the public headers, the drivers below the
# library's directory, the command-line program, and the two ways of finding the library
# (the CMake package qvnrt and the pkg-config file qvnrt.pc).
#
# Every path is relative to the prefix, so one build installs anywhere:
# `cmake --install build --prefix DIR`, the Debian package, or the default prefix.

include(CMakePackageConfigHelpers)

set(QVNRT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvnrt)
set(QVNRT_DRIVER_DIR ${CMAKE_INSTALL_LIBDIR}/${QVNRT_DRIVER_SUBDIR})

install(TARGETS qvnrt qvnrt_driver EXPORT qvnrtTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qvnrt
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

if(TARGET qvnsim)
  install(TARGETS qvnsim LIBRARY DESTINATION ${QVNRT_DRIVER_DIR} COMPONENT runtime)
  # The library's default driver name, Client.DLL, is the simulation until the user names
  # another driver.
  install(CODE "
    set(drivers \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${QVNRT_DRIVER_DIR}\")
    file(CREATE_LINK $<TARGET_FILE_NAME:qvnsim> \"\${drivers}/Client.DLL\" SYMBOLIC)"
    COMPONENT runtime)
endif()

if(TARGET qvnreplay)
  install(TARGETS qvnreplay LIBRARY DESTINATION ${QVNRT_DRIVER_DIR} COMPONENT runtime)
endif()

if(TARGET qvnrt-cli)
  # Relative, so that the program finds its library under any prefix.
  set_target_properties(qvnrt-cli PROPERTIES
    INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS qvnrt-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()

# The Qt host, where it was built: its own export set, so that the package asks for Qt only
# when the component is installed.
if(TARGET qvnrt-qt)
  set_target_properties(qvnrt-qt PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS qvnrt-qt EXPORT qvnrtQtTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT runtime NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/hosts/qt/include/qvnrt/qt
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qvnrt COMPONENT development
    FILES_MATCHING PATTERN "*.h")
  install(EXPORT qvnrtQtTargets NAMESPACE qvnrt:: DESTINATION ${QVNRT_CMAKE_DIR}
    COMPONENT development)
endif()

install(EXPORT qvnrtTargets NAMESPACE qvnrt:: DESTINATION ${QVNRT_CMAKE_DIR}
  COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qvnrtConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qvnrtConfig.cmake INSTALL_DESTINATION ${QVNRT_CMAKE_DIR}
  PATH_VARS QVNRT_DRIVER_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvnrtConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvnrtConfig.cmake
              ${PROJECT_BINARY_DIR}/qvnrtConfigVersion.cmake
  DESTINATION ${QVNRT_CMAKE_DIR} COMPONENT development)

# pkg-config: the prefix is found from the .pc file's own place, so the file stays right
# wherever the tree is installed.
file(RELATIVE_PATH QVNRT_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" QVNRT_PC_TO_PREFIX "${QVNRT_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/qvnrt.pc.in ${PROJECT_BINARY_DIR}/qvnrt.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvnrt.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
