// The virtual operations stand in the order that a flavour built elsewhere was compiled against.
#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <optional>
#include <regex>
#include <sstream>
#include <string>

#include <KeldaBase/MountFileInfo.h>

namespace {

using Kelda::LineBuffer;
using Kelda::MountArgs;
using Kelda::MountFileInfo;
using Rook::String;

// The two words of a pointer to a member function. For a virtual one the first holds the offset of
// its slot in the table, plus 1 where no other place tells that it is virtual.
struct MemberPointer {
    std::ptrdiff_t function = 0;
    std::ptrdiff_t adjustment = 0;

#if defined(__aarch64__) || defined(__arm__)
    bool isVirtual() const {
        return (adjustment & 1) == 1;
    }
    std::ptrdiff_t offset() const {
        return function;
    }
#else
    bool isVirtual() const {
        return (function & 1) == 1;
    }
    std::ptrdiff_t offset() const {
        return function - 1;
    }
#endif
};

// The number of a virtual operation among all of its class, from 1 on, the destructor's two slots
// not counted.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    constexpr std::ptrdiff_t slotBytes = sizeof(void*);
    constexpr std::ptrdiff_t destructorSlots = 2;
    auto const pointer = std::bit_cast<MemberPointer>(operation);
    EXPECT_TRUE(pointer.isVirtual());
    return pointer.offset() / slotBytes - destructorSlots + 1;
}

template <class Result, class... Arguments>
std::ptrdiff_t slot(Result (MountFileInfo::*operation)(Arguments...)) {
    return slotOf(operation);
}
template <class Result, class... Arguments>
std::ptrdiff_t slotOfConst(Result (MountFileInfo::*operation)(Arguments...) const) {
    return slotOf(operation);
}

TEST(VirtualSlots, TheLifeCycleComesFirst) {
    EXPECT_EQ((slot<void, String, String>(&MountFileInfo::addAgent)), 1);
    EXPECT_EQ((slot<void, String const&>(&MountFileInfo::addProfile)), 2);
    EXPECT_EQ((slot<String>(&MountFileInfo::agentName)), 3);
    EXPECT_EQ((slot<void>(&MountFileInfo::doInit)), 4);
    EXPECT_EQ((slot<void>(&MountFileInfo::unDoInit)), 5);
    EXPECT_EQ((slot<void>(&MountFileInfo::disableUnDoInit)), 6);
    EXPECT_EQ((slot<void>(&MountFileInfo::clearProfileData)), 7);
}

TEST(VirtualSlots, TheSwitchesOfOneFlavourFollow) {
    EXPECT_EQ((slot<void, String const&>(&MountFileInfo::setRootFlags)), 8);
    EXPECT_EQ((slot<void, std::regex const&>(&MountFileInfo::setExclusionRegex)), 9);
    EXPECT_EQ((slot<void>(&MountFileInfo::setForceNoDefaultMountGroup)), 10);
    EXPECT_EQ((slot<void>(&MountFileInfo::setWaitForActiveReady)), 11);
    EXPECT_EQ((slot<void, bool>(&MountFileInfo::staticCheckIs)), 12);
    EXPECT_EQ((slot<bool, String const&>(&MountFileInfo::foundMountProfile)), 13);
}

TEST(VirtualSlots, ThenTheLoadingOfAgents) {
    EXPECT_EQ((slot<void, String const&, MountArgs const&, bool, bool>(
                  &MountFileInfo::recordMountArgsExternal)),
              14);
    EXPECT_EQ((slot<void>(&MountFileInfo::handleDoInit)), 15);
    EXPECT_EQ((slot<int, FILE*>(&MountFileInfo::profileSearcher)), 16);
    EXPECT_EQ((slot<void>(&MountFileInfo::tokenizeAgentString)), 17);
    EXPECT_EQ((slot<void, String, String, bool>(&MountFileInfo::recordAgentNameTokenAlias)), 18);
}

TEST(VirtualSlots, ThenWhatLinesAreMadeOf) {
    EXPECT_EQ((slot<String, String const&>(&MountFileInfo::evaluateAliasValue)), 19);
    EXPECT_EQ((slot<void, char const*, unsigned char>(&MountFileInfo::recordMountGroup)), 20);
    EXPECT_EQ((slot<void, char const*, char*>(&MountFileInfo::recordAlias)), 21);
    EXPECT_EQ((slot<void, LineBuffer const&, bool>(&MountFileInfo::recordCondition)), 22);
}

TEST(VirtualSlots, TheHooksOfFaultsComeLast) {
    EXPECT_EQ((slotOfConst<void, String const&>(&MountFileInfo::maybeThrow)), 23);
    EXPECT_EQ((slotOfConst<void, char const*>(&MountFileInfo::reconcileFailedInclude)), 24);
    EXPECT_EQ((slotOfConst<std::optional<String>, std::ostringstream&, char const*>(
                  &MountFileInfo::excuseMissingType)),
              25);
}

} // namespace
