// Wrong calls: exit status 2, nothing on standard output, and a message that says what was wrong
// and where to get help.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::KeldaProgram;
using support::Words;

struct WrongCall {
    Words words;
    std::string message;
};

std::ostream& operator<<(std::ostream& stream, WrongCall const& call) {
    stream << "kelda";
    for (auto const& word : call.words)
        stream << " '" << word << "'";
    return stream;
}

std::string const tryHelp = "\nTry 'kelda --help'.\n";
std::string const tryMountsHelp = "\nTry 'kelda mounts --help'.\n";
std::string const tryPreinitHelp = "\nTry 'kelda preinit --help'.\n";
std::string const tryConfigHelp = "\nTry 'kelda config --help'.\n";
std::string const tryCompletionHelp = "\nTry 'kelda completion --help'.\n";

std::vector<WrongCall> const wrongCalls = {
    {{}, "kelda: a command is missing" + tryHelp},
    {{"paint"}, "kelda: there is no command 'paint'" + tryHelp},
    {{"paint", "--format", "json"}, "kelda: there is no command 'paint'" + tryHelp},
    {{"--loud"}, "kelda: unexpected argument '--loud'" + tryHelp},
    {{"mounts"}, "kelda mounts: AGENT is required" + tryMountsHelp},
    {{"mounts", ""}, "kelda mounts: AGENT: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "B"}, "kelda mounts: unexpected argument 'B'" + tryMountsHelp},
    {{"mounts", "A", "--format", "yaml"},
     "kelda mounts: --format: must be table or json, not 'yaml'" + tryMountsHelp},
    {{"mounts", "A", "--format", "JSON"},
     "kelda mounts: --format: must be table or json, not 'JSON'" + tryMountsHelp},
    {{"mounts", "A", "--format"},
     "kelda mounts: --format: 1 required table|json missing" + tryMountsHelp},
    {{"mounts", "A", "--preinit"},
     "kelda mounts: --preinit: 1 required DIR missing" + tryMountsHelp},
    {{"mounts", "A", "--override"},
     "kelda mounts: --override: 1 required NAME missing" + tryMountsHelp},
    {{"mounts", "A", "--form", "json"},
     "kelda mounts: unexpected argument '--form'" + tryMountsHelp},
    {{"mounts", "A", "--format", "json", "--loud"},
     "kelda mounts: unexpected argument '--loud'" + tryMountsHelp},
    {{"mounts", "A", "--path", ""}, "kelda mounts: --path: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--path", "/a/b"},
     "kelda mounts: --path: must not begin with '/', as paths are relative to the root" +
         tryMountsHelp},
    {{"mounts", "A", "--path", "/"},
     "kelda mounts: --path: must not begin with '/', as paths are relative to the root" +
         tryMountsHelp},
    {{"mounts", "A", "--path=//"},
     "kelda mounts: --path: must not begin with '/', as paths are relative to the root" +
         tryMountsHelp},
    {{"mounts", "A", "--path"}, "kelda mounts: --path: 1 required PATH missing" + tryMountsHelp},
    {{"mounts", "A", "--file", ""}, "kelda mounts: --file: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--file"}, "kelda mounts: --file: 1 required PROFILE missing" + tryMountsHelp},
    {{"mounts", "A", "--group", ""}, "kelda mounts: --group: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--group"}, "kelda mounts: --group: 1 required GROUP missing" + tryMountsHelp},
    {{"mounts", "A", "--path", "a", "--file", "F"},
     "kelda mounts: --path excludes --file" + tryMountsHelp},
    {{"mounts", "A", "--group", "A::", "--path", "a"},
     "kelda mounts: --path excludes --group" + tryMountsHelp},
    {{"mounts", "A", "--group", "A::", "--file", "F", "--with-includes"},
     "kelda mounts: --file excludes --group" + tryMountsHelp},
    {{"mounts", "A", "--with-includes"},
     "kelda mounts: --with-includes requires --file" + tryMountsHelp},
    {{"mounts", "A", "--with-includes", "--group", "A::"},
     "kelda mounts: --with-includes requires --file" + tryMountsHelp},
    {{"mounts", "A", "--preinit", ""},
     "kelda mounts: --preinit: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--profiles", ""},
     "kelda mounts: --profiles: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--profiles="}, "kelda mounts: --profiles: must not be empty" + tryMountsHelp},
    {{"mounts", "A", "--preinit=", "--format", "json"},
     "kelda mounts: --preinit: must not be empty" + tryMountsHelp},
    {{"preinit", "--preinit", ""}, "kelda preinit: --preinit: must not be empty" + tryPreinitHelp},
    {{"config", "--preinit", ""}, "kelda config: --preinit: must not be empty" + tryConfigHelp},
    {{"config", "A"}, "kelda config: unexpected argument 'A'" + tryConfigHelp},
    {{"config", "--profiles", "x"},
     "kelda config: unexpected argument '--profiles'" + tryConfigHelp},
    {{"config", "--format", "xml"},
     "kelda config: --format: must be table or json, not 'xml'" + tryConfigHelp},
    {{"completion"}, "kelda completion: SHELL is required" + tryCompletionHelp},
    {{"completion", ""},
     "kelda completion: SHELL: must be bash or zsh, not ''" + tryCompletionHelp},
    {{"completion", "fi\x1bsh"},
     "kelda completion: SHELL: must be bash or zsh, not 'fi\\x1bsh'" + tryCompletionHelp},
    {{"completion", "bash", "zsh"},
     "kelda completion: unexpected argument 'zsh'" + tryCompletionHelp},
    {{"completion", "bash", "--format", "json"},
     "kelda completion: unexpected argument '--format'" + tryCompletionHelp},
    {{"preinit", "A"}, "kelda preinit: unexpected argument 'A'" + tryPreinitHelp},
    {{"preinit", "--profiles", "x"},
     "kelda preinit: unexpected argument '--profiles'" + tryPreinitHelp},
    {{"mounts", "A", "--\x1b[31m"},
     "kelda mounts: unexpected argument '--\\x1b[31m'" + tryMountsHelp},
    {{"pa\xffint"}, "kelda: there is no command 'pa\\xffint'" + tryHelp},
};

class EveryWrongCall : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongCall, SaysWhatIsWrongOnStandardErrorOnly) {
    auto const outcome = KeldaProgram().run(GetParam().words);
    EXPECT_EQ(outcome.err, GetParam().message);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(CommandLine, EveryWrongCall, testing::ValuesIn(wrongCalls));

TEST(WrongCall, NamingAFormatTwiceIsOne) {
    auto const outcome =
        KeldaProgram().run({"mounts", "A", "--format", "json", "--format", "table"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("kelda mounts: ")) << outcome.err;
    EXPECT_NE(outcome.err.find("--format"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.status, 2);
}

TEST(WrongCall, LoadsNothing) {
    support::Device device;
    device.preinit("P", "broken\n");
    auto const outcome = KeldaProgram().run(Words{"mounts", "A", "--loud"} +
                                            support::foldersOf(device.directory().path()));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err.find("broken"), std::string::npos) << outcome.err;
}

} // namespace
