// The rules about preinit lines that loading reports.
#pragma once

#include "Rules.h"

namespace KeldaDatabase {

inline constexpr Rule rulesOfPreinits[] = {
    {RuleId::preinitSyntax, "preinit-syntax", Severity::error, "A preinit line has no comma",
     R"(A preinit line is a path, a comma and a type, and perhaps a second comma and
an attribute. Without a comma the parser cannot tell where the path ends,
and declares nothing.

Put in the comma. If the line was meant as a comment, begin it with "#"; if
it goes with the line above, end that one with a backslash.)",
     R"(== preinit/System
sys/clock Sys::Clock
)",
     R"(== preinit/System
sys/clock, Sys::Clock
)"},
    {RuleId::attributeUnknown, "attribute-unknown", Severity::error,
     "What follows the second comma is no attribute",
     R"(The attribute says when a path comes into being: createOnMount,
createOnStandby, or, with no second comma at all, when the database starts.
The parser declares nothing for a line with any other word, and whoever
mounts the path finds no type.

Correct the word; its case does not matter. Remove a second comma with
nothing behind it, and a fourth field.)",
     R"(== preinit/LineCards
card/%slot/state, Card::State, createOnDemand
)",
     R"(== preinit/LineCards
card/%slot/state, Card::State, createOnMount
)"},
    {RuleId::attributeRedefined, "attribute-redefined", Severity::error,
     "Two lines give one path different attributes",
     R"(A path either exists from start-up or comes into being later, and all lines
for it must agree about that, also across files. No attribute is one as
well. The attribute belongs to the path as it is written, so the short forms
%cellPath and %peerCellPath are the same path as what they stand for.

Search the preinit files for the path and make the lines agree, or remove
all but one.)",
     R"(== preinit/Cells
%peerCellPath/health, Cell::Health, createOnStandby
== preinit/Health
cell/%peerCellId/health, Cell::Health
)",
     R"(== preinit/Cells
%peerCellPath/health, Cell::Health, createOnStandby
== preinit/Health
cell/%peerCellId/health, Cell::Health, createOnStandby
)"},
    {RuleId::tokenNeedsCreateOnMount, "token-needs-create-on-mount", Severity::error,
     "A path with a token is not createOnMount",
     R"(A token stands for a value that only an agent knows, so a path that holds
one cannot exist before an agent mounts it. Only %cellId and %peerCellId are
known from the start. The type of the path is not recorded, and who mounts
it is refused.

Add createOnMount, or correct the token: a misspelt %cellPath is an ordinary
token, too.)",
     R"(== preinit/Lamps
lamp/%place/state, Lamp::State
)",
     R"(== preinit/Lamps
lamp/%place/state, Lamp::State, createOnMount
)"},
    {RuleId::configPathWithToken, "config-path-with-token", Severity::error,
     "A config path holds a token",
     R"(Configuration is there when the database starts, so each config path must be
known to the letter. That holds for the tokens of the cells, too.

Name the path in full, once for each value, or declare it without "CONFIG:".)",
     R"(== preinit/Configuration
CONFIG: cell/%cellId/label, Cell::Label
)",
     R"(== preinit/Configuration
CONFIG: cell/1/label, Cell::Label
CONFIG: cell/2/label, Cell::Label
)"},
    {RuleId::configCreateOnMount, "config-create-on-mount", Severity::error,
     "A config path is createOnMount",
     R"(Configuration must be there when the database starts, and a path with
createOnMount is not there before an agent mounts it. The type of the path
is not recorded, and who mounts it is refused.

Decide for one of the two. createOnStandby goes with "CONFIG:".)",
     R"(== preinit/Configuration
CONFIG: config/banner, Config::Banner, createOnMount
)",
     R"(== preinit/Configuration
CONFIG: config/banner, Config::Banner
)"},
};

} // namespace KeldaDatabase
