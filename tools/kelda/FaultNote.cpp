#include "FaultNote.h"

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {

std::string faultNote(KeldaDatabase::DatabaseMountFileInfo& parser) {
    if (parser.device().faults.empty())
        return "";
    return fmt::format("kelda: note: {} in the files; see 'kelda check'\n",
                       counted(parser.findings().size(), "fault"));
}

} // namespace KeldaTool
