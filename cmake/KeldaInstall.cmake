# What `cmake --install` puts where, and the CMake package that programs outside this tree find.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KeldaBase")

install(TARGETS KeldaFramework KeldaBase EXPORT KeldaBaseTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT KeldaBaseTargets NAMESPACE KeldaBase:: DESTINATION "${package_dir}")
install(DIRECTORY framework/include/ include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/KeldaBaseConfig.cmake.in KeldaBaseConfig.cmake
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(KeldaBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/KeldaBaseConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/KeldaBaseConfigVersion.cmake"
        DESTINATION "${package_dir}")

if(KELDA_TOOLS)
    install(TARGETS kelda RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
