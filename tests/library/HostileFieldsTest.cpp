// Fields of every length around the end of a line buffer: what does not fit is reported, and what
// follows is read as ever.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"

namespace {

using support::faultIn;
using support::nothingThrown;
using support::thrownText;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::size_t const lengths[] = {0,    1,    1000, 1009, 1010, 1011, 1012, 1013, 1014,
                               1015, 1016, 1017, 1018, 1019, 1020, 1021, 1022, 1023,
                               1024, 1025, 1026, 2045, 2046, 2047, 2048, 3069, 5000};

// How many pieces a line is read in: at most 1023 characters each, the line end counted.
int pieces(std::string const& line) {
    return static_cast<int>((line.size() + 1 + 1022) / 1023);
}

class HostileFields : public testing::Test {
  protected:
    HostileFields() { device.preinit("Base", "a/b,T\na/c,T\n"); }

    // The faults for Fan, of which the strict side throws the first.
    std::vector<std::string> faults(std::string const& agent = "Fan") const {
        support::LenientAgent lenient(device.preinitDir(), device.profileDir());
        lenient.addAgent(agent, "");
        lenient.doInit();
        std::vector<std::string> texts;
        for (auto const& exception : lenient.exceptions())
            texts.emplace_back(Kelda::MountFileInfo::mfiExceptionToString(exception).view());
        auto const strict = device.agent(agent);
        EXPECT_EQ(thrownText([&] { strict->doInit(); }),
                  texts.empty() ? nothingThrown : texts.front());
        return texts;
    }

    support::CleanEnvironment environment;
    support::Device device;
};

struct FieldRow {
    char const* name;
    std::string before;
    char filler;
    std::string after;
};

void PrintTo(FieldRow const& row, std::ostream* stream) {
    *stream << row.name;
}

class HostileProfileFields : public HostileFields, public testing::WithParamInterface<FieldRow> {};

INSTANTIATE_TEST_SUITE_P(
    Field, HostileProfileFields,
    testing::Values(
        FieldRow{"path", "", 'x', ",T,r"}, FieldRow{"token", "a/%", 'x', ",T,r"},
        FieldRow{"percents", "", '%', ",T,r"}, FieldRow{"slashes", "", '/', ",T,r"},
        FieldRow{"type", "a/b,", 'x', ",r"}, FieldRow{"flags", "a/b,T,", 'r', ""},
        FieldRow{"badFlags", "a/b,T,", 'x', ""}, FieldRow{"commas", "a/b", ',', ""},
        FieldRow{"aliasKey", "alias:%", 'x', "=1"}, FieldRow{"aliasValue", "alias:%a=", 'x', ""},
        FieldRow{"aliasList", "alias:%a=", ',', ""}, FieldRow{"aliasTest", "alias:%a=x~", 'x', ""},
        FieldRow{"aliasChoice", "alias:%a=?x:", 'x', ""},
        FieldRow{"group", "MountGroup:", 'x', ",5"}, FieldRow{"priority", "MountGroup:g,", '9', ""},
        FieldRow{"subAgent", "subAgent:", 'x', ""}, FieldRow{"condition", "Condition:", 'x', ""},
        FieldRow{"blocker", "ConditionBlocker:", 'x', ""},
        FieldRow{"rootFlags", "rootFlags:", 'r', ""},
        FieldRow{"connectionFlags", "connectionFlags:", 'S', ""},
        FieldRow{"include", "Include:", 'x', ""}, FieldRow{"includePattern", "Include:", '*', "no"},
        FieldRow{"word", "", 'x', ""}, FieldRow{"comment", "a/b,T,r#", 'x', ""},
        FieldRow{"blanks", "a/b,T,r", ' ', ""}, FieldRow{"tabs", "", '\t', ""},
        FieldRow{"highBytes", "", '\xff', ",T,r"}),
    [](auto const& row) { return row.param.name; });

TEST_P(HostileProfileFields, OfAnyLengthLeavesTheLineAfterItInItsPlace) {
    auto const& [name, before, filler, after] = GetParam();
    for (auto const length : lengths) {
        auto const line = before + std::string(length, filler) + after;
        device.profile("Fan", "agentName: Fan\n" + line + "\nmarker\n");
        EXPECT_THAT(faults(), Contains(faultIn("Fan", 2 + pieces(line), "syntax error: 'marker'")))
            << name << " of " << length;
    }
}

class HostilePreinitFields : public HostileFields, public testing::WithParamInterface<FieldRow> {};

INSTANTIATE_TEST_SUITE_P(
    Field, HostilePreinitFields,
    testing::Values(FieldRow{"path", "", 'x', ",T"}, FieldRow{"slashes", "", '/', ",T"},
                    FieldRow{"config", "CONFIG:", 'x', ",T"},
                    FieldRow{"token", "a/%", 'x', ",T,createOnMount"},
                    FieldRow{"percents", "", '%', ",T,createOnMount"},
                    FieldRow{"type", "d,", 'x', ""},
                    FieldRow{"typeAndAttribute", "d,", 'x', ",createOnMount"},
                    FieldRow{"attribute", "d,T,", 'x', ""}, FieldRow{"commas", "d", ',', ""},
                    FieldRow{"word", "", 'x', ""}, FieldRow{"comment", "d,T#", 'x', ""},
                    FieldRow{"blanks", "d,T", ' ', ""}, FieldRow{"highBytes", "", '\xff', ",T"}),
    [](auto const& row) { return row.param.name; });

TEST_P(HostilePreinitFields, OfAnyLengthLeavesTheLineAfterItInItsPlace) {
    auto const& [name, before, filler, after] = GetParam();
    for (auto const length : lengths) {
        auto const line = before + std::string(length, filler) + after;
        device.preinit("Long", line + "\nmarker\n");
        EXPECT_THAT(faults(),
                    Contains(faultIn("Long", 1 + pieces(line), "preinit syntax error: marker")))
            << name << " of " << length;
    }
}

// --- what fits, and what just does not ---

TEST_F(HostileFields, APathThatJustFitsItsLineIsRecordedWhole) {
    for (std::size_t const length : {1000U, 1017U, 1018U, 1019U}) {
        auto const path = std::string(length, 'p');
        device.preinit("Long", path + ",T\n");
        device.profile("Fan", "agentName: Fan\n" + path + ",T,r\n");
        EXPECT_THAT(faults(), IsEmpty()) << length;
        EXPECT_TRUE(device.agent("Fan")->infoExists(path)) << length;
    }
}

TEST_F(HostileFields, APathThatDoesNotFitItsLineIsReported) {
    for (std::size_t const length : {1020U, 1021U, 1022U, 1023U, 1024U, 1025U}) {
        device.profile("Fan", "agentName: Fan\n" + std::string(length, 'p') + ",T,r\n");
        EXPECT_THAT(faults(), testing::Not(IsEmpty())) << length;
    }
}

TEST_F(HostileFields, ADeclarationThatDoesNotFitItsLineIsReported) {
    for (std::size_t const length : {1023U, 1024U, 1025U}) {
        device.preinit("Long", std::string(length, 'p') + ",T\n");
        EXPECT_THAT(faults(), testing::Not(IsEmpty())) << length;
    }
}

TEST_F(HostileFields, AnAgentNameThatFitsItsLineIsMatchedWhole) {
    for (std::size_t const length : {1000U, 1012U, 1013U}) {
        auto const name = std::string(length, 'F');
        device.profile("Fan", "agentName:" + name + "\na/b,T,r\n");
        EXPECT_THAT(faults(name), IsEmpty()) << length;
        EXPECT_TRUE(device.agent(name)->infoExists("a/b")) << length;
    }
}

TEST_F(HostileFields, AnAgentNameThatDoesNotFitItsLineMatchesNoLongerAgent) {
    for (std::size_t const length : {1014U, 1023U, 1024U, 1025U}) {
        auto const name = std::string(length, 'F');
        device.profile("Fan", "agentName:" + name + "\na/b,T,r\n");
        EXPECT_FALSE(device.agent(name)->foundMountProfile(name)) << length;
        EXPECT_THAT(faults(std::string(1013, 'F')), testing::Not(IsEmpty())) << length;
    }
}

TEST_F(HostileFields, AnExpandedPathMayHaveUpTo1023CharactersAndNoMore) {
    device.preinit("Long", "p/%a/%b,T,createOnMount\n");
    for (std::size_t const length : {1018U, 1019U, 1020U, 1021U, 1022U, 1023U, 1024U, 1025U}) {
        auto const half = (length - 3) / 2;
        auto const a = std::string(half, 'a');
        auto const b = std::string(length - 3 - half, 'b');
        device.profile("Fan",
                       "agentName: Fan\nalias:%a=" + a + "\nalias:%b=" + b + "\np/%a/%b,T,r\n");
        if (length <= 1023) {
            EXPECT_THAT(faults(), IsEmpty()) << length;
            EXPECT_TRUE(device.agent("Fan")->infoExists("p/" + a + "/" + b)) << length;
        } else {
            EXPECT_THAT(faults(),
                        ElementsAre(faultIn("Fan", 4,
                                            "Path buffer too small to expand alias from '%b'to '" +
                                                b + "' in p/" + a + "/%b")))
                << length;
        }
    }
}

TEST_F(HostileFields, ContinuedLinesOfAnyLengthLeaveTheMarkerReported) {
    for (auto const length : lengths) {
        auto const half = std::string(length, 'x');
        device.profile("Fan",
                       "agentName: Fan\n" + half + "\\\n" + half + "\\\n" + half + "\nmarker\n");
        EXPECT_THAT(faults(), Contains(testing::EndsWith("syntax error: 'marker'"))) << length;
        device.preinit("Long", half + "\\\n" + half + ",T\nmarker\n");
        EXPECT_THAT(faults(), Contains(testing::EndsWith("preinit syntax error: marker")))
            << length;
        std::filesystem::remove(device.preinitDir() + "/Long");
    }
}

} // namespace
