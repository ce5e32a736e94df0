// .pre-commit-hooks.yaml: what the framework would call does what the hooks promise.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/KeldaProgram.h"

namespace {

using support::TemporaryDirectory;
using testing::ElementsAre;

// The hooks' members of one name, in order. The file is plain enough for this.
std::vector<std::string> membersCalled(std::string const& name) {
    auto const file = std::filesystem::path(KELDA_SOURCE_DIR) / ".pre-commit-hooks.yaml";
    std::istringstream lines(support::contentOf(file));
    std::vector<std::string> values;
    auto const start = "  " + name + ": ";
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("- "))
            line[0] = ' ';
        if (line.starts_with(start))
            values.push_back(line.substr(start.size()));
    }
    return values;
}

// "[--preinit, preinit]" as words.
std::string wordsOf(std::string list) {
    std::erase(list, '[');
    std::erase(list, ']');
    std::erase(list, ',');
    return list;
}

// A copy of the example device, with the program where the shell finds it.
class Repository {
  public:
    Repository() {
        std::filesystem::copy(support::exampleDevice(), folder_.path(),
                              std::filesystem::copy_options::recursive);
    }

    TemporaryDirectory const& folder() const { return folder_; }

    // The status of a hook's call, with files behind it.
    int call(std::size_t hook, std::string const& files = "") const {
        auto const program = std::filesystem::path(KELDA_PROGRAM).parent_path().string();
        auto const command = "cd '" + folder_.string() + "' && PATH='" + program + "':$PATH " +
                             membersCalled("entry").at(hook) + " " +
                             wordsOf(membersCalled("args").at(hook)) + " " + files +
                             " > /dev/null 2>&1";
        int const status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    TemporaryDirectory folder_;
};

TEST(PreCommitHooks, AreTwoOfTheSystem) {
    EXPECT_THAT(membersCalled("id"), ElementsAre("kelda-check", "kelda-fmt"));
    EXPECT_THAT(membersCalled("language"), ElementsAre("system", "system"));
    EXPECT_THAT(membersCalled("files"), testing::Each("(^|/)(preinit|profiles)/"));
    EXPECT_THAT(membersCalled("pass_filenames"), ElementsAre("false"));
}

TEST(PreCommitHooks, CheckADevice) {
    Repository const repository;
    EXPECT_EQ(repository.call(0), 0);
    repository.folder().write("profiles/Wrong", "agentName: Wrong\nno keyword\n");
    EXPECT_EQ(repository.call(0), 1);
}

TEST(PreCommitHooks, CheckTheLayoutOfTheFilesThatTheyAreGiven) {
    Repository const repository;
    repository.folder().write("profiles/Wrong", "agentName:   Wrong\nsys/clock,Sys::Clock,r\n");
    EXPECT_EQ(repository.call(1, "profiles/Wrong"), 1);
    EXPECT_EQ(repository.call(1, "profiles/TimeSync"), 0);
}

} // namespace
