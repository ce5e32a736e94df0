#include "UnreadableFolder.h"

#include "LoadFault.h"
#include "Text.h"
#include "database/findings/Rules.h"

namespace KeldaTool {

std::optional<std::string> unreadableFolder(KeldaDatabase::Device const& device) {
    for (auto const& fault : device.faults)
        if (auto const& message = fault.exception.msg;
            KeldaDatabase::ruleOfMessage(message.view()) ==
            KeldaDatabase::RuleId::directoryUnreadable)
            return textOf(message);
    return std::nullopt;
}

std::optional<Report> unreadableFolderReport(KeldaDatabase::Device const& device, Format format) {
    auto const message = unreadableFolder(device);
    if (!message)
        return std::nullopt;
    auto report = faultReport({"", *message, -1}, format);
    report.status = ExitStatus::wrongCall;
    return report;
}

} // namespace KeldaTool
