// Directories that hold more than files, directories with odd names, and very full ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/PreinitMaps.h"
#include "support/Scanner.h"
#include "support/TemporaryDirectory.h"

namespace {

using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

void makePipe(std::filesystem::path const& path) {
    if (mkfifo(path.c_str(), 0600) != 0)
        throw std::runtime_error("cannot make a pipe");
}

void makeSocket(std::filesystem::path const& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.string().size() >= sizeof address.sun_path)
        throw std::runtime_error("the temporary directory's name is too long for a socket");
    std::strcpy(address.sun_path, path.c_str());
    int const descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    int const result = bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address);
    close(descriptor);
    if (result != 0)
        throw std::runtime_error("cannot make a socket");
}

struct SpecialFile {
    char const* kind;
    std::function<void(std::filesystem::path const&)> make;
};

// Everything that opens without being a file, or does not open at all.
std::vector<SpecialFile> const& unreadableKinds() {
    using std::filesystem::create_symlink;
    static std::vector<SpecialFile> const kinds{
        {"pipe", makePipe},
        {"socket", makeSocket},
        {"endless device", [](auto const& path) { create_symlink("/dev/zero", path); }},
        {"empty device", [](auto const& path) { create_symlink("/dev/null", path); }},
        {"dangling link", [](auto const& path) { create_symlink("nowhere", path); }},
        {"link to itself", [](auto const& path) { create_symlink(path.filename(), path); }},
        {"link to a pipe",
         [](auto const& path) {
             auto const pipe = path.string() + "~";
             makePipe(pipe);
             create_symlink(pipe, path);
         }},
    };
    return kinds;
}

class SpecialFiles : public testing::Test {
  protected:
    support::CleanEnvironment environment_;
};

TEST_F(SpecialFiles, WhatIsNoFileIsReportedLikeAFileThatCannotBeOpened) {
    for (auto const& [kind, make] : unreadableKinds()) {
        SCOPED_TRACE(kind);
        support::TemporaryDirectory const directory;
        directory.write("a", "");
        make(directory / "b");
        directory.write("c", "");
        support::Scanner scanner;
        EXPECT_EQ(scanner.scan(directory.string()), 0);
        EXPECT_THAT(scanner.filesRead(), ElementsAre("a"));
        EXPECT_THAT(support::faultList(scanner),
                    ElementsAre(":-1: Cannot openat file b in " + directory.string()));
    }
}

TEST_F(SpecialFiles, WhatIsNoFileIsReportedWhenItIsAskedForByName) {
    for (auto const& [kind, make] : unreadableKinds()) {
        SCOPED_TRACE(kind);
        support::TemporaryDirectory const directory;
        make(directory / "b");
        support::Scanner scanner;
        EXPECT_EQ(scanner.scan(directory.string(), "b"), 0);
        EXPECT_THAT(support::faultList(scanner),
                    ElementsAre(":-1: Cannot openat file b in " + directory.string()));
    }
}

TEST_F(SpecialFiles, WhatIsNoFileIsReportedInTheExtraPreinitList) {
    for (auto const& [kind, make] : unreadableKinds()) {
        SCOPED_TRACE(kind);
        support::Device device;
        auto const entry = (device.directory() / "extra").string();
        make(entry);
        support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", entry.c_str());
        auto const parser = device.lenient();
        parser->doLoadPreinits();
        EXPECT_THAT(support::faultList(*parser),
                    ElementsAre(":-1: Unable to fopen preinit profile: " + entry));
        EXPECT_FALSE(parser->defaultPreinitsLoaded());
    }
}

TEST_F(SpecialFiles, AFolderInAScannedDirectoryReadsAsAnEmptyFile) {
    support::TemporaryDirectory const directory;
    directory.write("a", "text");
    directory.write("b/file", "unread");
    std::filesystem::create_symlink("b", directory / "c");
    Strings texts;
    support::Scanner scanner;
    scanner.onFile = [&](FILE* file) {
        texts.push_back(support::remainingText(file));
        return 1;
    };
    EXPECT_EQ(scanner.scan(directory.string()), 3);
    EXPECT_THAT(scanner.filesRead(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(texts, ElementsAre("text", "", ""));
    EXPECT_THAT(support::faultList(scanner), IsEmpty());
}

TEST_F(SpecialFiles, AFolderAmongThePreinitFilesBringsNothing) {
    support::Device device;
    device.preinit("a/file", "unread,T\n").preinit("b", "read,T\n");
    auto const parser = device.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (support::Types{{"read", "T"}}));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(SpecialFiles, ALinkToAFileIsReadUnderItsOwnName) {
    support::TemporaryDirectory const elsewhere;
    support::TemporaryDirectory const directory;
    std::filesystem::create_symlink(elsewhere.write("target", "text"), directory / "link");
    support::Scanner scanner;
    scanner.onFile = [](FILE* file) { return support::remainingText(file) == "text" ? 1 : 0; };
    EXPECT_EQ(scanner.scan(directory.string()), 1);
    EXPECT_THAT(scanner.filesRead(), ElementsAre("link"));
}

TEST_F(SpecialFiles, ALinkToADirectoryIsScanned) {
    support::TemporaryDirectory const elsewhere;
    elsewhere.write("directory/file", "");
    std::filesystem::create_symlink("directory", elsewhere / "link");
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan((elsewhere / "link").string()), 1);
}

// --- directories with odd names ---

Strings const& oddNames() {
    static Strings const names{"a[b]c", "a*c",       "a?c",         "a\\c",     "a\\*c",
                               "c\\",   "[",         "[a-z",        "]",        "[!a]bc",
                               "*",     "?",         "{abc,ab}",    "~",        "~root",
                               "$HOME", "two words", "a\\[b]c\\\\", "line\nend"};
    return names;
}

TEST_F(SpecialFiles, TheNameOfAScannedDirectoryStandsForItself) {
    for (auto const& name : oddNames()) {
        SCOPED_TRACE(name);
        support::TemporaryDirectory const directory;
        for (char const* const decoy : {"abc", "ac", "a", "ab", "x", "c"})
            directory.write(std::string(decoy) + "/Decoy", "");
        directory.write(name + "/File", "");
        for (char const* const pattern : {static_cast<char const*>(nullptr), "F*", "File"}) {
            support::Scanner scanner;
            EXPECT_EQ(scanner.scan((directory / name).string(), pattern), 1);
            EXPECT_THAT(scanner.filesRead(), ElementsAre("File"));
            EXPECT_THAT(support::faultList(scanner), IsEmpty());
        }
    }
}

TEST_F(SpecialFiles, ADirectoryAboveTheScannedOneStandsForItselfToo) {
    support::TemporaryDirectory const directory;
    directory.write("a*/sub/File", "");
    directory.write("ab/sub/Decoy", "");
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan((directory / "a*/sub").string()), 1);
    EXPECT_THAT(scanner.filesRead(), ElementsAre("File"));
}

TEST_F(SpecialFiles, AMissingDirectoryWithPatternCharactersIsMissing) {
    support::TemporaryDirectory const directory;
    directory.write("abc/Decoy", "");
    auto const name = (directory / "a*c").string();
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan(name), 0);
    EXPECT_THAT(support::faultList(scanner), ElementsAre(":-1: Cannot open directory " + name));
}

TEST_F(SpecialFiles, AMessageNamesAnOddDirectoryAsItIs) {
    support::TemporaryDirectory const directory;
    auto const odd = directory.makeDirectory("[a]*\\");
    std::filesystem::create_symlink("nowhere", directory / "[a]*\\/link");
    support::Scanner scanner;
    scanner.scan(odd);
    EXPECT_THAT(support::faultList(scanner), ElementsAre(":-1: Cannot openat file link in " + odd));
}

TEST_F(SpecialFiles, AnOddDirectoryInTheExtraPreinitListIsRead) {
    support::Device device;
    device.directory().write("[x]*/Extra", "extra,T\n");
    auto const entry = (device.directory() / "[x]*").string();
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", entry.c_str());
    auto const parser = device.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (support::Types{{"extra", "T"}}));
}

TEST_F(SpecialFiles, AProfileDirectoryWithPatternCharactersServesIncludes) {
    support::TemporaryDirectory const directory;
    directory.write("p[1]/Fan", "agentName:Fan\nInclude:common-?\n");
    directory.write("p[1]/common-a", "a,T,r\n");
    directory.makeDirectory("preinit");
    directory.write("preinit/All", "a,T\n");
    support::LenientParser parser((directory / "preinit").string(), (directory / "p[1]").string());
    parser.doInit();
    EXPECT_TRUE(parser.isExplicit("a"));
    EXPECT_TRUE(parser.fileIsLoaded("common-a"));
}

// --- a very full directory ---

// Empty files "file-100000" to "file-199999", made from the last to the first. Ten files carry all
// names, since a link is made much faster than a file.
void fillWithNames(support::TemporaryDirectory const& directory) {
    int const folder = open(directory.string().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string linked;
    for (int number = 199'999; number >= 100'000; --number) {
        auto const name = "file-" + std::to_string(number);
        if (number % 10'000 == 9'999)
            close(openat(folder, (linked = name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        else if (linkat(folder, linked.c_str(), folder, name.c_str(), 0) != 0)
            throw std::runtime_error("cannot make " + name);
    }
    close(folder);
}

TEST_F(SpecialFiles, AHundredThousandFilesAreAllReadInOrder) {
    support::TemporaryDirectory const directory;
    fillWithNames(directory);
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan(directory.string()), 100'000);
    EXPECT_TRUE(std::is_sorted(scanner.filesRead().begin(), scanner.filesRead().end()));
    EXPECT_EQ(scanner.filesRead().front(), "file-100000");
    EXPECT_EQ(scanner.filesRead().back(), "file-199999");
    EXPECT_THAT(support::faultList(scanner), IsEmpty());
}

} // namespace
