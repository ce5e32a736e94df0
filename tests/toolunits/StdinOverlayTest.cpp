// A device with one file replaced by what an editor holds.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/StdinOverlay.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/EnvironmentVariable.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using KeldaTool::StdinOverlay;
using testing::ElementsAre;
using testing::IsEmpty;

class WorkingFolder {
  public:
    explicit WorkingFolder(fs::path const& folder) { fs::current_path(folder); }
    ~WorkingFolder() { fs::current_path(before_); }
    WorkingFolder(WorkingFolder const&) = delete;
    WorkingFolder& operator=(WorkingFolder const&) = delete;

  private:
    fs::path before_ = fs::current_path();
};

class StdinOverlayTest : public testing::Test {
  protected:
    StdinOverlayTest() {
        device.preinit("Preinit", "saved,T\nunsaved,T\nshared,T\n")
            .profile("P", "agentName: A\nsaved,T,r\n")
            .profile("Q", "agentName: B\nInclude: sh*\n")
            .profile("shared", "shared,T,r\n");
    }

    std::unique_ptr<StdinOverlay> overlay(std::string const& file, std::string const& text) const {
        return std::make_unique<StdinOverlay>(device.preinitDir(), device.profileDir(), file, text);
    }
    std::string profile(std::string const& name) const { return device.profileDir() + "/" + name; }
    fs::path folder(char const* name) const { return device.directory() / name; }

    support::CleanEnvironment environment;
    support::Device device;
};

// The paths that the profiles mount, and "FILE:LINE: MESSAGE" of each fault.
std::vector<std::string> loaded(std::string const& preinitDir, std::string const& profileDir) {
    support::LenientParser parser(preinitDir, profileDir);
    parser.doInit();
    std::vector<std::string> texts;
    for (auto const& [path, args] : parser.pathMountArgsMap())
        texts.emplace_back(path.view());
    for (auto const& fault : parser.exceptions())
        texts.push_back(std::string(fault.file.view()) + ":" + std::to_string(fault.line) + ": " +
                        std::string(fault.msg.view()));
    return texts;
}

std::vector<std::string> loaded(StdinOverlay const& overlay) {
    return loaded(overlay.preinitDir(), overlay.profileDir());
}

std::string const unsaved = "agentName: A\nunsaved,T,r\n";

// --- what is loaded ---

TEST_F(StdinOverlayTest, TheTextIsLoadedInThePlaceOfTheFile) {
    auto const overlaid = overlay(profile("P"), unsaved);
    EXPECT_THAT(loaded(*overlaid), ElementsAre("shared", "unsaved"));
    EXPECT_THAT(loaded(device.preinitDir(), device.profileDir()), ElementsAre("saved", "shared"));
}

TEST_F(StdinOverlayTest, TheFolderOfTheFileIsMirroredAndTheOtherIsNot) {
    auto const ofProfile = overlay(profile("P"), unsaved);
    EXPECT_EQ(ofProfile->preinitDir(), device.preinitDir());
    EXPECT_NE(ofProfile->profileDir(), device.profileDir());
    auto const ofPreinit = overlay(device.preinitDir() + "/Preinit", "shared,T\n");
    EXPECT_EQ(ofPreinit->profileDir(), device.profileDir());
    auto const texts = loaded(*ofPreinit);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_THAT(texts[1], testing::StartsWith("P:2: No type info for path 'saved'"));
}

TEST_F(StdinOverlayTest, AFileThatIsIncludedIsReplacedWhereItIsIncluded) {
    auto const overlaid = overlay(profile("shared"), "unsaved,T,r\nfoo\n");
    EXPECT_THAT(loaded(*overlaid),
                ElementsAre("saved", "unsaved", testing::StartsWith("shared:2: ")));
}

TEST_F(StdinOverlayTest, TheFileNeedNotExist) {
    EXPECT_THAT(loaded(*overlay(profile("new"), "agentName: C\nunsaved,T,r\n")),
                ElementsAre("saved", "shared", "unsaved"));
    EXPECT_FALSE(fs::exists(profile("new")));
}

TEST_F(StdinOverlayTest, AFileMayBeEmpty) {
    EXPECT_THAT(loaded(*overlay(profile("P"), "")), ElementsAre("shared"));
}

TEST_F(StdinOverlayTest, TheTextMayHoldAnyBytes) {
    auto const text = "agentName: A\nunsaved,T,r\n\0\xff\r\n\x1a\n"s;
    auto const overlaid = overlay(profile("P"), text);
    std::ifstream stream(overlaid->profileDir() + "/P", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), text);
}

TEST_F(StdinOverlayTest, OneFolderMayServeForBoth) {
    StdinOverlay const overlaid(device.profileDir(), device.profileDir(), profile("P"), unsaved);
    EXPECT_NE(overlaid.preinitDir(), device.profileDir());
    EXPECT_NE(overlaid.profileDir(), device.profileDir());
    EXPECT_EQ(overlaid.original(overlaid.preinitDir() + "/P"), profile("P"));
}

// --- what else is in the folder ---

TEST_F(StdinOverlayTest, FilesOfAllNamesStayWhatTheyAre) {
    device.profile(".hidden", "shared,T,r\n")
        .profile("odd\n\xff[a]*\\ name", "agentName: C\nInclude: .hidden\nunsaved,T,r\n")
        .profile("backup~", "agentName: D\nnone,T,r\n")
        .profile(std::string(255, 'n'), "agentName: E\nnone,T,r\n");
    fs::create_directory(folder("profiles/sub"));
    fs::create_symlink("nowhere", folder("profiles/z.dangling"));
    auto const before = loaded(device.preinitDir(), device.profileDir());
    EXPECT_THAT(before, testing::Contains("unsaved"));
    for (auto const* const replaced : {"shared", "odd\n\xff[a]*\\ name", ".hidden"}) {
        std::ifstream stream(profile(replaced));
        std::string const same(std::istreambuf_iterator<char>(stream), {});
        auto const overlaid = overlay(profile(replaced), same);
        auto after = loaded(*overlaid);
        for (auto& text : after)
            text = overlaid->original(text);
        EXPECT_EQ(after, before);
    }
}

TEST_F(StdinOverlayTest, FoldersInsideAreNoFiles) {
    fs::create_directory(folder("profiles/sub"));
    device.profile("sub/P", unsaved);
    EXPECT_THAT(loaded(*overlay(profile("P"), unsaved)), ElementsAre("shared", "unsaved"));
}

TEST_F(StdinOverlayTest, AHiddenFileIsReplacedWhereItIsIncluded) {
    device.profile("Q", "agentName: B\nInclude: .hidden\n").profile(".hidden", "saved,T,r\n");
    EXPECT_THAT(loaded(*overlay(profile(".hidden"), "unsaved,T,r\n")),
                ElementsAre("saved", "unsaved"));
}

TEST_F(StdinOverlayTest, AFileThatCannotBeReadIsToldOfAsBefore) {
    fs::create_symlink("nowhere", folder("profiles/Z"));
    auto const overlaid = overlay(profile("P"), unsaved);
    auto const texts = loaded(*overlaid);
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(overlaid->original(texts.back()),
              loaded(device.preinitDir(), device.profileDir()).back());
    EXPECT_NE(texts.back(), overlaid->original(texts.back()));
}

// --- how the file may be named ---

TEST_F(StdinOverlayTest, TheFileMayBeNamedInManyWays) {
    fs::create_directory_symlink(folder("profiles"), folder("link"));
    fs::create_symlink(folder("profiles/P"), folder("linkToFile"));
    WorkingFolder const working(device.directory().path());
    for (auto const* const name :
         {"profiles/P", "./profiles//P", "preinit/../profiles/P", "link/P", "linkToFile"})
        for (auto const* const profiles : {"profiles", "link", "profiles/", "./link"}) {
            StdinOverlay const overlaid("preinit", profiles, name, unsaved);
            EXPECT_THAT(loaded(overlaid), ElementsAre("shared", "unsaved")) << name << profiles;
        }
    WorkingFolder const inside(folder("profiles"));
    EXPECT_THAT(loaded(StdinOverlay("../preinit", ".", "P", unsaved)),
                ElementsAre("shared", "unsaved"));
    EXPECT_THAT(loaded(StdinOverlay("../preinit", "../profiles", "./new", "agentName: C\n")),
                ElementsAre("saved", "shared"));
}

TEST_F(StdinOverlayTest, AFileMayStandInItsFolderAsALink) {
    auto const real = device.directory().write("elsewhere/real", "agentName: C\nsaved,T,r\n");
    fs::create_symlink(real, folder("profiles/R"));
    fs::create_hard_link(real, folder("profiles/S"));
    for (auto const& name : {real, profile("R"), profile("S")})
        EXPECT_THAT(loaded(*overlay(name, "agentName: C\nunsaved,T,r\n")),
                    ElementsAre("saved", "shared", "unsaved"))
            << name;
    std::ifstream stream(real);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "agentName: C\nsaved,T,r\n");
}

TEST_F(StdinOverlayTest, ALinkThatLeadsNowhereMayBeReplaced) {
    fs::create_symlink("nowhere", folder("profiles/Z"));
    EXPECT_THAT(loaded(*overlay(profile("Z"), "agentName: C\nunsaved,T,r\n")),
                ElementsAre("saved", "shared", "unsaved"));
}

std::string whyNot(std::string const& preinitDir, std::string const& profileDir,
                   std::string const& file) {
    try {
        StdinOverlay const overlaid(preinitDir, profileDir, file, "");
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "it was taken";
}

TEST_F(StdinOverlayTest, TheFileMustStandInOneOfTheFolders) {
    device.directory().write("other", "");
    device.profile("sub/P", "");
    WorkingFolder const working(device.directory().path());
    for (auto const* const name :
         {"other", "new", "profiles/sub/P", "profiles/sub/new", "none/P", "P\n"})
        EXPECT_EQ(whyNot("preinit", "profiles", name),
                  (name == std::string("P\n") ? "P\\x0a" : std::string(name)) +
                      " stands neither in preinit nor in profiles");
}

TEST_F(StdinOverlayTest, AFolderIsNoFile) {
    fs::create_directory(folder("profiles/sub"));
    for (auto const& name :
         {std::string(), profile(""), profile("."), profile(".."), profile("sub"), profile("new/")})
        EXPECT_EQ(whyNot(device.preinitDir(), device.profileDir(), name),
                  "'" + name + "' is not the name of a file");
}

TEST_F(StdinOverlayTest, AFolderThatIsNotThereIsNotMirrored) {
    auto const none = device.directory().string() + "/none";
    StdinOverlay const overlaid(none, device.profileDir(), profile("P"), unsaved);
    EXPECT_EQ(overlaid.preinitDir(), none);
    EXPECT_EQ(whyNot(none, none, none + "/P"),
              none + "/P stands neither in " + none + " nor in " + none);
}

TEST_F(StdinOverlayTest, TellsWhereTheTextStands) {
    auto const one = overlay(profile("P"), unsaved);
    EXPECT_THAT(one->files(), ElementsAre(one->profileDir() + "/P"));
    fs::create_symlink("P", folder("profiles/AlsoP"));
    auto const two = overlay(profile("P"), unsaved);
    EXPECT_THAT(two->files(), ElementsAre(two->profileDir() + "/AlsoP", two->profileDir() + "/P"));
}

// --- paths as they are shown, and what is left behind ---

TEST_F(StdinOverlayTest, PathsAreShownAsWithoutIt) {
    auto const overlaid = overlay(profile("P"), unsaved);
    EXPECT_EQ(overlaid->original(overlaid->profileDir() + "/Q"), profile("Q"));
    EXPECT_EQ(overlaid->original("in " + overlaid->profileDir() + " and " + overlaid->profileDir()),
              "in " + device.profileDir() + " and " + device.profileDir());
    for (auto const& text :
         {std::string(), device.preinitDir() + "/Preinit", std::string("profiles/P")})
        EXPECT_EQ(overlaid->original(text), text);
}

TEST_F(StdinOverlayTest, NothingIsLeftBehindAndNothingIsChanged) {
    support::TemporaryDirectory const temporary;
    support::EnvironmentVariable const tmpdir("TMPDIR", temporary.string().c_str());
    auto overlaid = overlay(profile("P"), unsaved);
    EXPECT_FALSE(fs::is_empty(temporary.path()));
    EXPECT_EQ(fs::status(overlaid->profileDir()).type(), fs::file_type::directory);
    overlaid.reset();
    EXPECT_TRUE(fs::is_empty(temporary.path()));
    EXPECT_NE(whyNot("/none", "/none", "/none/P"), "it was taken");
    EXPECT_TRUE(fs::is_empty(temporary.path()));
    EXPECT_THAT(loaded(device.preinitDir(), device.profileDir()), ElementsAre("saved", "shared"));
}

TEST_F(StdinOverlayTest, WithoutATemporaryFolderTheReasonIsTold) {
    support::EnvironmentVariable const tmpdir("TMPDIR", "/none/at/all");
    EXPECT_EQ(whyNot(device.preinitDir(), device.profileDir(), profile("P")),
              "cannot make a temporary folder: No such file or directory");
}

} // namespace
