// Directory scans while the C library's fdopen and glob fail, which no file on disk can bring
// about: this program puts its own in front of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include <dlfcn.h>
#include <glob.h>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/Scanner.h"
#include "support/TraceRecorder.h"

namespace {

int fdopensThatSucceed = -1; ///< calls until one fails; -1 for all
int globResult = 0;          ///< what glob returns, when not 0

template <class Function>
Function* nextOf(char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) FILE* fdopen(int descriptor, char const* mode) noexcept {
    if (fdopensThatSucceed == 0) {
        errno = ENOMEM;
        return nullptr;
    }
    if (fdopensThatSucceed > 0)
        --fdopensThatSucceed;
    return nextOf<FILE*(int, char const*)>("fdopen")(descriptor, mode);
}

__attribute__((visibility("default"))) int
glob(char const* pattern, int flags, int (*onError)(char const*, int), glob_t* matches) noexcept {
    if (globResult != 0)
        return globResult;
    using Glob = int(char const*, int, int (*)(char const*, int), glob_t*);
    return nextOf<Glob>("glob")(pattern, flags, onError, matches);
}
}

namespace {

using testing::ElementsAre;

class FailingSystemCalls : public testing::Test {
  protected:
    FailingSystemCalls() {
        for (char const* const name : {"a", "b", "c"})
            device_.preinit(name, "");
    }
    ~FailingSystemCalls() override {
        fdopensThatSucceed = -1;
        globResult = 0;
    }
    // What the strict flavour throws while it scans the preinit directory.
    std::string thrownText() const {
        try {
            device_.emptyAgent()->doLoadPreinits();
        } catch (Fen::AgentException const& fault) {
            return fault.what();
        }
        return "(nothing was thrown)";
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    support::Scanner scanner_;
};

TEST_F(FailingSystemCalls, AFileThatGetsNoStreamEndsTheScan) {
    auto const before = support::descriptorsInUse();
    support::TraceRecorder const trace("MountFileInfo", 1);
    fdopensThatSucceed = 1;
    EXPECT_EQ(scanner_.scan(device_.preinitDir()), 0);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a"));
    EXPECT_THAT(support::faultList(scanner_),
                ElementsAre(":-1: Cannot fdopen file b in " + device_.preinitDir()));
    EXPECT_EQ(trace.at(0), support::continuedTraces(scanner_));
    EXPECT_EQ(support::descriptorsInUse(), before);
}

TEST_F(FailingSystemCalls, AFileThatGetsNoStreamIsThrownByTheStrictFlavour) {
    auto const before = support::descriptorsInUse();
    fdopensThatSucceed = 1;
    EXPECT_EQ(thrownText(), "Cannot fdopen file b in " + device_.preinitDir());
    EXPECT_EQ(support::descriptorsInUse(), before);
}

TEST_F(FailingSystemCalls, ASearchThatFailsIsReportedWithItsCode) {
    for (int const code : {GLOB_NOSPACE, GLOB_ABORTED}) {
        support::Scanner scanner;
        support::TraceRecorder const trace("MountFileInfo", 1);
        globResult = code;
        EXPECT_EQ(scanner.scan(device_.preinitDir(), "a*"), 0);
        EXPECT_THAT(scanner.filesRead(), testing::IsEmpty());
        EXPECT_THAT(support::faultList(scanner),
                    ElementsAre(":-1: Glob threw exception " + std::to_string(code) +
                                " while searching for file " + device_.preinitDir() + "/a* "));
        EXPECT_EQ(trace.at(0), support::continuedTraces(scanner));
    }
}

TEST_F(FailingSystemCalls, ASearchThatFailsIsThrownByTheStrictFlavour) {
    auto const before = support::descriptorsInUse();
    globResult = GLOB_ABORTED;
    EXPECT_EQ(thrownText(),
              "Glob threw exception 2 while searching for file " + device_.preinitDir() + "/* ");
    EXPECT_EQ(support::descriptorsInUse(), before);
}

TEST_F(FailingSystemCalls, ASearchThatFailsLeavesNoDescriptorBehind) {
    auto const before = support::descriptorsInUse();
    globResult = GLOB_NOSPACE;
    scanner_.scan(device_.preinitDir());
    EXPECT_EQ(support::descriptorsInUse(), before);
}

TEST_F(FailingSystemCalls, ASearchThatFailsGivesNoVirtualProfile) {
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    scanner_.addPathConfigInfo("a", true, true);
    globResult = GLOB_NOSPACE;
    EXPECT_EQ(scanner_.scan(device_.profileDir(), "ConfigMountProfile"), 0);
    EXPECT_THAT(scanner_.pathMountArgsMap(), testing::IsEmpty());
}

} // namespace
