// The rules about aliases, groups, conditions and active mounts that loading reports.
#pragma once

#include "Rules.h"

namespace KeldaDatabase {

inline constexpr Rule rulesOfSettings[] = {
    {RuleId::aliasNameInvalid, "alias-name-invalid", Severity::error,
     "The name of an alias is no alias name",
     R"(The name of an alias is a "%", a letter, and then letters, digits and "_".
Any other name could not be used in a path, since the path would not show
where it ends.

Correct the name and the lines that use it.)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%place
alias: kind = %place ? %place : front
lamp/%place, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%place
alias: %kind = %place ? %place : front
lamp/%kind, Lamp::Colour, rw
)"},
    {RuleId::aliasUndefined, "alias-undefined", Severity::error,
     "Nothing defines an alias that is used",
     R"(An alias is known in the lines below its own, to the end of the profile and
in the files that it includes. Beside those there are the tokens of the
agent's name, and %cellId, %peerCellId, %sysname, %sliceId and %agentString.
Aliases of another profile do not count, and the default files see none of
an agent's.

See whether the name is spelled alike and defined above the line. An alias
in a path goes on as long as letters, digits and "_" follow: there is no
%place in %place2. An operand of an alias line is an alias as a whole or a
text without "%".)",
     R"(== preinit/Lamps
lamp/%place/state, Lamp::State, createOnMount
== profiles/Lamp
agentName: Lamp
alias: %place = front
lamp/%palce/state, Lamp::State, rw
)",
     R"(== preinit/Lamps
lamp/%place/state, Lamp::State, createOnMount
== profiles/Lamp
agentName: Lamp
alias: %place = front
lamp/%place/state, Lamp::State, rw
)"},
    {RuleId::aliasChoiceIncomplete, "alias-choice-incomplete", Severity::error,
     "A choice has no value for the other case",
     R"(The expression "a ? b : c" gives b if a is not empty, and else c. Without a
":" the alias would have no value in the second case, and the paths that use
it would be wrong.

Add ":" and the other value. It may be empty: "a ? b :".)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%name
alias: %place = %name ? %name
lamp/%place, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%name
alias: %place = %name ? %name : front
lamp/%place, Lamp::Colour, rw
)"},
    {RuleId::groupPriorityRange, "group-priority-range", Severity::error,
     "The priority of a group is not between 1 and 99",
     R"(A priority is a number from 1 to 99. A text that is no number counts as 0,
and of a large number only the lowest 8 bits are looked at; the message
shows what is left of it.

Choose a number from 1 to 99, or leave the priority out, which makes it 99.)",
     R"(== preinit/Cooling
cooling/policy, Cooling::Policy
== profiles/Cooling
agentName: Cooling
MountGroup: policies, 100
cooling/policy, Cooling::Policy, rw
)",
     R"(== preinit/Cooling
cooling/policy, Cooling::Policy
== profiles/Cooling
agentName: Cooling
MountGroup: policies, 10
cooling/policy, Cooling::Policy, rw
)"},
    {RuleId::groupNameReserved, "group-name-reserved", Severity::error,
     "A group has the name of one that every agent has",
     R"(The group "default" holds the mounts of the default files, and "all" stands
for all groups of an agent. A profile cannot have groups of these names, in
whatever case.

Give the group another name.)",
     R"(== preinit/Cooling
cooling/policy, Cooling::Policy
== profiles/Cooling
agentName: Cooling
MountGroup: Default
cooling/policy, Cooling::Policy, rw
)",
     R"(== preinit/Cooling
cooling/policy, Cooling::Policy
== profiles/Cooling
agentName: Cooling
MountGroup: policies
cooling/policy, Cooling::Policy, rw
)"},
    {RuleId::conditionWithActiveMount, "condition-with-active-mount", Severity::error,
     "A condition and activeMount meet in one agent",
     R"(Conditions are for agents that are no active-mount agents: with active
mounts nobody would evaluate them. The two may not meet in one agent, in
whatever order, also not in two profiles of it, in a default file or in what
a profile includes.

Decide for one of the two.)",
     R"(== preinit/Cells
%peerCellPath/status, Cell::Status
== profiles/Cells
agentName: Cells
activeMount
MountGroup: both
Condition: the peer cell is present
%peerCellPath/status, Cell::Status, rw
)",
     R"(== preinit/Cells
%peerCellPath/status, Cell::Status
== profiles/Cells
agentName: Cells
MountGroup: both
Condition: the peer cell is present
%peerCellPath/status, Cell::Status, rw
)"},
    {RuleId::matchActiveNameAlone, "match-active-name-alone", Severity::error,
     "matchActiveName stands without activeMount",
     R"(The variants of an agent that have "-Active-" in their names are
active-mount agents, so a profile that serves them must say activeMount.
This is noticed at the end of the first file that ends after the keyword,
which may be an included one.

Add activeMount, above the first Include line.)",
     R"(== preinit/Routes
route/%table, Route::Table, createOnMount
== profiles/Routes
agentName: Routes-%table
matchActiveName
route/%table, Route::Table, rw
)",
     R"(== preinit/Routes
route/%table, Route::Table, createOnMount
== profiles/Routes
agentName: Routes-%table
activeMount
matchActiveName
route/%table, Route::Table, rw
)"},
    {RuleId::matchActiveNameWithRest, "match-active-name-with-rest", Severity::error,
     "matchActiveName does not go with a token that ends in $",
     R"(A last token that ends in "$" takes all that is left of an agent's name, and
with it would take the "Active" that tells the variant apart.

Use tokens without "$", or write two profiles, one of them without
matchActiveName.)",
     R"(== preinit/Routes
route/%table, Route::Table, createOnMount
== profiles/Routes
agentName: Routes-%table$
activeMount
matchActiveName
route/%table, Route::Table, rw
)",
     R"(== preinit/Routes
route/%table, Route::Table, createOnMount
== profiles/Routes
agentName: Routes-%table
activeMount
matchActiveName
route/%table, Route::Table, rw
)"},
    {RuleId::otherFault, "other-fault", Severity::error, "A fault that no other rule describes",
     R"(The parser has reported something that has no rule of its own. Its message
tells what it is; kelda-preinit(5) and kelda-profile(5) explain the
messages.

This comes about where the library has a message that this program does not
know yet, so there is no example.)",
     "", ""},
};

} // namespace KeldaDatabase
