# What `cmake --install` lays down: the library, its headers, the tool, and what find_package(korassoc) and pkg-config
# read.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

install(TARGETS korassoc EXPORT korassocTargets FILE_SET HEADERS)
if(TARGET korassoc_cli)
  # The tool finds the library beside itself, wherever the prefix is moved to.
  file(RELATIVE_PATH toLibraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(korassoc_cli PROPERTIES INSTALL_RPATH
                        $<IF:$<PLATFORM_ID:Darwin>,@loader_path,$ORIGIN>/${toLibraries})
  install(TARGETS korassoc_cli)
endif()

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/korassoc)
install(EXPORT korassocTargets NAMESPACE korassoc:: DESTINATION ${packageFolder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/korassocConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/korassocConfig.cmake
                              INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korassocConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korassocConfig.cmake ${PROJECT_BINARY_DIR}/korassocConfigVersion.cmake
        DESTINATION ${packageFolder})

# pkg-config's file finds the prefix from its own place, so that an installed tree can be moved.
set(pkgConfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH toPrefix ${CMAKE_INSTALL_PREFIX}/${pkgConfigFolder} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" toPrefix ${toPrefix})
set(pkgConfigFlags "")
if(NOT KORASSOC_SHARED)
  set(pkgConfigFlags " -DKORASSOC_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/korassoc.pc.in ${PROJECT_BINARY_DIR}/korassoc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korassoc.pc DESTINATION ${pkgConfigFolder})
