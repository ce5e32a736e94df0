#include "LoadFault.h"

#include <fmt/format.h>

#include "JsonDocument.h"
#include "Text.h"

namespace KeldaTool {
namespace {

std::string place(LoadFault const& fault) {
    if (fault.file.empty())
        return "kelda";
    auto const file = printable(fault.file);
    return fault.line > 0 ? fmt::format("{}:{}", file, fault.line) : file;
}

// Messages may span lines, and quote lines of files with their newline. Further lines are indented,
// so that none of them can pass for the start of another message.
std::string indented(std::string_view message) {
    while (message.ends_with('\n'))
        message.remove_suffix(1);
    std::string text;
    for (;;) {
        auto const end = message.find('\n');
        text += printable(message.substr(0, end));
        if (end == std::string_view::npos)
            return text;
        message.remove_prefix(end + 1);
        text += message.starts_with('\n') ? "\n" : "\n    ";
    }
}

Json faultDocument(LoadFault const& fault) {
    return {{"error",
             {{"file", jsonText(fault.file)},
              {"line", fault.line},
              {"message", jsonText(fault.message)}}}};
}

} // namespace

LoadFault lastFault(Kelda::MountFileInfo const& parser, Fen::AgentException const& thrown) {
    if (parser.exceptions().empty())
        return {"", thrown.what(), -1};
    auto const& fault = parser.exceptions().back();
    if (Kelda::MountFileInfo::mfiExceptionToString(fault) != thrown.what())
        return {"", thrown.what(), -1};
    return {textOf(fault.file), textOf(fault.msg), fault.line};
}

Report faultReport(LoadFault const& fault, Format format) {
    if (format == Format::json)
        return {documentText(faultDocument(fault)), "", ExitStatus::failure};
    return {"", fmt::format("{}: {}\n", place(fault), indented(fault.message)),
            ExitStatus::failure};
}

} // namespace KeldaTool
