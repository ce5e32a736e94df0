# Runs when CPack has made the packages, and makes them anew with dpkg-deb. CPack has the libraries'
# package run ldconfig itself, although Debian's own trigger (debian/triggers) does that, and it
# knows no Multi-Arch.

set(multi_arch_runtime same)
set(multi_arch_development same)
set(multi_arch_tools foreign)

# finish_control(FILE COMPONENT)
function(finish_control file component)
    file(READ "${file}" control)
    string(REGEX REPLACE "\n+$" "\nMulti-Arch: ${multi_arch_${component}}\n" control "${control}")
    file(WRITE "${file}" "${control}")
endfunction()

foreach(package_file IN LISTS CPACK_PACKAGE_FILES)
    set(root "${CPACK_TEMPORARY_DIRECTORY}/repacked")
    file(REMOVE_RECURSE "${root}")
    execute_process(COMMAND dpkg-deb --raw-extract "${package_file}" "${root}"
                    COMMAND_ERROR_IS_FATAL ANY)

    file(REMOVE "${root}/DEBIAN/postinst" "${root}/DEBIAN/postrm")
    foreach(component IN LISTS CPACK_COMPONENTS_ALL)
        string(TOUPPER "${component}" upper)
        if(EXISTS "${root}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}/copyright")
            finish_control("${root}/DEBIAN/control" ${component})
        endif()
    endforeach()

    # One thread: how many there are shows in the result.
    execute_process(COMMAND dpkg-deb --root-owner-group --threads-max=1 --build "${root}"
                            "${package_file}"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
