// Descriptors that loading opens: no started program inherits one, and none is left behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/Scanner.h"

namespace {

using testing::IsEmpty;

class ScanDescriptors : public testing::Test {
  protected:
    support::CleanEnvironment environment_;
    support::Device device_;
    std::set<int> const before_ = support::descriptorsInUse();
};

// Looks at the open descriptors when a fault is reported, that is, in the middle of loading.
class WatchingParser : public support::LenientParser {
  public:
    WatchingParser(std::string const& preinitDir, std::set<int> before)
        : LenientParser(preinitDir), before_(std::move(before)) {}

    void maybeThrow(Rook::String const& message) const override {
        LenientParser::maybeThrow(message);
        opened = support::descriptorsInUse().size() - before_.size();
        inherited = support::inheritedSince(before_);
    }

    mutable std::size_t opened = 0;
    mutable std::vector<int> inherited;

  private:
    std::set<int> before_;
};

TEST_F(ScanDescriptors, NoneIsInheritedByAProgramThatALoaderStarts) {
    device_.preinit("a", "").preinit("b", "");
    support::Scanner scanner;
    std::size_t opened = 0;
    scanner.onFile = [&](FILE*) {
        opened = support::descriptorsInUse().size() - before_.size();
        EXPECT_THAT(support::inheritedSince(before_), IsEmpty());
        return 1;
    };
    EXPECT_EQ(scanner.scan(device_.preinitDir()), 2);
    EXPECT_GE(opened, 1U) << "the file itself is open";
}

TEST_F(ScanDescriptors, NoneOfAnExtraPreinitFileIsInherited) {
    auto const extra = device_.directory().write("extra", "no comma\n");
    support::EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", extra.c_str());
    WatchingParser parser(device_.preinitDir(), before_);
    parser.doLoadPreinits();
    EXPECT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.opened, 1U);
    EXPECT_THAT(parser.inherited, IsEmpty());
}

TEST_F(ScanDescriptors, NoneOfAnExtraPreinitDirectoryIsInherited) {
    device_.directory().write("extra/File", "no comma\n");
    auto const extra = (device_.directory() / "extra").string();
    support::EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", extra.c_str());
    WatchingParser parser(device_.preinitDir(), before_);
    parser.doLoadPreinits();
    EXPECT_EQ(parser.exceptions().size(), 1U);
    EXPECT_GE(parser.opened, 1U);
    EXPECT_THAT(parser.inherited, IsEmpty());
}

TEST_F(ScanDescriptors, TheirNumberDoesNotGrowWithTheFiles) {
    for (int i = 0; i < 50; ++i)
        device_.preinit("file-" + std::to_string(i), "");
    support::Scanner scanner;
    std::set<std::size_t> counts;
    scanner.onFile = [&](FILE*) {
        counts.insert(support::descriptorsInUse().size());
        return 1;
    };
    EXPECT_EQ(scanner.scan(device_.preinitDir()), 50);
    EXPECT_EQ(counts.size(), 1U);
}

struct Path {
    char const* what;
    std::function<void(support::Device&)> prepare;
};

std::vector<Path> const& scans() {
    using std::filesystem::create_symlink;
    static std::vector<Path> const paths{
        {"files", [](auto& device) { device.preinit("a", "a,T\n").preinit("b", "b,T\n"); }},
        {"no files", [](auto&) {}},
        {"a bad line", [](auto& device) { device.preinit("a", "bad\n").preinit("b", "bad\n"); }},
        {"a folder", [](auto& device) { device.preinit("a/b", ""); }},
        {"files passed over", [](auto& device) { device.preinit("a~", "").preinit(".b", ""); }},
        {"a dangling link",
         [](auto& device) {
             create_symlink("nowhere", device.preinit("a", "a,T\n").directory() / "preinit/b");
         }},
        {"a pipe", [](auto& device) { mkfifo((device.directory() / "preinit/a").c_str(), 0600); }},
        {"a device",
         [](auto& device) { create_symlink("/dev/zero", device.directory() / "preinit/a"); }},
        {"no directory",
         [](auto& device) { std::filesystem::remove(device.directory() / "preinit"); }},
    };
    return paths;
}

template <class Parser>
void tryToLoadPreinits(Parser& parser) {
    try {
        parser.doLoadPreinits();
    } catch (Fen::AgentException const&) { // what a strict flavour does with a fault
    }
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByTheFlavourThatGoesOn) {
    for (auto const& [what, prepare] : scans()) {
        support::Device device;
        prepare(device);
        tryToLoadPreinits(*device.lenient());
        EXPECT_EQ(support::descriptorsInUse(), before_) << what;
    }
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByTheFlavourThatThrows) {
    for (auto const& [what, prepare] : scans()) {
        support::Device device;
        prepare(device);
        tryToLoadPreinits(*device.emptyAgent());
        EXPECT_EQ(support::descriptorsInUse(), before_) << what;
    }
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByExtraPreinits) {
    device_.directory().write("good", "a,T\n");
    device_.directory().write("bad", "no comma\n");
    device_.directory().write("folder/bad", "no comma\n");
    mkfifo((device_.directory() / "pipe").c_str(), 0600);
    for (char const* const name : {"good", "bad", "folder", "missing", "pipe"}) {
        auto const entry = (device_.directory() / name).string();
        support::EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", entry.c_str());
        tryToLoadPreinits(*device_.lenient());
        EXPECT_EQ(support::descriptorsInUse(), before_) << name;
        tryToLoadPreinits(*device_.emptyAgent());
        EXPECT_EQ(support::descriptorsInUse(), before_) << name << ", thrown";
    }
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByALoaderThatThrows) {
    device_.preinit("a", "");
    support::Scanner scanner;
    scanner.onFile = [](FILE*) -> int { throw std::runtime_error("enough"); };
    EXPECT_THROW(scanner.scan(device_.preinitDir()), std::runtime_error);
    EXPECT_EQ(support::descriptorsInUse(), before_);
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByAScanWithinAScanThatThrows) {
    device_.preinit("a", "").profile("b", "");
    support::Scanner scanner;
    scanner.onFile = [&](FILE*) {
        if (scanner.currentFileName() == "b")
            throw std::runtime_error("enough");
        return scanner.scan(device_.profileDir());
    };
    EXPECT_THROW(scanner.scan(device_.preinitDir()), std::runtime_error);
    EXPECT_EQ(support::descriptorsInUse(), before_);
}

TEST_F(ScanDescriptors, NoneIsLeftBehindWhenFewAreFree) {
    device_.preinit("a", "");
    for (unsigned spare = 0; spare <= 3; ++spare) {
        {
            support::FewDescriptors const few(spare);
            support::Scanner().scan(device_.preinitDir());
        }
        EXPECT_EQ(support::descriptorsInUse(), before_) << spare;
    }
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByTheVirtualProfile) {
    support::Scanner scanner;
    EXPECT_EQ(scanner.scan(device_.profileDir(), "ConfigMountProfile"), 1);
    EXPECT_EQ(support::descriptorsInUse(), before_);
}

TEST_F(ScanDescriptors, NoneIsLeftBehindByProfilesAndIncludes) {
    device_.preinit("All", "a,T\n")
        .profile("Fan", "agentName:Fan\nInclude:common\nInclude:missing*\na,T,r\n")
        .profile("common", "a,T,w\n")
        .profile("Pan", "agentName:Pan\nInclude:missing\n");
    device_.agent("Fan")->doInit();
    EXPECT_EQ(support::descriptorsInUse(), before_);
    EXPECT_THROW(device_.agent("Pan")->doInit(), Fen::AgentException);
    EXPECT_EQ(support::descriptorsInUse(), before_);
}

} // namespace
