# Compiler options that every target of this tree shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT DEFINED CMAKE_INSTALL_RPATH)
    # An installed program finds the libraries beside it under any prefix.
    file(RELATIVE_PATH libraries_from_programs
         "/${CMAKE_INSTALL_FULL_BINDIR}" "/${CMAKE_INSTALL_FULL_LIBDIR}")
    set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/${libraries_from_programs}")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
                    -Wold-style-cast -Wcast-qual -Wformat=2 -Wundef)
# Assertions name their file as seen from the tree's root, wherever that was when it was built.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(KELDA_WERROR)
    add_compile_options(-Werror)
endif()
if(KELDA_SANITIZE)
    # Without the check of vtable pointers: it opens a pipe to look at memory, which fails where
    # tests leave the process no descriptor.
    add_compile_options(-fsanitize=${KELDA_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KELDA_SANITIZE})
endif()
if(KELDA_COVERAGE)
    # Counted atomically: some tests run threads.
    add_compile_options(--coverage -fprofile-update=atomic -O0)
    add_link_options(--coverage)
endif()
