# What `cmake --install` puts where, in three components: `runtime` is what a program needs to run,
# `development` what it takes to build one, `tools` the program kelda. The CMake package and the
# pkg-config files find everything from their own place, so an installed tree can be moved.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KeldaBase")

install(TARGETS KeldaFramework KeldaBase EXPORT KeldaBaseTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
                COMPONENT runtime NAMELINK_COMPONENT development
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT KeldaBaseTargets NAMESPACE KeldaBase:: DESTINATION "${package_dir}"
        COMPONENT development)
install(DIRECTORY "${KELDA_FRAMEWORK_DIR}/include/" include/
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        COMPONENT development FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/KeldaBaseConfig.cmake.in KeldaBaseConfig.cmake
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(KeldaBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/KeldaBaseConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/KeldaBaseConfigVersion.cmake"
        DESTINATION "${package_dir}" COMPONENT development)

# The folders as the pkg-config files see them; absolute where the caller fixed one of them.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(KELDA_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
    set(KELDA_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
    file(RELATIVE_PATH to_includes "/${CMAKE_INSTALL_LIBDIR}/pkgconfig"
         "/${CMAKE_INSTALL_INCLUDEDIR}")
    file(RELATIVE_PATH to_prefix "/prefix/${CMAKE_INSTALL_LIBDIR}" "/prefix")
    string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
    set(KELDA_PC_INCLUDEDIR "\${pcfiledir}/${to_includes}")
    set(KELDA_PC_PREFIX "\${pcfiledir}/../${to_prefix}")
endif()
foreach(name IN ITEMS KeldaFramework KeldaBase)
    configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc"
            DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endforeach()

# An agent to start from, and the device it runs on.
install(FILES examples/agent/CMakeLists.txt examples/agent/Makefile examples/agent/README.md
              examples/agent/main.cpp
        DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples/agent" COMPONENT development)
install(DIRECTORY examples/device DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples"
        COMPONENT development)

if(KELDA_TOOLS)
    install(TARGETS kelda RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endif()
