// The list of further preinit files and directories that the environment names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <sys/stat.h>

#include <Fen/Exception.h>

#include "support/ChangedRoot.h"
#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/PreinitMaps.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using support::Types;
using testing::ElementsAre;
using testing::IsEmpty;

class ExtraPreinitList : public testing::Test {
  protected:
    std::string path(std::string const& name) const {
        return (device_.directory() / name).string();
    }
    std::string fopenFault(std::string const& entry) const {
        return ":-1: Unable to fopen preinit profile: " + entry;
    }
    // Loads with this list; "@" in it stands for the device's directory and a slash.
    std::unique_ptr<support::LenientParser> load(std::string list) const {
        for (auto at = list.find('@'); at != std::string::npos; at = list.find('@'))
            list.replace(at, 1, device_.directory().string() + "/");
        support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
        auto parser = device_.lenient();
        parser->doLoadPreinits();
        return parser;
    }

    support::CleanEnvironment environment_;
    support::Device device_;
};

TEST_F(ExtraPreinitList, FilesAndDirectoriesAreReadInTheirOrder) {
    device_.preinit("Base", "a,Default\nb,Default\nc,Default\nd,Default\n");
    device_.directory().write("one", "b,One\nc,One\nd,One\n");
    device_.directory().write("two/x", "c,Two\nd,Two\n");
    device_.directory().write("three", "d,Three\n");
    auto const parser = load("@one:@two:@three");
    EXPECT_EQ(support::declaredTypes(*parser),
              (Types{{"a", "Default"}, {"b", "One"}, {"c", "Two"}, {"d", "Three"}}));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
}

TEST_F(ExtraPreinitList, TheListIsTraced) {
    auto const one = device_.directory().write("one", "");
    auto const list = one + ":" + one;
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
    auto const parser = device_.lenient();
    support::TraceRecorder const trace;
    parser->doLoadPreinits();
    EXPECT_THAT(trace.at(2), ElementsAre("Loading extra preinits from env variable: " + list));
}

TEST_F(ExtraPreinitList, AnEmptyListIsNoList) {
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", "");
    auto const parser = device_.lenient();
    support::TraceRecorder const trace;
    parser->doLoadPreinits();
    EXPECT_THAT(trace.at(2), IsEmpty());
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
}

TEST_F(ExtraPreinitList, AMissingPathEndsTheListAndWhatWouldFollow) {
    device_.directory().write("first", "a,T\n");
    device_.directory().write("second", "b,T\n");
    support::EnvironmentVariable const profiles("KELDA_EXTRA_PROFILE_PATH", "/extra");
    auto const parser = load("@first:@missing:@second");
    EXPECT_THAT(support::faultList(*parser), ElementsAre(fopenFault(path("missing"))));
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "T"}}));
    EXPECT_EQ(parser->extraProfileDir(), "");
    EXPECT_FALSE(parser->defaultPreinitsLoaded());
}

TEST_F(ExtraPreinitList, AMissingPathLeavesWhatAnEarlierLoadSaid) {
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", "/nonexistent");
    parser->doLoadPreinits();
    EXPECT_THAT(support::faultList(*parser), ElementsAre(fopenFault("/nonexistent")));
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
}

TEST_F(ExtraPreinitList, AMissingPathIsTracedWhereParsingGoesOn) {
    support::TraceRecorder const trace("MountFileInfo", 1);
    auto const parser = load("@missing");
    EXPECT_EQ(trace.at(0), support::continuedTraces(*parser));
    EXPECT_EQ(trace.at(0).size(), 1U);
}

TEST_F(ExtraPreinitList, TheStrictFlavourThrowsForAMissingPath) {
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", "/nonexistent");
    auto const parser = device_.agent("Fan");
    try {
        parser->doInit();
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "Unable to fopen preinit profile: /nonexistent");
    }
}

struct PieceRow {
    char const* list;
    Strings faults; ///< what is named as unreadable; "@" as in the list
};

TEST_F(ExtraPreinitList, ColonsSeparatePieces) {
    device_.directory().write("a", "");
    for (auto const& [list, faults] : std::vector<PieceRow>{
             {"@a", {}},
             {"@a:", {}},
             {"@a:@a:", {}},
             {"@a::@a", {""}},
             {"@a::", {""}},
             {":@a", {""}},
             {":", {""}},
             {"::", {""}},
             {"@missing/", {"missing"}},
             {"@missing///:@a", {"missing"}},
             {"@ a", {" a"}},
             {"@a ", {"a "}},
         }) {
        SCOPED_TRACE(list);
        Strings expected;
        for (auto const& name : faults)
            expected.push_back(fopenFault(name.empty() ? "" : path(name)));
        EXPECT_EQ(support::faultList(*load(list)), expected);
    }
}

TEST_F(ExtraPreinitList, SlashesAfterADirectoryAreDropped) {
    device_.directory().write("one/x", "a,T\n");
    support::TraceRecorder const trace;
    auto const parser = load("@one///");
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "T"}}));
    auto const start = "( dirName : " + path("one") + ", _ ,";
    EXPECT_THAT(trace.at(8), testing::Contains(testing::StartsWith(start)));
}

TEST_F(ExtraPreinitList, SlashesAfterAFileAreDropped) {
    device_.directory().write("one", "a,T\n");
    EXPECT_EQ(support::declaredTypes(*load("@one//")), (Types{{"a", "T"}}));
}

TEST_F(ExtraPreinitList, AFileIsReadWhateverItsName) {
    for (char const* const name : {"a~", ".hidden", "a;b", "a*", "[a]"}) {
        device_.directory().write(name, "a,T\n");
        EXPECT_EQ(support::declaredTypes(*load(std::string("@") + name)), (Types{{"a", "T"}}))
            << name;
    }
}

TEST_F(ExtraPreinitList, AFileInADirectoryIsSubjectToItsRules) {
    device_.directory().write("dir/a~", "a,T\n");
    device_.directory().write("dir/.b", "b,T\n");
    device_.directory().write("dir/c", "c,T\n");
    support::TraceRecorder const trace;
    EXPECT_EQ(support::declaredTypes(*load("@dir")), (Types{{"c", "T"}}));
    EXPECT_TRUE(trace.has(4, "canLoad oks loading 'c'"));
}

TEST_F(ExtraPreinitList, AFaultInAFileNamesTheEntryAsTheFile) {
    device_.directory().write("one", "\nno comma\n");
    EXPECT_THAT(support::faultList(*load("@one")),
                ElementsAre(path("one") + ":2: preinit syntax error: nocomma"));
}

TEST_F(ExtraPreinitList, AFaultInAFileOfADirectoryNamesTheFileAlone) {
    device_.directory().write("dir/one", "no comma\n");
    EXPECT_THAT(support::faultList(*load("@dir")),
                ElementsAre("one:1: preinit syntax error: nocomma"));
}

TEST_F(ExtraPreinitList, AFaultInALineDoesNotEndTheList) {
    device_.directory().write("one", "no comma\n");
    device_.directory().write("two", "a,T\n");
    auto const parser = load("@one:@two");
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "T"}}));
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
}

TEST_F(ExtraPreinitList, ABrokenFileInADirectoryDoesNotEndTheList) {
    auto const dir = device_.directory().makeDirectory("dir");
    std::filesystem::create_symlink("nowhere", device_.directory() / "dir/a");
    device_.directory().write("two", "a,T\n");
    auto const parser = load("@dir:@two");
    EXPECT_THAT(support::faultList(*parser), ElementsAre(":-1: Cannot openat file a in " + dir));
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "T"}}));
}

TEST_F(ExtraPreinitList, AFileThatMayNotBeReadIsReported) {
    auto const entry = device_.directory().write("secret", "a,T\n");
    chmod(entry.c_str(), 0);
    for (auto const& directory : {device_.directory().string(), device_.preinitDir()})
        chmod(directory.c_str(), 0755);
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", entry.c_str());
    auto const parser = device_.lenient();
    {
        support::Unprivileged const user;
        parser->doLoadPreinits();
    }
    EXPECT_THAT(support::faultList(*parser), ElementsAre(fopenFault(entry)));
    EXPECT_THAT(support::declaredTypes(*parser), IsEmpty());
}

TEST_F(ExtraPreinitList, WithoutADescriptorAFileIsReported) {
    auto const entry = device_.directory().write("one", "a,T\n");
    support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", entry.c_str());
    auto const parser = device_.lenient();
    {
        support::FewDescriptors const few(0);
        parser->doLoadPreinits();
    }
    EXPECT_THAT(support::faultList(*parser), ElementsAre(fopenFault(entry)));
}

TEST_F(ExtraPreinitList, WithoutADescriptorADirectoryIsReportedAndTheListGoesOn) {
    auto const list = device_.directory().makeDirectory("one") + ":/nonexistent";
    support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
    auto const parser = device_.lenient();
    {
        support::FewDescriptors const few(0);
        parser->doLoadPreinits();
    }
    EXPECT_THAT(
        support::faultList(*parser),
        ElementsAre(":-1: Cannot open directory " + path("one"), fopenFault("/nonexistent")));
}

// --- the default directory in the list ---

class DefaultPreinitDirectory : public testing::Test {
  protected:
    DefaultPreinitDirectory() {
        root_.write("usr/lib64/preinit/Base", "a,T\n");
        root_.write("usr/lib64/preinit2/File", "");
        root_.write("extra", "b,T\n");
        root_.write("Root", "root,T\n");
    }
    // Loads with this list and without the default load: whether the default preinit files count
    // as loaded, then the declared paths.
    std::string load(std::string const& list) const {
        support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
        support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
        return support::inChangedRoot(root_.path(), [] {
            support::LenientParser parser("/usr/lib64/preinit");
            parser.doLoadPreinits();
            std::string result = parser.defaultPreinitsLoaded() ? "default:" : "no default:";
            for (auto const& [path, type] : support::declaredTypes(parser))
                result += " " + path;
            return result;
        });
    }

    support::CleanEnvironment environment_;
    support::TemporaryDirectory root_;
};

TEST_F(DefaultPreinitDirectory, IsLoadedThroughTheListWithASlashAfterIt) {
    EXPECT_EQ(load("/usr/lib64/preinit/"), "default: a");
}

struct DefaultRow {
    char const* list;
    char const* result;
};

TEST_F(DefaultPreinitDirectory, CountsAsLoadedWhenAPieceIsItsVeryName) {
    for (auto const& [list, result] : std::vector<DefaultRow>{
             {"", "no default:"},
             {"/extra", "no default: b"},
             {"/usr/lib64/preinit", "default: a"},
             {"/usr/lib64/preinit///", "default: a"},
             {"/extra:/usr/lib64/preinit", "default: a b"},
             {"/usr/lib64/preinit:/extra", "default: a b"},
             {"/usr/lib64//preinit", "no default: a"},
             {"/usr/lib64/./preinit", "no default: a"},
             {"/usr/lib64/preinit/Base", "no default: a"},
             {"/usr/lib64/preinit2", "no default:"},
             {"/usr/lib64", "no default:"},
             {"/usr/lib64/preinit:/missing", "no default: a"},
         })
        EXPECT_EQ(load(list), result) << list;
}

TEST_F(DefaultPreinitDirectory, SlashesAloneStandForTheRootDirectory) {
    EXPECT_EQ(load("/"), "no default: b root");
    EXPECT_EQ(load("///"), "no default: b root");
}

} // namespace
