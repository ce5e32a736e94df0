// Directories and files that cannot be opened: what is reported, and what of the scan survives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/PreinitMaps.h"
#include "support/Scanner.h"
#include "support/TemporaryDirectory.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class DirectoryScanFaults : public testing::Test {
  protected:
    // Files "a", "b" and "c", each with one preinit line for its own path; "b" cannot be opened.
    void threeFilesOfWhichTheSecondIsBroken() const {
        directory_.write("a", "path/a,T\n");
        std::filesystem::create_symlink("no such file", directory_ / "b");
        directory_.write("c", "path/c,T\n");
    }
    std::string cannotOpen(std::string const& name) const {
        return "Cannot openat file " + name + " in " + directory_.string();
    }
    int scanPreinits(Kelda::MountFileInfo& parser) const {
        return parser.mapDir(directory_.string(), &Kelda::MountFileInfo::preinitLoader, nullptr,
                             nullptr);
    }

    support::CleanEnvironment environment_;
    support::TemporaryDirectory directory_;
    support::Scanner scanner_;
};

TEST_F(DirectoryScanFaults, AMissingDirectoryIsReported) {
    auto const missing = (directory_ / "missing").string();
    for (char const* const pattern :
         {static_cast<char const*>(nullptr), "a*", "a", "ConfigMountProfile"}) {
        SCOPED_TRACE(pattern == nullptr ? "(none)" : pattern);
        support::Scanner scanner;
        support::TraceRecorder const trace("MountFileInfo", 1);
        EXPECT_EQ(scanner.scan(missing, pattern), 0);
        EXPECT_THAT(support::faultList(scanner),
                    ElementsAre(":-1: Cannot open directory " + missing));
        EXPECT_EQ(trace.at(0), support::continuedTraces(scanner));
    }
}

TEST_F(DirectoryScanFaults, AMissingDirectoryHasNoVirtualProfile) {
    scanner_.addPathConfigInfo("a", true, true);
    scanner_.scan((directory_ / "missing").string(), "ConfigMountProfile");
    EXPECT_THAT(scanner_.pathMountArgsMap(), IsEmpty());
}

TEST_F(DirectoryScanFaults, ThePathOfAFileIsNoDirectory) {
    auto const file = directory_.write("file", "");
    EXPECT_EQ(scanner_.scan(file), 0);
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: Cannot open directory " + file));
}

TEST_F(DirectoryScanFaults, TheEmptyNameIsNoDirectory) {
    EXPECT_EQ(scanner_.scan(""), 0);
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: Cannot open directory "));
}

TEST_F(DirectoryScanFaults, ADirectoryThatMayNotBeReadIsReported) {
    auto const secret = directory_.makeDirectory("secret");
    chmod(secret.c_str(), 0);
    chmod(directory_.string().c_str(), 0755);
    {
        support::Unprivileged const user;
        EXPECT_EQ(scanner_.scan(secret), 0);
    }
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: Cannot open directory " + secret));
}

TEST_F(DirectoryScanFaults, AFileThatCannotBeOpenedEndsTheScan) {
    threeFilesOfWhichTheSecondIsBroken();
    support::TraceRecorder const trace("MountFileInfo", 1);
    EXPECT_EQ(scanner_.scan(directory_.string()), 0);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a"));
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: " + cannotOpen("b")));
    EXPECT_EQ(trace.at(0), support::continuedTraces(scanner_));
}

TEST_F(DirectoryScanFaults, WhatWasReadBeforeTheBrokenFileStays) {
    threeFilesOfWhichTheSecondIsBroken();
    EXPECT_EQ(scanPreinits(scanner_), 0);
    EXPECT_EQ(support::declaredTypes(scanner_),
              (support::Types{{"path", "Fen::Dir"}, {"path/a", "T"}}));
    EXPECT_THAT(scanner_.currentFiles(), IsEmpty());
}

TEST_F(DirectoryScanFaults, AFileThatMayNotBeReadEndsTheScan) {
    for (char const* const name : {"a", "b", "c"})
        directory_.write(name, "");
    chmod((directory_ / "b").c_str(), 0);
    chmod(directory_.string().c_str(), 0755);
    {
        support::Unprivileged const user;
        EXPECT_EQ(scanner_.scan(directory_.string()), 0);
    }
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a"));
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: " + cannotOpen("b")));
}

TEST_F(DirectoryScanFaults, AFileThatIsPassedOverNeedNotOpen) {
    std::filesystem::create_symlink("no such file", directory_ / "a~");
    std::filesystem::create_symlink("no such file", directory_ / "excluded");
    directory_.write("z", "");
    scanner_.exclusionRegexIs("excl");
    EXPECT_EQ(scanner_.scan(directory_.string()), 1);
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(DirectoryScanFaults, AFileThatVanishesDuringTheScanIsReported) {
    directory_.write("a", "");
    directory_.write("b", "");
    scanner_.onFile = [&](FILE*) {
        std::filesystem::remove(directory_ / "b");
        return 1;
    };
    EXPECT_EQ(scanner_.scan(directory_.string()), 0);
    EXPECT_THAT(support::faultList(scanner_), ElementsAre(":-1: " + cannotOpen("b")));
}

TEST_F(DirectoryScanFaults, AFaultDuringAnIncludeIsFiledUnderTheIncludingFile) {
    threeFilesOfWhichTheSecondIsBroken();
    scanner_.openFile("Includer", 12);
    scanner_.inIncludeIs(true);
    scanner_.scan(directory_.string());
    EXPECT_THAT(support::faultList(scanner_), ElementsAre("Includer:12: " + cannotOpen("b")));
    EXPECT_THAT(support::strings(scanner_.profileFileIncludesMap().at("Includer")),
                ElementsAre("a"));
}

TEST_F(DirectoryScanFaults, ABrokenFileGivesNoVirtualProfile) {
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    std::filesystem::create_symlink("no such file", directory_ / "ConfigMountProfile");
    scanner_.addPathConfigInfo("a", true, true);
    EXPECT_EQ(scanner_.scan(directory_.string(), "ConfigMountProfile"), 0);
    EXPECT_THAT(support::faultList(scanner_),
                ElementsAre(":-1: " + cannotOpen("ConfigMountProfile")));
    EXPECT_THAT(scanner_.pathMountArgsMap(), IsEmpty());
}

// --- no free descriptor ---

TEST_F(DirectoryScanFaults, WithoutADescriptorTheDirectoryCannotBeOpened) {
    directory_.write("a", "");
    int result = -1;
    {
        support::FewDescriptors const few(0);
        result = scanner_.scan(directory_.string());
    }
    EXPECT_EQ(result, 0);
    EXPECT_THAT(support::faultList(scanner_),
                ElementsAre(":-1: Cannot open directory " + directory_.string()));
}

TEST_F(DirectoryScanFaults, WithTheLastDescriptorUsedUpTheDirectoryIsNotTakenForAnEmptyOne) {
    directory_.write("a", "");
    for (unsigned spare = 1; spare <= 3; ++spare) {
        SCOPED_TRACE(spare);
        support::Scanner scanner;
        int result = -1;
        {
            support::FewDescriptors const few(spare);
            result = scanner.scan(directory_.string());
        }
        auto const read = scanner.filesRead().size();
        EXPECT_EQ(result, static_cast<int>(read));
        EXPECT_EQ(support::faultList(scanner).size(), 1 - read);
        EXPECT_TRUE(spare != 1 || read == 0) << "one descriptor is the directory's";
        EXPECT_TRUE(spare != 3 || read == 1) << "three are enough";
    }
}

TEST_F(DirectoryScanFaults, TheMissingDescriptorIsReportedByTheNameOfWhatNeededIt) {
    directory_.write("a", "");
    {
        support::FewDescriptors const few(1);
        scanner_.scan(directory_.string());
    }
    ASSERT_EQ(scanner_.exceptions().size(), 1U);
    auto const directory = directory_.string();
    EXPECT_THAT(support::messages(scanner_).front(),
                testing::AnyOf(cannotOpen("a"),
                               testing::MatchesRegex("Glob threw exception [0-9]+ while searching "
                                                     "for file " +
                                                     directory + "/\\* ")));
}

TEST_F(DirectoryScanFaults, WithoutADescriptorAConfigProfileOnDiskIsNotTakenForMissing) {
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    directory_.write("ConfigMountProfile", "");
    scanner_.addPathConfigInfo("a", true, true);
    int result = -1;
    {
        support::FewDescriptors const few(1);
        result = scanner_.scan(directory_.string(), "ConfigMountProfile");
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(scanner_.exceptions().size(), 1U);
    EXPECT_THAT(scanner_.pathMountArgsMap(), IsEmpty());
}

// --- the flavour that throws ---

TEST_F(DirectoryScanFaults, TheStrictFlavourThrowsForAMissingDirectory) {
    auto const parser = support::Device().emptyAgent();
    auto const missing = (directory_ / "missing").string();
    try {
        parser->mapDir(missing, &Kelda::MountFileInfo::preinitLoader, nullptr, nullptr);
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_EQ(fault.what(), "Cannot open directory " + missing);
    }
}

TEST_F(DirectoryScanFaults, TheStrictFlavourThrowsForABrokenFileAndKeepsWhatItRead) {
    threeFilesOfWhichTheSecondIsBroken();
    auto const parser = support::Device().emptyAgent();
    try {
        scanPreinits(*parser);
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_EQ(fault.what(), cannotOpen("b"));
    }
    EXPECT_THAT(support::faultList(*parser), ElementsAre(":-1: " + cannotOpen("b")));
    EXPECT_TRUE(support::declaredTypes(*parser).contains("path/a"));
    EXPECT_FALSE(support::declaredTypes(*parser).contains("path/c"));
}

TEST_F(DirectoryScanFaults, AnExceptionOfTheLoaderGoesOn) {
    directory_.write("a", "");
    directory_.write("b", "");
    scanner_.onFile = [](FILE*) -> int { throw std::runtime_error("enough"); };
    EXPECT_THROW(scanner_.scan(directory_.string()), std::runtime_error);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a"));
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

// --- a flavour that breaks the rules ---

class ForgetfulParser : public support::LenientParser {
  public:
    void maybeThrow(Rook::String const&) const override {}
};

TEST_F(DirectoryScanFaults, AFlavourThatRecordsNoFaultIsAProgrammingError) {
    ForgetfulParser parser;
    EXPECT_DEATH(
        parser.mapDir("/nonexistent", &Kelda::MountFileInfo::preinitLoader, nullptr, nullptr),
        "!exceptions_.empty\\(\\)");
}

} // namespace
