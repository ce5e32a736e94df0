# The target `reference`: the public headers as web pages, made by Doxygen. No part of a plain
# build. A comment that is missing or cannot be read fails it.

find_program(KELDA_DOXYGEN doxygen DOC "Doxygen, for the target reference")

if(NOT KELDA_DOXYGEN)
    add_custom_target(reference
        COMMAND "${CMAKE_COMMAND}" -E echo
                "The reference needs Doxygen: install the Debian package doxygen, configure again."
        COMMAND "${CMAKE_COMMAND}" -E false
        VERBATIM)
    return()
endif()

set(KELDA_REFERENCE_DIR "${PROJECT_BINARY_DIR}/reference")
set(KELDA_REFERENCE_MAIN "${PROJECT_SOURCE_DIR}/docs/reference-main.md")
configure_file(docs/Doxyfile.in "${KELDA_REFERENCE_DIR}/Doxyfile" @ONLY)

file(GLOB reference_headers CONFIGURE_DEPENDS
     "${PROJECT_SOURCE_DIR}/include/KeldaBase/*.h" "${PROJECT_SOURCE_DIR}/framework/include/*/*.h")
add_custom_command(
    OUTPUT "${KELDA_REFERENCE_DIR}/made"
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${KELDA_REFERENCE_DIR}/html"
    COMMAND "${KELDA_DOXYGEN}" "${KELDA_REFERENCE_DIR}/Doxyfile"
    COMMAND "${CMAKE_COMMAND}" -E touch "${KELDA_REFERENCE_DIR}/made"
    DEPENDS "${KELDA_REFERENCE_DIR}/Doxyfile" "${KELDA_REFERENCE_MAIN}" ${reference_headers}
    COMMENT "Making the reference from the public headers"
    VERBATIM)
add_custom_target(reference
    COMMAND "${CMAKE_COMMAND}" -E echo "The reference: ${KELDA_REFERENCE_DIR}/html/index.html"
    DEPENDS "${KELDA_REFERENCE_DIR}/made"
    VERBATIM)
