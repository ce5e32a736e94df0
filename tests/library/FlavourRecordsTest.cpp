// Records that a flavour puts into the map itself are found and merged like any other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>

#include "support/LenientParser.h"

namespace {

using KeldaUtil::mountTableFlagsToString;
using KeldaUtil::parseMountTableFlags;

class OwnRecords : public support::LenientParser {
  public:
    OwnRecords() {
        initializedIs(true);
        pathMountArgsMap_["a/b"] = {"T", parseMountTableFlags("r"), true};
    }
};

TEST(FlavourRecords, AreFoundByQueries) {
    OwnRecords parser;
    EXPECT_TRUE(parser.infoExists("a/b"));
    EXPECT_FALSE(parser.infoExists("a"));
    EXPECT_EQ(parser.mountInfo("a/b").type, "T");
    EXPECT_TRUE(parser.exceptions().empty());
}

TEST(FlavourRecords, AreMergedWithWhatProfilesBring) {
    OwnRecords parser;
    parser.recordMountArgsInternal("a/b", {"T", parseMountTableFlags("w")}, true);
    ASSERT_EQ(parser.pathMountArgsMap().size(), 1U);
    EXPECT_EQ(mountTableFlagsToString(parser.mountInfo("a/b").flags), "rw");
}

TEST(FlavourRecords, StayAmongThoseThatAreAddedLater) {
    OwnRecords parser;
    for (auto const* const path : {"a", "a/a", "a/c"})
        parser.recordMountArgsInternal(path, {"T", parseMountTableFlags("w")}, true);
    std::vector<std::string> paths;
    for (auto const& record : parser.pathMountArgsMap())
        paths.emplace_back(record.first.view());
    EXPECT_THAT(paths, testing::ElementsAre("a", "a/a", "a/b", "a/c"));
    EXPECT_TRUE(parser.infoExists("a/b"));
}

} // namespace
