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
