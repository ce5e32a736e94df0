# Runs when the components are installed for packing, before CPack makes packages of them: adds to
# each what every Debian package holds, compresses what Debian wants compressed, and strips programs
# and libraries of what they do not run with, which is more than CPack would strip.

# add(FILE DESTINATION)
function(add file destination)
    configure_file("${CPACK_KELDA_PACKAGING_DIR}/${file}" "${destination}" COPYONLY)
endfunction()

# Replaces each file by FILE.gz, in which no time is told.
function(compress)
    if(ARGN)
        execute_process(COMMAND gzip -9n ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
    endif()
endfunction()

function(strip)
    if(ARGN)
        execute_process(COMMAND strip --strip-unneeded --remove-section=.comment
                                --remove-section=.note ${ARGN}
                        COMMAND_ERROR_IS_FATAL ANY)
    endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" upper)
    set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    set(usr "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr")
    set(share "${usr}/share")
    set(doc "${share}/doc/${package}")

    add(debian/copyright "${doc}/copyright")
    add(debian/changelog "${doc}/changelog.Debian")
    add(../CHANGELOG.md "${doc}/changelog")
    add(debian/${component}.lintian-overrides "${share}/lintian/overrides/${package}")

    file(GLOB pages "${share}/man/man*/*")
    compress("${doc}/changelog.Debian" "${doc}/changelog" ${pages})

    file(GLOB binaries "${usr}/bin/*" "${usr}/lib/*/*.so.${CPACK_PACKAGE_VERSION}")
    strip(${binaries})
endforeach()
