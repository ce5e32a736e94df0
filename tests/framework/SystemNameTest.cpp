// The name of the system.
#include <Fen/SystemName.h>

#include <array>
#include <cstdlib>
#include <string_view>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(SystemNameTest, ItIsTheHostName) {
    std::array<char, 256> name{};
    ASSERT_EQ(gethostname(name.data(), name.size() - 1), 0);
    EXPECT_EQ(Fen::systemName(), name.data());
}

constexpr int notPermitted = 77;

// Gives the calling process, and none other, this host name.
void renameHost(std::string_view name) {
    if (unshare(CLONE_NEWUTS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWUTS) != 0)
        _exit(notPermitted);
    if (sethostname(name.data(), name.size()) != 0)
        _exit(notPermitted);
}

bool mayRenameHost() {
    auto const child = fork();
    if (child == 0) {
        renameHost("kelda-trial");
        _exit(EXIT_SUCCESS);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

TEST(SystemNameDeathTest, ItFollowsANewHostName) {
    if (!mayRenameHost())
        GTEST_SKIP() << "this system lets no test give a process a host name of its own";
    EXPECT_EXIT(
        {
            auto const former = Fen::systemName();
            renameHost("kelda-test-host");
            bool const follows = Fen::systemName() == "kelda-test-host";
            _exit(follows && former != Fen::systemName() ? EXIT_SUCCESS : EXIT_FAILURE);
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "");
}

} // namespace
