// What makes no difference: a device compared with itself, and edits that change how the files are
// written and not what they say.
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ComparedDevices.h"
#include "support/Corpus.h"
#include "support/DatabaseRandom.h"

namespace {

using KeldaDatabase::ChangeClass;
using KeldaDatabase::ChangeKind;
using support::ComparedDevices;
using support::edited;
using support::FileEdit;
using support::FileTexts;
using testing::IsEmpty;

FileTexts exampleDevice() {
    return support::filesOf(std::string(KELDA_SOURCE_DIR) + "/examples/device");
}

// Nothing changed from a device to its copy, nor from the device to itself.
void expectNoDifferenceToItself(FileTexts const& files) {
    ComparedDevices devices(files, files);
    auto const difference = devices.difference();
    EXPECT_THAT(devices.shown(difference), IsEmpty());
    EXPECT_EQ(difference.worst(), std::nullopt);
    EXPECT_EQ(difference.agentsBefore, difference.agentsAfter);
    auto& parser = devices.before().parser();
    EXPECT_THAT(KeldaDatabase::differenceOf(parser, parser).changes, IsEmpty());
}

TEST(ADeviceAndItself, AreNotDifferent) {
    expectNoDifferenceToItself(exampleDevice());
    expectNoDifferenceToItself({});
    expectNoDifferenceToItself({{"preinit/P", "a,A\n"}});
    expectNoDifferenceToItself({{"profiles/X", "agentName: X\na,A,r\n"}});
}

TEST(ADeviceAndItself, AreNotDifferentWhereAFaultNamesTheFolder) {
    expectNoDifferenceToItself(
        {{"preinit/P", "a,A\n"}, {"profiles/X", "agentName: X\nInclude:\na,A,r\n"}});
}

TEST(ADeviceAndItself, AreNotDifferentWhereItIsLarge) {
    SKIP_WITHOUT_CORPUS();
    expectNoDifferenceToItself(support::filesOf(support::corpusDir("openconfig")));
}

FileTexts brokenDevice(std::string const& name, bool isPreinit) {
    auto const broken = support::corpusDir("broken");
    FileTexts files;
    auto const take = [&](std::filesystem::path const& from, std::string const& folder) {
        for (auto const& entry : std::filesystem::directory_iterator(from)) {
            std::ifstream stream(entry.path(), std::ios::binary);
            files[folder + entry.path().filename().string()] =
                std::string(std::istreambuf_iterator<char>(stream), {});
        }
    };
    take(isPreinit ? broken / name : broken / "base/preinit", "preinit/");
    if (!isPreinit)
        take(broken / name, "profiles/");
    return files;
}

TEST(ADeviceAndItself, AreNotDifferentWhereItIsBroken) {
    SKIP_WITHOUT_CORPUS();
    std::size_t devices = 0;
    for (auto const& line : support::significantLines(support::corpusDir("broken") / "INDEX.csv")) {
        auto const fields = support::fieldsOf(line);
        if (fields.at(0) == "case") // the line of titles
            continue;
        SCOPED_TRACE(fields.at(0));
        expectNoDifferenceToItself(brokenDevice(fields.at(0), fields.at(1) == "preinit"));
        ++devices;
    }
    EXPECT_GE(devices, 58U);
}

TEST(ADeviceAndItself, AreNotDifferentWhereItIsRandom) {
    for (std::uint64_t seed = 1; seed <= 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(fmt::format("device {}", seed));
        support::RandomDatabase const random(seed, seed % 2 == 0 ? 20 : 300);
        expectNoDifferenceToItself(support::filesOf(random.device().directory().path()));
    }
}

FileTexts const base = {
    {"preinit/Paths", "sys/clock,Clock\n"
                      "sys/log,Log\n"
                      "fan/%slot/speed,Speed,createOnMount\n"
                      "port/%side,Port,createOnMount\n"
                      "port/left,Port\nport/1,Port\n"},
    {"profiles/Fan", "agentName: Fan-%a\n"
                     "sys/clock,Clock,r\n"
                     "fan/%a/speed,Speed,rw\n"
                     "MountGroup: late, 5\n"
                     "Include: common\n"},
    {"profiles/Led", "agentName: Led\n"
                     "alias: %root = left\n"
                     "port/%root,Port,r\n"
                     "port/%cellId,Port,w\n"
                     "%cellPath,Fen::Dir,r\n"},
    {"preinit/Cells", "cell/%cellId/x,X\n"},
    {"profiles/common", "sys/log,Log,r\n"},
};

struct Rewriting {
    char const* what;
    std::vector<FileEdit> edits;
};

std::vector<Rewriting> const rewritings = {
    {"mount lines in another order",
     {{"profiles/Fan", "sys/clock,Clock,r\n", ""},
      {"profiles/Fan", "speed,Speed,rw\n", "speed,Speed,rw\nsys/clock,Clock,r\n"}}},
    {"preinit lines in another order",
     {{"preinit/Paths", "sys/clock,Clock\n", ""},
      {"preinit/Paths", "sys/log,Log\n", "sys/log,Log\nsys/clock,Clock\n"}}},
    {"comments and blank lines",
     {{"profiles/Fan", "agentName", "# what for\n\nagentName"},
      {"profiles/Fan", "speed,Speed,rw", "speed,Speed,rw # both\n\n \t\n# more"},
      {"preinit/Paths", "sys/log", "\n# the log\nsys/log"}}},
    {"layout and the case of keywords",
     {{"profiles/Fan", "agentName: ", "  AGENTNAME :\t"},
      {"profiles/Fan", "MountGroup: late, 5", "mountgroup :late,05"},
      {"profiles/Fan", "Include: common", "include:common"},
      {"profiles/Led", "alias: %root = left", "ALIAS:%root=le\\\nft"},
      {"profiles/Led", "port/%root,Port,r", "port/%root/ ,  Port , r"},
      {"preinit/Paths", "fan/%slot/speed,Speed,createOnMount",
       "fan/%slot/speed, \\\n Speed, CREATEonMOUNT"}}},
    {"flags in another order", {{"profiles/Fan", "Speed,rw", "Speed,wr"}}},
    {"another type in a profile, where it is for the reader only",
     {{"profiles/Led", "port/%root,Port,r", "port/%root,Post,r"}}},
    {"a line that says once more what another one says",
     {{"profiles/Fan", "sys/clock,Clock,r\n", "sys/clock,Clock,r\nsys/clock,Clock,r\n"},
      {"preinit/Paths", "sys/log,Log\n", "sys/log,Log\nsys/log,Log\n"}}},
    {"flags on two lines",
     {{"profiles/Fan", "fan/%a/speed,Speed,rw\n", "fan/%a/speed,Speed,w\nfan/%a/speed,Speed,r\n"}}},
    {"a line moved to a file that the same agents load, in the same group",
     {{"profiles/Fan", "MountGroup: late, 5\n", "MountGroup: late, 5\nsys/log,Log,r\n"},
      {"profiles/common", "sys/log,Log,r", "# nothing"}}},
    {"an alias written out", {{"profiles/Led", "port/%root", "port/left"}}},
    {"an alias that every profile has, written out", {{"profiles/Led", "port/%cellId", "port/1"}}},
    {"a short form written out", {{"profiles/Led", "%cellPath", "cell/%cellId"}}},
    {"an alias that nobody uses", {{"profiles/Led", "alias", "alias: %more = 1\nalias"}}},
    {"another name of an alias",
     {{"profiles/Led", "%root = left", "%side = left"},
      {"profiles/Led", "port/%root", "port/%side"}}},
    {"another name of a token",
     {{"profiles/Fan", "Fan-%a", "Fan-%slot"}, {"profiles/Fan", "fan/%a/", "fan/%slot/"}}},
    {"another name of a token in a preinit file", {{"preinit/Paths", "fan/%slot/", "fan/%fan/"}}},
    {"line ends of another system",
     {{"profiles/Fan", "agentName: Fan-%a\nsys/clock,Clock,r\n",
       "agentName: Fan-%a\r\nsys/clock,Clock,r\r\n"},
      {"profiles/Led", "port/%root,Port,r\n", "port/%root,Port,r\r\n"},
      {"preinit/Paths", "sys/log,Log\n", "sys/log,Log\r\n"}}},
    {"no end of the last line", {{"profiles/common", "sys/log,Log,r\n", "sys/log,Log,r"}}},
    {"another name of a profile",
     {{"profiles/Fan", "", ""}, {"profiles/Zoo", "", base.at("profiles/Fan")}}},
    {"another name of an included file",
     {{"profiles/common", "", ""},
      {"profiles/all", "", base.at("profiles/common")},
      {"profiles/Fan", "Include: common", "Include: all"}}},
    {"a pattern that finds the same file", {{"profiles/Fan", "Include: common", "Include: com*"}}},
    {"a pattern that finds nothing",
     {{"profiles/Fan", "Include: common", "Include: common\nInclude: nothing*"}}},
    {"another name of a preinit file",
     {{"preinit/Cells", "", ""}, {"preinit/Alone", "", base.at("preinit/Cells")}}},
    {"a preinit line in another file",
     {{"preinit/Paths", "sys/log,Log\n", ""},
      {"preinit/Cells", "cell/%cellId/x,X\n", "cell/%cellId/x,X\nsys/log,Log\n"}}},
    {"a profile in two parts",
     {{"profiles/Fan", "fan/%a/speed,Speed,rw\n", ""},
      {"profiles/Fan2", "", "agentName: Fan-%b\nfan/%b/speed,Speed,rw\n"}}},
    {"a file that nobody reads", {{"profiles/notes", "", "this is no profile\n"}}},
    {"a backup", {{"profiles/Fan~", "", "agentName: Fan-%a\nsys/log,Log,w\n"}}},
};

TEST(ARewrittenDevice, IsNotDifferent) {
    for (auto const& rewriting : rewritings) {
        ComparedDevices devices(base, edited(base, rewriting.edits));
        EXPECT_THAT(devices.changes(), IsEmpty()) << rewriting.what;
        EXPECT_THAT(devices.shown(devices.undone()), IsEmpty()) << rewriting.what << ", undone";
    }
}

TEST(ARewrittenDevice, IsNotDifferentWithAllRewritingsThatGoTogether) {
    auto files = base;
    for (auto const* const what :
         {"comments and blank lines", "flags in another order", "an alias that nobody uses",
          "another name of a token in a preinit file", "a pattern that finds nothing"})
        for (auto const& rewriting : rewritings)
            if (std::string_view(rewriting.what) == what)
                files = edited(std::move(files), rewriting.edits);
    EXPECT_THAT(ComparedDevices(base, files).changes(), IsEmpty());
}

// The same with every file of a device at once.
TEST(ARewrittenDevice, IsNotDifferentWithTheLineEndsOfAnotherSystem) {
    auto const files = exampleDevice();
    auto rewritten = files;
    for (auto& [name, text] : rewritten) {
        std::string lines;
        for (char const c : text)
            lines +=
                c == '\n' && (lines.empty() || lines.back() != '\\') ? "\r\n" : std::string(1, c);
        text = lines;
    }
    EXPECT_NE(rewritten, files);
    EXPECT_THAT(ComparedDevices(files, rewritten).changes(), IsEmpty());
}

// --- devices that hardly are one ---

std::map<ChangeKind, std::size_t> countsByKind(KeldaDatabase::Difference const& difference) {
    std::map<ChangeKind, std::size_t> counts;
    for (auto const& change : difference.changes)
        ++counts[change.kind];
    return counts;
}

TEST(AnEmptyDevice, HasLostEveryAgentAndPath) {
    ComparedDevices devices(base, {});
    auto const difference = devices.difference();
    EXPECT_EQ(difference.agentsBefore, 2U);
    EXPECT_EQ(difference.agentsAfter, 0U);
    EXPECT_THAT(countsByKind(difference),
                testing::ElementsAre(testing::Pair(ChangeKind::agentRemoved, 2U),
                                     testing::Pair(ChangeKind::preinitRemoved, 7U)));
    EXPECT_EQ(difference.worst(), ChangeClass::dangerous);
}

TEST(ADeviceWithoutFolders, IsLikeAnEmptyOne) {
    ComparedDevices devices({}, {});
    for (auto const* const folder : {"preinit", "profiles"})
        std::filesystem::remove(devices.after().directory() / folder);
    EXPECT_THAT(devices.changes(), IsEmpty());
    ComparedDevices gone(base, {});
    for (auto const* const folder : {"preinit", "profiles"})
        std::filesystem::remove(gone.after().directory() / folder);
    EXPECT_EQ(gone.changes(), ComparedDevices(base, {}).changes());
}

TEST(ALineThatManyAgentsLoad, IsOneChange) {
    FileTexts files = {{"preinit/P", "a,A\n"}, {"profiles/shared", "a,A,r\n"}};
    for (int i = 0; i < 400; ++i)
        files[fmt::format("profiles/P{}", i)] =
            fmt::format("agentName: P{}-%x\nInclude: shared\n", i);
    auto const difference =
        ComparedDevices(files, edited(files, {{"profiles/shared", "", "a,A,rw\n"}})).difference();
    ASSERT_EQ(difference.changes.size(), 1U);
    EXPECT_EQ(difference.changes.front().agentCount(), 400U);
    EXPECT_EQ(difference.agentsAfter, 400U);
}

} // namespace
