#include "completion/ShellText.h"

namespace KeldaTool {

std::string shellQuoted(std::string_view text) {
    std::string word = "'";
    for (char const character : text) {
        if (character == '\'')
            word += "'\\'";
        word += character;
    }
    return word + "'";
}

std::string escaped(std::string_view text, std::string_view characters) {
    std::string result;
    for (char const character : text) {
        if (characters.find(character) != std::string_view::npos)
            result += '\\';
        result += character;
    }
    return result;
}

} // namespace KeldaTool
