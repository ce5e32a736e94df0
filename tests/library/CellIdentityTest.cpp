// The numbers of the cells, as they are in a process without the library that knows them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <KeldaBase/DynCell.h>

#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(CellIdentity, WithoutTheLibraryTheOwnCellIsOne) {
    EXPECT_EQ(DynCell::cellId(), 1U);
    EXPECT_EQ(DynCell::cellId(), 1U);
}

TEST(CellIdentity, TheOtherCellIsTwoWhateverCellIsNamed) {
    for (unsigned const cell : {0U, 1U, 2U, 3U, 7U, 0xffffffffU})
        EXPECT_EQ(DynCell::peerCellId(cell), 2U) << cell;
}

struct PathRow {
    std::string suffix;
    unsigned cell;
    std::string path;
};

TEST(CellIdentity, APathNamesItsCell) {
    std::string const longSuffix(5000, 'x');
    for (auto const& [suffix, cell, path] : std::vector<PathRow>{
             {"x", 0, "cell/1/x"},
             {"x", 1, "cell/1/x"},
             {"x", 2, "cell/2/x"},
             {"sys", 1, "cell/1/sys"},
             {"a/b", 3, "cell/3/a/b"},
             {"", 2, "cell/2/"},
             {"/a", 2, "cell/2//a"},
             {"x", 0xffffffffU, "cell/4294967295/x"},
             {"%s%d{}", 2, "cell/2/%s%d{}"},
             {longSuffix, 2, "cell/2/" + longSuffix},
         })
        EXPECT_EQ(DynCell::path(suffix.c_str(), cell), path);
}

TEST(CellIdentity, TheNamesAreThoseOfKeldaToo) {
    EXPECT_EQ(Kelda::DynCell::cellId(), DynCell::cellId());
}

TEST(CellIdentity, TheChoiceIsMadeOnce) {
    DynCell::cellId();
    support::TraceRecorder const trace;
    DynCell::cellId();
    DynCell::peerCellId(0);
    DynCell::path("x", 0);
    for (auto const& line : trace.lines())
        EXPECT_THAT(line.text, Not(testing::AnyOf(HasSubstr("dlopen"), HasSubstr("Cell impl"))));
}

TEST(CellIdentity, AParserKnowsBothCellsAsAliases) {
    support::LenientParser const parser;
    EXPECT_EQ(parser.lookupAlias("%cellId"), Rook::String("1"));
    EXPECT_EQ(parser.lookupAlias("%peerCellId"), Rook::String("2"));
}

} // namespace
