// Prints the syntax file of a file language for the editor Vim, for contrib/vim/syntax.
#include <cstdio>
#include <string_view>

#include "database/language/VimSyntax.h"

int main(int argc, char** argv) {
    std::string_view const language = argc == 2 ? argv[1] : "";
    if (language != "preinit" && language != "profile") {
        std::fputs("usage: kelda_vim_syntax preinit|profile\n", stderr);
        return 2;
    }
    auto const text =
        KeldaDatabase::vimSyntax(language == "preinit" ? KeldaDatabase::FileFamily::preinit
                                                       : KeldaDatabase::FileFamily::profile);
    bool const written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return written && std::fflush(stdout) == 0 ? 0 : 1;
}
