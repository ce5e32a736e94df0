// What the parser gives back to the table of strings.
#include <gtest/gtest.h>

#include <string>

#include "support/CleanEnvironment.h"
#include "support/ParserDump.h"

namespace {

TEST(Defragmentation, HappensWhenAParserIsUninitialised) {
    support::CleanEnvironment const environment;
    support::DumpableParser parser;
    for (int i = 0; i < 1000; ++i)
        parser.pathTypeMapIs("defragmented/" + std::to_string(i), "T");
    parser.handleDoInit();
    auto const before = Rook::String::tableFigures().buffers;
    parser.unDoInit();
    EXPECT_LE(Rook::String::tableFigures().buffers + 1000, before);
}

} // namespace
