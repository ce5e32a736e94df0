// The check that a scan asks before it reads a file, as it is without a plug-in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include <KeldaBase/DynCell.h>
#include <KeldaBase/DynFileLoadCheck.h>

#include "support/CleanEnvironment.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(FileLoadCheckBuiltIn, AllowsEveryFile) {
    FileLoadCheckNoOp check("preinit");
    for (char const* const file : {"a", "", "a~", ".hidden", "a/b"})
        EXPECT_TRUE(check.canLoad("/some/directory", file)) << file;
}

TEST(FileLoadCheckBuiltIn, HasNothingToParse) {
    FileLoadCheckNoOp check("preinit");
    EXPECT_FALSE(check.parsed());
    EXPECT_EQ(check.parse(), -1);
    EXPECT_FALSE(check.parsed());
}

TEST(FileLoadCheckBuiltIn, KeepsTheTypeItWasMadeFor) {
    FileLoadCheckNoOp check("any type");
    EXPECT_EQ(check.fileType(), "any type");
    EXPECT_EQ(&check.fileType(), &check.fileType());
}

TEST(FileLoadCheckBuiltIn, IsMadeAnewByItsFactory) {
    std::unique_ptr<FileLoadCheck> const one(FileLoadCheckNoOp::getNew("one"));
    std::unique_ptr<FileLoadCheck> const two(FileLoadCheckNoOp::getNew("two"));
    EXPECT_EQ(one->fileType(), "one");
    EXPECT_EQ(two->fileType(), "two");
    EXPECT_NE(dynamic_cast<FileLoadCheckNoOp*>(one.get()), nullptr);
}

TEST(FileLoadCheckBuiltIn, EachOperationTracesItsSignature) {
    FileLoadCheckNoOp check("preinit");
    support::TraceRecorder trace;
    check.canLoad("directory", "file");
    EXPECT_THAT(
        trace.at(8),
        ElementsAre("virtual bool FileLoadCheckNoOp::canLoad(const string&, const string&)"));
    trace.clear();
    check.parse();
    check.fileType();
    check.parsed();
    EXPECT_THAT(trace.at(8), ElementsAre(HasSubstr("FileLoadCheckNoOp::parse()"),
                                         HasSubstr("FileLoadCheckNoOp::fileType()"),
                                         HasSubstr("FileLoadCheckNoOp::parsed()")));
}

// --- the owner of a check ---

TEST(FileLoadCheckOwner, AnswersAsItsCheckDoes) {
    DynFileLoadCheck owner("preinit");
    EXPECT_NE(dynamic_cast<FileLoadCheckNoOp*>(owner.get()), nullptr);
    EXPECT_EQ(owner.fileType(), "preinit");
    EXPECT_TRUE(owner.canLoad("directory", "file"));
    EXPECT_EQ(owner.parse(), -1);
    EXPECT_FALSE(owner.parsed());
    EXPECT_EQ(owner->fileType(), "preinit");
}

TEST(FileLoadCheckOwner, EachOwnsACheckOfItsOwn) {
    DynFileLoadCheck const one("one");
    DynFileLoadCheck const two("two");
    EXPECT_NE(one.get(), two.get());
    EXPECT_EQ(one->fileType(), "one");
    EXPECT_EQ(two->fileType(), "two");
}

TEST(FileLoadCheckOwner, OnlyTheFirstOneLooksForAnImplementation) {
    DynFileLoadCheck const first("first");
    DynCell::cellId(); // chosen as well by now, so that the parser need not
    support::TraceRecorder const trace;
    DynFileLoadCheck const second("second");
    support::LenientParser const parser;
    for (auto const& line : trace.lines()) {
        EXPECT_THAT(line.text, testing::Not(HasSubstr("dlopen")));
        EXPECT_THAT(line.text, testing::Not(HasSubstr("FileLoadCheck implementation")));
    }
}

TEST(FileLoadCheckOwner, AParserHasOneForProfilesAndOneForPreinitFiles) {
    support::LenientParser parser;
    EXPECT_EQ(parser.profileFileCheck().fileType(), "KeldaMountProfiles");
    EXPECT_EQ(parser.preinitFileCheck().fileType(), "preinit");
}

TEST(FileLoadCheckOwner, AParserTellsThatNeitherWasParsed) {
    support::TraceRecorder const trace("MountFileInfo", 1 << 1);
    DynFileLoadCheck const first("first"); // so that the parser's own is not the first of all
    DynCell::cellId();
    auto const before = trace.at(1).size();
    support::LenientParser const parser;
    auto texts = trace.at(1);
    texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_THAT(texts, ElementsAre("Failed to parse KeldaMountProfiles json files ",
                                   "Failed to parse preinit json files "));
}

// --- the order of the operations, which plug-ins built elsewhere rely on ---

// The slot of a virtual operation in its class's table.
template <class Operation>
std::size_t slotOf(Operation operation) {
    struct {
        std::ptrdiff_t pointer; // one more than the slot's offset, on some processors the offset
        std::ptrdiff_t adjustment;
    } parts{};
    static_assert(sizeof parts == sizeof operation);
    std::memcpy(&parts, &operation, sizeof parts);
    return static_cast<std::size_t>(parts.pointer) / sizeof(void*);
}

struct WithOneMore : FileLoadCheck {
    virtual void oneMore() = 0;
};

TEST(FileLoadCheckSlots, StandInTheirOrder) {
    EXPECT_EQ(slotOf(&FileLoadCheck::parse), 0U);
    EXPECT_EQ(slotOf(&FileLoadCheck::canLoad), 1U);
    EXPECT_EQ(slotOf(&FileLoadCheck::fileType), 2U);
    EXPECT_EQ(slotOf(&FileLoadCheck::parsed), 3U);
    EXPECT_EQ(slotOf(&WithOneMore::oneMore), 6U) << "behind the two slots of the destructor";
}

} // namespace
