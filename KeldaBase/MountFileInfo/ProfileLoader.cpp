// The profile language: which kinds of line there are and what handles each.
//
//     path,type,flags            a mount path                     (also in included files)
//     activeMount                the agent is an active-mount one (also in included files)
//     alias:%name=expression     an alias for the lines that follow
//     KEYWORD...                 see keywordLines
//
// Blanks do not count, keywords are compared without regard to case, and the first kind that fits
// wins, in the order above.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cstring>

#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"
#include "LoadCaches.h"

namespace Kelda {

namespace {

constexpr char const* activeMountKeyword = "activeMount";

// A line without its blanks, and the same line with them.
struct ProfileLine {
    LineBuffer& text;
    LineBuffer const& withBlanks;
};

struct KeywordLine {
    std::string_view keyword;
    enum { wholeLine, prefix } extent;
    // Handles the line; returns how many profiles that loaded.
    int (*handle)(MountFileInfo& parser, ProfileLine const& line);

    bool matches(LineBuffer const& line) const {
        return startsWithIgnoringCase(line.data(), keyword) &&
               (extent == prefix || line[keyword.size()] == '\0');
    }
};

// Adding a keyword is adding a row.
constexpr KeywordLine keywordLines[] = {
    {"MountGroup:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleMountGroupLine(line.text);
         return 0;
     }},
    {"noDefaultMountGroup", KeywordLine::wholeLine,
     [](MountFileInfo& parser, ProfileLine const&) {
         parser.handleNoDefaultMountGroupLine();
         return 0;
     }},
    {"matchActiveName", KeywordLine::wholeLine,
     [](MountFileInfo& parser, ProfileLine const&) {
         parser.handleMatchActiveNameLine();
         return 0;
     }},
    {"subAgent:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleSubAgentLine(line.text);
         return 0;
     }},
    {"Condition:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleConditionLine(line.withBlanks);
         return 0;
     }},
    {"ConditionBlocker:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleConditionBlockerLine(line.withBlanks);
         return 0;
     }},
    {"rootFlags:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleRootFlagsLine(line.text);
         return 0;
     }},
    {"connectionFlags:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         parser.handleConnectionFlagsLine(line.text);
         return 0;
     }},
    {"Include:", KeywordLine::prefix,
     [](MountFileInfo& parser, ProfileLine const& line) {
         return static_cast<int>(parser.handleIncludeLine(line.text));
     }},
};

// Runs an operation at the end of a scope that is left by an exception.
template <class Operation>
class OnFailure {
  public:
    explicit OnFailure(Operation operation) : operation_(operation) {}
    ~OnFailure() {
        if (std::uncaught_exceptions() > exceptions_)
            operation_();
    }
    OnFailure(OnFailure const&) = delete;
    OnFailure& operator=(OnFailure const&) = delete;

  private:
    Operation operation_;
    int exceptions_ = std::uncaught_exceptions();
};

} // namespace

int MountFileInfo::profileLoader(FILE* file) {
    MFI_TRACE(8, "( file : {} )", currentFileName());
    MFI_TRACE(2, "( file : {} )", currentFileName());
    // A profile that ends in an exception leaves nothing behind for the next one either.
    OnFailure const forgetting([this] {
        if (!inInclude_)
            resetFileContext();
    });
    int profiles = 1;
    int step = 1;
    LineBuffer line;
    LineBuffer lineWithBlanks;
    while (readLogicalLine(file, line, step)) {
        copyText(lineWithBlanks, line.data());
        removeBlanks(line.data());
        if (line[0] != '\0')
            profiles += handleProfileLine(line, lineWithBlanks);
    }
    finishProfile(profiles);
    return profiles;
}

int MountFileInfo::handleProfileLine(LineBuffer& line, LineBuffer const& lineWithBlanks) {
    if (matchProfilePathLine(line)) {
        handleProfilePathLine(line);
        return 0;
    }
    if (equalsIgnoringCase(line.data(), activeMountKeyword)) {
        if (observer_ != nullptr)
            observer_->keywordLine(activeMountKeyword, line.data(), currentFiles_);
        handleActiveMountLine();
        return 0;
    }
    if (inInclude_) {
        includedError(line);
        return 0;
    }
    if (matchAliasLine(line)) {
        handleAliasLine(line);
        return 0;
    }
    auto const* const keyword = std::ranges::find_if(
        keywordLines, [&](KeywordLine const& candidate) { return candidate.matches(line); });
    if (keyword != std::end(keywordLines)) {
        if (observer_ != nullptr)
            observer_->keywordLine(keyword->keyword, line.data(), currentFiles_);
        return keyword->handle(*this, {line, lineWithBlanks});
    }
    reportAndTrace(fmt::format("syntax error: '{}'", line.data()));
    return 0;
}

void MountFileInfo::finishProfile(int profiles) {
    caches_->endedProfileFiles.add(currentFileName());
    if (!inInclude_)
        resetFileContext();
    MFI_TRACE(5, "processed {} profiles", profiles);
    foundMountProfile_ = profiles > 0;
    if (matchActiveNameSeen_ && !activeMountSeen_)
        reportAndTrace("'matchActiveName' keyword requires 'activeMount' keyword");
    if (!inInclude_)
        fileProfileUnderAgent();
}

// Files the profile under its agent name and, where a differing agent string is being served, under
// that too.
void MountFileInfo::fileProfileUnderAgent() {
    auto const file = currentFileName();
    agentStringProfileFileMapIs(agentKey_, file);
    if (!agentString_.empty() && agentString_ != agentKey_)
        agentStringProfileFileMapIs(agentString_, file);
}

} // namespace Kelda
