# What an installation has: programs, libraries, headers, and how builds and people find them.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/SearchSystem)
install(TARGETS SearchSystem searchsystem_platform EXPORT SearchSystemTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries
                NAMELINK_COMPONENT development)
install(TARGETS searchsystem-reader
        RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/searchsystem COMPONENT programs)
install(TARGETS ssfind RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)

install(DIRECTORY ${PROJECT_BINARY_DIR}/include/searchsystem
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN *.h)
install(EXPORT SearchSystemTargets NAMESPACE SearchSystem:: DESTINATION ${package_folder}
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SearchSystemConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES cmake/SearchSystemConfig.cmake
              ${PROJECT_BINARY_DIR}/SearchSystemConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

# An installation may be moved: paths are taken from where the file lies.
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/searchsystem.pc.in searchsystem.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/searchsystem.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
