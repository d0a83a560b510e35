# Installation of the library: its public headers, the exported target velmora::velmora and the package files
# that find_package(velmora) reads.

include(CMakePackageConfigHelpers)
set(velmora_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/velmora)

install(TARGETS velmora EXPORT velmora-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT velmora-targets NAMESPACE velmora:: DESTINATION ${velmora_package_dir})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velmora-config.cmake.in
    ${PROJECT_BINARY_DIR}/velmora-config.cmake INSTALL_DESTINATION ${velmora_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velmora-config-version.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velmora-config.cmake ${PROJECT_BINARY_DIR}/velmora-config-version.cmake
    DESTINATION ${velmora_package_dir})

# The public headers are those that velmora.h reaches; they are looked up when installing, so that no list of
# them has to be kept.
install(CODE "set(VELMORA_SOURCE_DIR \"${PROJECT_SOURCE_DIR}\")
set(VELMORA_INCLUDE_DIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}\")")
install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/InstallHeaders.cmake)
