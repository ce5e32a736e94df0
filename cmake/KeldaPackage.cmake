# The target `package`: a Debian package of each component that KeldaInstall.cmake knows. Switched
# on with KELDA_PACKAGES by packaging/build-packages, which also chooses the folders of a Debian
# system.

set(debian "${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian")

file(STRINGS "${debian}/changelog" first_line LIMIT_COUNT 1)
if(NOT first_line MATCHES "^keldabase \\((.+)-([^-]+)\\) "
   OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/debian/changelog has no entry for ${PROJECT_VERSION} on top")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE "${CMAKE_MATCH_2}")
set(debian_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(library_package "libkeldabase${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME keldabase)
set(CPACK_PACKAGE_CONTACT "KeldaBase maintainers <maintainers@users.noreply.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# What CPack leaves open is done before and after it by these.
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/packaging/CompleteStaging.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/packaging/RepackPackages.cmake")
set(CPACK_KELDA_PACKAGING_DIR "${CMAKE_CURRENT_SOURCE_DIR}/packaging")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE keldabase)
# A program that was built against 0.1.N may use what came with N.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${CMAKE_BINARY_DIR}/framework" "${CMAKE_BINARY_DIR}/KeldaBase")

set(about_kelda
"The processes (agents) of a network operating system share state through a
central database, Kelda. Preinit files declare which paths the database has,
mount profiles which of them each agent mounts. KeldaBase reads both and
answers questions about them.
")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${debian}/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"parser of Kelda's preinit files and mount profiles
${about_kelda}
This package holds the libraries that agents and tools run with.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkeldabase-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library_package} (= ${debian_version}), libfmt-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"parser of Kelda's preinit files and mount profiles - development files
${about_kelda}
This package holds what it takes to build agents and tools: headers, the CMake
package KeldaBase, pkg-config files, and an agent to start from.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kelda)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (>= ${debian_version})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"program that shows which paths of the database Kelda agents mount
${about_kelda}
This package holds the program kelda, which puts the answers on the screen,
with its manual pages and completions for shells.")

include(CPack)
