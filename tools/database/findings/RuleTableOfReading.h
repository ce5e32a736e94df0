// The rules about files, and about lines as both families of files have them.
#pragma once

#include "Rules.h"

namespace KeldaDatabase {

inline constexpr Rule rulesOfReading[] = {
    {RuleId::directoryUnreadable, "directory-unreadable", Severity::error,
     "A folder of preinit files or profiles cannot be read",
     R"(Every agent reads the preinit folder and the profile folder when it starts.
Where one of them is missing, or may not be read or searched, no agent
starts at all.

See whether the folder exists, whether its name is spelled right (folders
are also named by KELDA_EXTRA_PREINIT_PATH and KELDA_EXTRA_PROFILE_PATH),
and whether the user who runs the agents may read it. An example would need
a folder that is not there, so there is none.)",
     "", ""},
    {RuleId::fileUnreadable, "file-unreadable", Severity::error,
     "A file cannot be opened, or is no regular file",
     R"(An agent opens every file of the folders to find the profiles that are its
own. One that it may not read, or that is a pipe, a socket or a device,
stops it, whichever agent the file is for. The files that come after it by
name are not read.

Correct the permissions, or move the file out of the folder. Folders inside
the folder, names that begin with "." and names that end in "~" are passed
over. What a file is does not show in its text, so there is no example.)",
     "", ""},
    {RuleId::extraPreinitUnreadable, "extra-preinit-unreadable", Severity::error,
     "An entry of KELDA_EXTRA_PREINIT_PATH is neither a folder nor a file",
     R"(The environment variable KELDA_EXTRA_PREINIT_PATH lists further preinit
files and folders, separated by ":". An entry that cannot be read stops the
agent, and what is listed behind it is not read.

Correct the list. A ":" too many, other than at its end, makes an empty entry,
which is a fault as well. The fault lies in the environment and not in a file, so there
is no example.)",
     "", ""},
    {RuleId::commentContinued, "comment-continued", Severity::error,
     "A comment line holds a backslash",
     R"(A line whose first character is "#" must hold no backslash, not even in the
middle: comments are not continued on the next line, and the parser will not
guess whether that was meant.

Take the backslash out, and begin each line of a longer comment with a "#"
of its own.)",
     R"(== preinit/System
# What the device as a whole knows: \
sys/clock, Sys::Clock
)",
     R"(== preinit/System
# What the device as a whole knows:
sys/clock, Sys::Clock
)"},
    {RuleId::textAfterBackslash, "text-after-backslash", Severity::error,
     "Something stands behind a backslash",
     R"(A backslash joins the next line to its own, and must be the very last
character. Most often it is a blank that follows, or the carriage return of
a file with Windows line ends; neither shows in an editor. In comments
behind a declaration a backslash counts, too.

Remove what follows the backslash, or the backslash itself.)",
     R"(== preinit/System
sys/clock, Sys::Clock  # wall clock \ monotonic clock
)",
     R"(== preinit/System
sys/clock, \
    Sys::Clock  # wall clock, monotonic clock
)"},
    {RuleId::nulCharacter, "nul-character", Severity::error, "A line holds a NUL character",
     R"(A file with a NUL in it is damaged or was never a text file, and an agent
does not take its lines for what they may have been.

Restore the file. Where it was written as UTF-16, save it as UTF-8. A NUL
cannot be shown in a text, so there is no example.)",
     "", ""},
    {RuleId::lineTooLong, "line-too-long", Severity::error, "A line has more than 1023 characters",
     R"(The parser takes at most 1023 characters at once. What is longer is taken in
pieces, each as a line of its own, and as a rule at least one of them makes
no sense: the message is about a piece, with a number that counts the pieces
as lines.

Shorten the line. A line that is continued with a backslash counts as a
whole, so breaking it up does not help; an alias for a part of a long path
does, as long as the path that comes out has at most 1023 characters.

In the examples, {1100*x} stands for 1100 times "x".)",
     R"(== preinit/System
sys/{1100*x}, Sys::Clock
)",
     R"(== preinit/System
sys/{1000*x}, Sys::Clock
)"},
};

} // namespace KeldaDatabase
