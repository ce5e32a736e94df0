# Makes a C++ source of the report's page, byte for byte:
#   cmake -D FOLDER=.../page -D OUTPUT=.../EmbeddedPage.cpp -P EmbedPage.cmake
# The folder holds page.html, the style in pieces *.css and the script in pieces *.js, which are put
# together in the order of their names. The page's security policy names both by their hashes, so
# what would make a browser see other bytes than these is refused.
cmake_minimum_required(VERSION 3.25)

# Compilers need not take much longer literals than this.
set(longest_piece 15000)

function(refuse_where text pattern file what)
    string(TOLOWER "${text}" lower)
    string(FIND "${lower}" "${pattern}" at)
    if(NOT at EQUAL -1)
        message(FATAL_ERROR "${FOLDER}/${file}: ${what}")
    endif()
endfunction()

# The text as a list of raw literals, each of whole lines.
function(literals_of text file result)
    refuse_where("${text}" ")kelda\"" "${file}" "must not hold )kelda\"")
    set(literals "")
    string(LENGTH "${text}" left)
    while(left GREATER 0)
        set(piece "${text}")
        if(left GREATER longest_piece)
            string(SUBSTRING "${text}" 0 ${longest_piece} piece)
            string(FIND "${piece}" "\n" end REVERSE)
            if(end EQUAL -1)
                message(FATAL_ERROR "${FOLDER}/${file}: has a line that is too long")
            endif()
            math(EXPR end "${end} + 1")
            string(SUBSTRING "${text}" 0 ${end} piece)
        endif()
        string(APPEND literals "\n    R\"kelda(${piece})kelda\"sv,")
        string(LENGTH "${piece}" length)
        string(SUBSTRING "${text}" ${length} -1 text)
        math(EXPR left "${left} - ${length}")
    endwhile()
    set(${result} "${literals}" PARENT_SCOPE)
endfunction()

# Reads a file in which a browser sees the same bytes: it takes carriage returns and NUL characters
# for others.
function(read_asset file result)
    file(READ "${FOLDER}/${file}" bytes HEX)
    string(REGEX REPLACE "(..)" " \\1" bytes "${bytes}")
    refuse_where("${bytes}" " 00" "${file}" "must not hold NUL characters")
    refuse_where("${bytes}" " 0d" "${file}" "must not hold carriage returns")
    file(READ "${FOLDER}/${file}" text)
    string(SHA256 hash_of_text "${text}")
    file(SHA256 "${FOLDER}/${file}" hash)
    if(NOT hash_of_text STREQUAL hash)
        message(FATAL_ERROR "${FOLDER}/${file}: cannot be read as a text")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(read_pieces ending result)
    file(GLOB files RELATIVE "${FOLDER}" "${FOLDER}/*.${ending}")
    if("${files}" STREQUAL "")
        message(FATAL_ERROR "${FOLDER}: holds no *.${ending}")
    endif()
    set(whole "")
    foreach(file IN LISTS files)
        read_asset("${file}" text)
        string(APPEND whole "${text}")
    endforeach()
    set(${result} "${whole}" PARENT_SCOPE)
endfunction()

foreach(variable FOLDER OUTPUT)
    if(NOT DEFINED ${variable})
        message(FATAL_ERROR "cmake -D FOLDER=... -D OUTPUT=... -P EmbedPage.cmake")
    endif()
endforeach()

read_asset(page.html page)
read_pieces(css style)
read_pieces(js script)
foreach(whole "<style>{{style}}</style>" "<script>{{script}}</script>")
    string(FIND "${page}" "${whole}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "${FOLDER}/page.html: must hold ${whole}")
    endif()
endforeach()
refuse_where("${style}" "</style" "*.css" "must not hold </style")
foreach(end "</script" "<script" "<!--")
    refuse_where("${script}" "${end}" "*.js" "must not hold ${end}")
endforeach()

literals_of("${page}" page.html page_literals)
literals_of("${style}" "*.css" style_literals)
literals_of("${script}" "*.js" script_literals)
string(SHA256 style_hash "${style}")
string(SHA256 script_hash "${script}")

file(WRITE "${OUTPUT}" "// Made by EmbedPage.cmake.
#include <initializer_list>
#include <string>

#include \"report/PageAssets.h\"

namespace KeldaTool {
namespace {

using namespace std::string_view_literals;

std::string joined(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (auto const piece : pieces)
        text += piece;
    return text;
}

} // namespace

PageAssets const& builtInPage() {
    static std::string const page = joined({${page_literals}
    });
    static std::string const style = joined({${style_literals}
    });
    static std::string const script = joined({${script_literals}
    });
    static PageAssets const assets{
        page,
        style,
        script,
        \"${style_hash}\",
        \"${script_hash}\"};
    return assets;
}

} // namespace KeldaTool
")
