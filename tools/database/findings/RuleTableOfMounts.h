// The rules about keywords, includes, mounts and flags that loading reports.
#pragma once

#include "Rules.h"

namespace KeldaDatabase {

inline constexpr Rule rulesOfMounts[] = {
    {RuleId::unknownKeyword, "unknown-keyword", Severity::error,
     "A line of a profile is of no known kind",
     R"(Each line of a profile is a mount with two commas, an alias or a keyword. An
agent that meets anything else does not start. The message shows the line
without its blanks, since the parser takes them out first.

Most often a keyword is misspelt, or a mount has one comma only: the comma
before the flags must be there even if there are no flags. Other causes are
an alias without "=", a path with "=" in it, and a second agent name.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
MountGroups: all lamps
lamp/front, Lamp::Colour, w
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
MountGroup: all lamps
lamp/front, Lamp::Colour, w
)"},
    {RuleId::textAfterKeyword, "text-after-keyword", Severity::error,
     "Something follows a keyword that stands alone",
     R"(activeMount, matchActiveName and noDefaultMountGroup are the whole of their
lines. They are said by being there and take no value, nor a colon. An agent
does not start rather than to guess what was meant.

Remove what follows the keyword. To switch it off, remove the line.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
activeMount: yes
lamp/front, Lamp::Colour, w
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
activeMount
lamp/front, Lamp::Colour, w
)"},
    {RuleId::notAllowedInInclude, "not-allowed-in-include", Severity::error,
     "An included file holds more than mounts",
     R"(A file that is taken in with "Include:" may hold mounts and the keyword
activeMount. Groups, aliases, conditions and further includes belong to the
profile, where they hold for the included mounts as well.

Move the line to the profile, above the Include line. If it is an agent
name, the include takes in a profile: name the file that was meant, or
choose a narrower pattern.)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensors.shared
== profiles/sensors.shared
MountGroup: sensors
cooling/sensor, Cooling::Sensor, rw
)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
MountGroup: sensors
Include: sensors.shared
== profiles/sensors.shared
cooling/sensor, Cooling::Sensor, rw
)"},
    {RuleId::includeNotFound, "include-not-found", Severity::error,
     "An include names a file that is not there",
     R"(Without the file the agent would lack mounts, so it does not start. The file
is looked for in the profile folder and in the folder of
KELDA_EXTRA_PROFILE_PATH, by its name without a folder.

See whether the name is spelled as the file's is, case included. A file may
be there and be passed over: one whose name ends in "~", or one that a
file-load check of the system refuses.)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensors.shared
cooling/sensor, Cooling::Sensor, rw
)",
     R"(== preinit/Cooling
cooling/sensor, Cooling::Sensor
== profiles/Cooling
agentName: Cooling
Include: sensors.shared
== profiles/sensors.shared
cooling/sensor, Cooling::Sensor, rw
)"},
    {RuleId::pathWithoutType, "path-without-type", Severity::error,
     "A profile mounts a path that no preinit file declares",
     R"(The type of a mount comes from the preinit files. An agent asks them for the
path with a "*" in the place of each token or alias; if they have no such
path, or no type for it, it does not start.

Look for the path in the preinit files: is it spelled alike, case included?
Has it a literal name where the preinit line has a token? Then name the
value with an alias. A path has no "/" at its front. And any line with two
commas is taken for a mount: a keyword line must not hold two.)",
     R"(== preinit/Cooling
cooling/fan/%fan/speed, Cooling::Speed, createOnMount
== profiles/Cooling
agentName: Cooling
cooling/fan/left/speed, Cooling::Speed, rw
)",
     R"(== preinit/Cooling
cooling/fan/%fan/speed, Cooling::Speed, createOnMount
== profiles/Cooling
agentName: Cooling
alias: %fan = left
cooling/fan/%fan/speed, Cooling::Speed, rw
)"},
    {RuleId::pathTooLong, "path-too-long", Severity::error,
     "A path has more than 1023 characters once it is written out",
     R"(Aliases and the short forms %cellPath and %peerCellPath are replaced in a
space of 1023 characters. A path that does not fit is cut, and an agent must
not mount a path that nobody wrote.

Shorten the value of the alias or the path.

In the examples, {600*x} stands for 600 times "x".)",
     R"(== preinit/Archive
archive/%shelf/%box, Archive::Box, createOnMount
== profiles/Archive
agentName: Archive
alias: %name = {600*x}
archive/%name/%name, Archive::Box, rw
)",
     R"(== preinit/Archive
archive/%shelf/%box, Archive::Box, createOnMount
== profiles/Archive
agentName: Archive
alias: %name = {400*x}
archive/%name/%name, Archive::Box, rw
)"},
    {RuleId::typesDiffer, "types-differ", Severity::error, "A path is mounted with two types",
     R"(An agent mounts a path once, with one type. There are two ways to come to a
second one. An active-mount agent also mounts the directories above its
mounts, as Fen::Dir; where such a path is mounted with another type, the two
cannot be one. And mounts under a condition may take the type of their own
line, which may differ from one line to the next.

Mount either the path or what is below it, or declare it as Fen::Dir; or
make the conditional lines agree. The lines may stand in different files
that one agent loads together.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
lamp/front/state, Lamp::State
== profiles/Lamp
agentName: Lamp
activeMount
lamp/front, Lamp::Colour, w
lamp/front/state, Lamp::State, w
)",
     R"(== preinit/Lamps
lamp/front, Fen::Dir
lamp/front/state, Lamp::State
== profiles/Lamp
agentName: Lamp
activeMount
lamp/front, Fen::Dir, w
lamp/front/state, Lamp::State, w
)"},
    {RuleId::flagUnknown, "flag-unknown", Severity::error, "A letter among the flags is no flag",
     R"(The flags of a mount, and of rootFlags:, are letters of "rwcifSDdOAKL" and
"SNAE"; case counts. With an unknown letter the line is not applied, and an
agent does not start.

Correct the letter. A comma among the flags means that the line has a field
too many.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rW
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, rw
)"},
    {RuleId::flagsCAndD, "flags-c-and-d", Severity::error, "The flags c and D stand together",
     R"(The flags c and D exclude each other in one line, so the line is not
applied, and an agent does not start.

Decide for one of the two. Where d was meant, mind its case: d goes with c.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, wcD
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, wcd
)"},
    {RuleId::flagDWithoutC, "flag-d-without-c", Severity::error, "The flag d stands without c",
     R"(The flag d only means something together with c, in the same line: a c in
another line for the same path does not help. The line is not applied, and
an agent does not start.

Add c, remove d, or write D if that was meant.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, wd
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
lamp/front, Lamp::Colour, wcd
)"},
    {RuleId::connectionFlagUnknown, "connection-flag-unknown", Severity::error,
     "A letter of connectionFlags: is no connection flag",
     R"(Only the letters S, N, A and E say something about an agent's connection.
With any other one the line is not applied, and an agent does not start.

Remove the letter. Flags of the mounts stand in their own lines, those of
the root behind rootFlags:.)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
connectionFlags: SR
lamp/front, Lamp::Colour, rw
)",
     R"(== preinit/Lamps
lamp/front, Lamp::Colour
== profiles/Lamp
agentName: Lamp
connectionFlags: S
lamp/front, Lamp::Colour, rw
)"},
};

} // namespace KeldaDatabase
