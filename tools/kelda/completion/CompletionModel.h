// What can be typed behind the program's name, read off the definitions that the command line is
// parsed with. Scripts of all shells are made of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace KeldaTool {

/// A value of an option, or an argument.
struct CompletionValue {
    enum class Kind { anything, directory, file, word };

    Kind kind = Kind::anything;
    std::string name;               ///< as in the help
    std::vector<std::string> words; ///< of kind word: those to choose from
};

struct CompletionOption {
    std::vector<std::string> names; ///< with their dashes
    std::string description;        ///< one line
    std::optional<CompletionValue> value;
    bool isRepeatable = false;
    std::vector<std::string> rulesOut; ///< names of options that cannot be given with it
};

struct CompletionArgument {
    CompletionValue value;
    bool isRequired = false;
    bool isRepeatable = false; ///< takes all arguments that are left
};

struct CompletionModel {
    std::string name;
    std::string description; ///< one line
    std::vector<CompletionOption> options;
    std::vector<CompletionArgument> arguments;
    std::vector<CompletionModel> commands;
};

/// Options and commands without a group are hidden and left out.
CompletionModel completionModel(CLI::App const& program);

} // namespace KeldaTool
