// The rules of what the further checks find: loading says nothing of it.
#pragma once

#include "Rules.h"

namespace KeldaDatabase {

inline constexpr Rule rulesOfChecks[] = {
    {RuleId::agentMatchedTwice, "agent-matched-twice", Severity::warning,
     "Two different agent names match one agent",
     R"(An agent loads every profile whose agent name matches its own, and gets the
mounts of all of them. A name with tokens, as LineCard-%slot, also matches
an agent whose literal name begins like it, as LineCard-spare, and then that
agent gets mounts that were meant for others.

If it is not meant, choose names of which none begins with the literal part
of the other and "-". Mounts that two agents have in common are better kept
in a file that both profiles include. Several files with the very same agent
name are one profile in parts, and no finding.)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%place
lamp/%place, Lamp::Colour, rw
== profiles/LampTest
agentName: Lamp-test
lamp/%agentString, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp-%place
lamp/%place, Lamp::Colour, rw
== profiles/LampTest
agentName: TestLamp
lamp/%agentString, Lamp::Colour, rw
)"},
    {RuleId::orphanFile, "orphan-file", Severity::warning,
     "A file of the profile folder is nobody's profile, and nothing includes it",
     R"(A file whose first line names no agent is passed over without a word, unless
a profile includes it or it is one of the default files. So its mounts are
nobody's, and an agent that it was written for starts without them.

Make "agentName:" the first line: above it only empty lines may stand and
comments that begin at the very left. If the file is to be included, include
it; if it is no longer needed, remove it.)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
cooling/sensor, Cooling::Sensor, rw
== profiles/sensors.shared
cooling/sensor, Cooling::Sensor, r
)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensors.shared
== profiles/sensors.shared
cooling/sensor, Cooling::Sensor, rw
)"},
    {RuleId::includeMatchesNothing, "include-matches-nothing", Severity::warning,
     "The pattern of an include matches no file",
     R"(A pattern, unlike a name, may match nothing, and nobody is told. An agent
then starts without the mounts that the line was to bring.

Correct the pattern, or remove the line. Files whose names begin with "." or
end in "~" are not taken in by "*".)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensor.*
cooling/sensor, Cooling::Sensor, rw
)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensor.*
== profiles/sensor.shared
cooling/sensor, Cooling::Sensor, rw
)"},
    {RuleId::aliasUnused, "alias-unused", Severity::note, "Nothing uses an alias",
     R"(An alias that no line below it uses does nothing. It may be left over, or a
line has the value written out where the alias was meant.

Use the alias, or remove it.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
alias: %place = front
lamp/front, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp
alias: %place = front
lamp/%place, Lamp::Colour, rw
)"},
    {RuleId::aliasRedefined, "alias-redefined", Severity::warning,
     "An alias is defined that has a value already",
     R"(A second definition replaces the value for the lines that follow, so one
name means two things in one profile. Who reads a path has to look for the
definition that holds there. The same is told of an alias that takes the
place of a token of the agent's name, or of an alias that every profile has,
such as %cellId.

Give each value an alias of its own.)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp
alias: %place = front
alias: %place = rear
lamp/%place, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
== profiles/Lamp
agentName: Lamp
alias: %first = front
alias: %second = rear
lamp/%first, Lamp::Colour, rw
lamp/%second, Lamp::Colour, rw
)"},
    {RuleId::pathMountedTwice, "path-mounted-twice", Severity::warning,
     "A profile mounts a path twice in one group",
     R"(Lines for one path become one mount with the flags of all of them. Neither
line shows the flags that the agent gets, and who takes a flag from one of
them changes nothing.

Make it one line, with all flags. Where an include takes in files that the
profile has included already, remove it. A path that is to be in two groups
has to be mounted in each; that is no finding.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, r
lamp/front, Lamp::Colour, w
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
)"},
    {RuleId::typeColumnDiffers, "type-column-differs", Severity::warning,
     "A mount names another type than the preinit files",
     R"(The type of a mount is the one that the preinit files give its path. What a
profile says is there for the reader, and here it tells him something that
is not so.

Write the type of the preinit files, or correct it there, or leave the
column empty.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Brightness, rw
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
)"},
    {RuleId::groupEmpty, "group-empty", Severity::note, "A group holds no mounts",
     R"(A group ends where the next one begins. One without mounts in between is not
there for the agent: who asks for it is told that there is no such group.

Remove the line, or move the mounts below it.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
MountGroup: front
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
MountGroup: front
lamp/front, Lamp::Colour, rw
)"},
    {RuleId::preinitTypeRedefined, "preinit-type-redefined", Severity::warning,
     "Two preinit lines give one path different types",
     R"(Types belong to the path with a "*" in the place of each token. Of several
lines for it the last one counts, in the order of the files' names, and the
types of the others are lost without a word.

Make the lines agree. If two kinds of entities were meant, give them paths
that differ in more than their tokens.)",
     R"(== preinit/Lamps
lamp/%place, Lamp::Colour, createOnMount
lamp/%number, Lamp::Brightness, createOnMount
)",
     R"(== preinit/Lamps
lamp/%place/colour, Lamp::Colour, createOnMount
lamp/%number/brightness, Lamp::Brightness, createOnMount
)"},
    {RuleId::preinitNeverMounted, "preinit-never-mounted", Severity::note,
     "No profile mounts a path that is declared",
     R"(The database has the path, but no agent can see it. Perhaps it is used by a
program that is no agent; otherwise the line is left over, or a profile
spells the path differently.

Mount the path, or remove the line. Directories are not told of.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
lamp/rear, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
lamp/rear, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
lamp/rear, Lamp::Colour, rw
)"},
    {RuleId::readNeverWritten, "read-never-written", Severity::note,
     "A path is read by agents, and none writes it",
     R"(An agent mounts the path to read it, but what it reads never changes unless
a program writes it that is no agent. Perhaps the agent that should write it
mounts another path, or lacks the flag w.

Add the mount or the flag where the value is made. Configuration and
directories are not told of.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, r
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, r
== profiles/Switch
agentName: Switch
lamp/front, Lamp::Colour, w
)"},
    {RuleId::namesDifferInCase, "names-differ-in-case", Severity::warning,
     "Two names differ in nothing but case",
     R"(Keywords and aliases are known in any case; paths, agents, groups, types and
files are not. Two of them that differ only in case are two, and as a rule
one of them is a slip.

Spell the name alike everywhere.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
Lamp/front/state, Lamp::State
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
Lamp/front/state, Lamp::State, rw
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
lamp/front/state, Lamp::State
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
lamp/front/state, Lamp::State, rw
)"},
    {RuleId::suppressionUnused, "suppression-unused", Severity::warning,
     "A comment allows a finding that is not there",
     R"(A comment "kelda: allow" or "kelda: allow-file" names rules whose findings
are meant to be as they are. This one covers no finding of a rule that it
names: what it excuses was corrected, or has moved to another line, and if
it comes back nobody will be told.

Remove the comment, or the name of the rule from it, or move the comment to
the line that it is for. Behind a line, a comment covers that line; on a
line of its own, the next line with something in it.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw  # kelda: allow type-column-differs: not renamed yet
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Brightness, rw  # kelda: allow type-column-differs: not renamed yet
)"},
    {RuleId::suppressionMalformed, "suppression-malformed", Severity::warning,
     "A comment that is to allow a finding cannot be understood",
     R"(A comment that allows findings says "kelda: allow", or "kelda: allow-file"
for all of its file, and then names one or more rules with commas between
them, followed by a colon and the reason. Where a name is unknown or the
reason is missing, the comment allows nothing: whoever reads it later must
be able to tell why it is there.

Correct the names, and give the reason.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Brightness, rw  # kelda: allow type-column-differs
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Brightness, rw  # kelda: allow type-column-differs: not renamed yet
)"},
};

} // namespace KeldaDatabase
