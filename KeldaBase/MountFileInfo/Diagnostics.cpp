// Recorded faults: where a fault was found, how it is told, and what may explain it.
#include <KeldaBase/MountFileInfo.h>

#include <cstdlib>
#include <string>

#include <Fen/Assert.h>
#include <Fen/Exception.h>
#include <fmt/format.h>

#include "../Tracing.h"

namespace Kelda {

Rook::String const& valueOf(std::optional<Rook::String> const& value) {
    if (!value)
        throw Fen::BadOptionalAccess("read of an optional that holds nothing");
    return *value;
}

void MountFileInfo::maybeThrow(Rook::String const& message) const {
    MfiException exception{{}, message, -1};
    if (!currentFiles_.empty()) {
        exception.file = currentFiles_.back().file;
        exception.line = currentFiles_.back().line;
    }
    exceptions_.push_back(std::move(exception));
}

void MountFileInfo::reportAndTrace(Rook::String const& message) const {
    maybeThrow(message);
    FEN_ASSERT(!exceptions_.empty());
    MFI_TRACE(0, "Encountered exception {} during kelda-side parsing. Continuing...",
              mfiExceptionToString(exceptions_.back()));
}

std::optional<MfiException> MountFileInfo::firstException() const {
    if (exceptions_.empty())
        return std::nullopt;
    return exceptions_.front();
}

Rook::String MountFileInfo::mfiExceptionToString(MfiException const& exception) {
    if (exception.file.empty())
        return exception.msg;
    if (exception.line > 0)
        return fmt::format("\n\t\t\tError in mount profile: {}\n\t\t\tline: {}\n\t\t\tmsg: {}",
                           exception.file, exception.line, exception.msg);
    return fmt::format("\n\t\t\tError in mount profile: {}\n\t\t\tmsg: {}", exception.file,
                       exception.msg);
}

namespace {

std::string packageExplanation(char const* package) {
    return fmt::format(
        "\n\nThe Q9PKG environment variable is currently set to '{0}'. This means that "
        "MountFileInfo is only loading preinits and mount profiles from this package and its "
        "dependencies. If this error seems bizarre (e.g. missing preinit entry despite you having "
        "added the entry), this is likely because you are assuming {0} has a package dependency it "
        "does not. See REF10 for more info on package dependencies and influencing PkgDeps.",
        package);
}

std::string agentsExplanation(std::vector<Rook::String> const& agents) {
    std::string text =
        "\n\nThis particular error is related to data missing from mount profiles. MountFileInfo "
        "is only loading mount profiles with the following agent names:";
    for (std::size_t i = 0; i < agents.size(); ++i)
        text.append(i == 0 ? " " : ", ").append(agents[i].view());
    text += ". If the agent under test is not in the list, especially if 'no title' is present "
            "instead, it is likely that the agent name for your process is not properly set. This "
            "usually happens when you start an agent outside of its AgentContainer. The best way "
            "to fix this is to either use 'Fen.setproctitle' to set the agent name in the test, or "
            "to pass the agent name to the Python EntityManager 'agentName' argument, if "
            "applicable. A less desireable alternative is to directly call "
            "'AgentMountFileInfoWrap::addAgent' through the C++ EntityManager.";
    return text;
}

} // namespace

Rook::String MountFileInfo::fmtNotFoundError(Rook::String const& error, bool profileError) const {
    MFI_TRACE(8, "( error : {}, profileError : {} )", error, profileError);
    std::string text(error.view());
    if (char const* const package = std::getenv("Q9PKG"))
        text += packageExplanation(package);
    if (profileError)
        text += agentsExplanation(agentStrings_);
    return text;
}

std::optional<Rook::String> MountFileInfo::excuseMissingType(std::ostringstream& /*message*/,
                                                             char const* /*type*/) const {
    return std::nullopt;
}

Rook::String MountFileInfo::vecToString(std::span<Rook::String const> list) {
    return fmt::format("{{{}}}", fmt::join(list.begin(), list.end(), ", "));
}

Rook::String MountFileInfo::vecToString(std::initializer_list<Rook::String> list) {
    return vecToString(std::span(list.begin(), list.size()));
}

} // namespace Kelda
