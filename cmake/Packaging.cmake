# What `make install` and `make package` hand out. The library, the program and the headers are
# installed where they are built; here stands what goes with them: how others find the package, the
# manual page, the completion, the pages and the examples, and the two archives.

include(CMakePackageConfigHelpers)

# Both ways of finding the package start from where their own file stands, so an installed tree may be
# moved or unpacked anywhere.
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tessarin)
set(module_path
  ${CMAKE_INSTALL_LIBDIR}/${CMAKE_SHARED_MODULE_PREFIX}tessarin${CMAKE_SHARED_MODULE_SUFFIX})
configure_package_config_file(cmake/tessarinConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tessarinConfig.cmake
  INSTALL_DESTINATION ${cmake_folder} PATH_VARS module_path)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tessarinConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tessarinConfig.cmake
              ${PROJECT_BINARY_DIR}/tessarinConfigVersion.cmake
        DESTINATION ${cmake_folder})
install(EXPORT tessarin_targets NAMESPACE tessarin:: FILE tessarinTargets.cmake
        DESTINATION ${cmake_folder})

set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${pc_folder})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /${pc_folder} /)
  set(pc_prefix "\${pcfiledir}/${up}")
endif()
cmake_path(APPEND pc_module "\${prefix}" ${module_path})
cmake_path(APPEND pc_include "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/tessarin.pc.in ${PROJECT_BINARY_DIR}/tessarin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessarin.pc DESTINATION ${pc_folder})

install(FILES tools/tovrin/tovrin.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES tools/tovrin/completion/tovrin.bash
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions RENAME tovrin)
install(FILES CHANGELOG.md CONTRIBUTING.md README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME tessarin)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Regular expressions for the rules of a Tovrin host")
set(CPACK_PACKAGE_DESCRIPTION
  "The module libtessarin.so, the headers of the host's interfaces, and tovrin, a reference host for the
command line.")
set(CPACK_PACKAGE_VENDOR "The Tessarin developers")
set(CPACK_PACKAGE_CONTACT "The Tessarin developers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
find_program(TESSARIN_SHLIBDEPS dpkg-shlibdeps)
if(TESSARIN_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # the libraries that program and module want
endif()
# Packing takes what is built, and does not start to build tests and benches.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
include(CPack)
