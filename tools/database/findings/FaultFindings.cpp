#include "FaultFindings.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "Hints.h"
#include "SourceText.h"

namespace KeldaDatabase {
namespace {

// The text between the first two single quotes.
std::string quoted(std::string_view message) {
    auto const begin = message.find('\'');
    if (begin == std::string_view::npos)
        return {};
    auto const end = message.find('\'', begin + 1);
    return std::string(message.substr(begin + 1, end - begin - 1));
}

std::string behind(std::string_view message, std::string_view start) {
    message.remove_prefix(std::min(start.size(), message.size()));
    return std::string(message.substr(0, message.find('\n')));
}

// What of the line the message is about.
Subject subjectOf(RuleId rule, std::string_view message, std::string_view line) {
    bool const isPathLine = std::ranges::count(line, ',') >= 2;
    int const flagsField = isPathLine ? 2 : Subject::behindColon;
    switch (rule) {
    case RuleId::flagUnknown:
        return {flagsField, behind(message, "Encountered unknown mount flag ")};
    case RuleId::connectionFlagUnknown:
        return {Subject::behindColon, behind(message, "Encountered invalid connection flag ")};
    case RuleId::flagsCAndD:
    case RuleId::flagDWithoutC:
        return {flagsField, ""};
    case RuleId::pathWithoutType:
    case RuleId::typesDiffer:
        return {0, ""};
    case RuleId::attributeUnknown:
        return {2, ""};
    case RuleId::attributeRedefined:
    case RuleId::tokenNeedsCreateOnMount:
    case RuleId::configPathWithToken:
    case RuleId::configCreateOnMount:
        return {0, ""};
    case RuleId::aliasUndefined:
        return {Subject::anywhere, quoted(message)};
    case RuleId::groupPriorityRange:
        return {1, ""};
    case RuleId::aliasNameInvalid:
        return {Subject::behindColon, quoted(message)};
    case RuleId::aliasChoiceIncomplete:
        return {Subject::anywhere, "?"};
    case RuleId::includeNotFound:
    case RuleId::groupNameReserved:
        return {Subject::behindColon, ""};
    case RuleId::textAfterBackslash:
        return {Subject::anywhere, "\\"};
    default:
        return {};
    }
}

// Faults after which nothing else that is said of the line means much.
bool spoilsTheLine(RuleId rule) {
    return rule == RuleId::commentContinued || rule == RuleId::textAfterBackslash ||
           rule == RuleId::nulCharacter || rule == RuleId::lineTooLong ||
           rule == RuleId::fileUnreadable || rule == RuleId::attributeUnknown;
}

// The key in the type map of the path that a preinit line declares.
Rook::String declaredPath(std::string_view line) {
    std::string path;
    for (char const c : line.substr(0, line.find_first_of(",#")))
        if (c != ' ' && (c < '\t' || c > '\r'))
            path += c;
    auto const startsWith = [&path](std::string_view start) {
        return std::ranges::equal(std::string_view(path).substr(0, start.size()), start, {},
                                  [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; });
    };
    if (startsWith("config:"))
        path.erase(0, std::string_view("config:").size());
    if (startsWith("%cellpath"))
        path.replace(0, std::string_view("%cellpath").size(), "cell/%cellId");
    else if (startsWith("%peercellpath"))
        path.replace(0, std::string_view("%peercellpath").size(), "cell/%peerCellId");
    if (path.ends_with('/'))
        path.pop_back();
    return Kelda::MountFileInfo::wildcardPath(Rook::String(path));
}

// After a file that cannot be opened no further one of its folder is read.
bool cutsFolderShort(Fault const& fault) {
    return fault.exception.msg.startsWith("Cannot openat file ") ||
           fault.exception.msg.startsWith("Cannot fdopen file ");
}

class FindingsOfFaults {
  public:
    explicit FindingsOfFaults(Device const& device) : device_(device), hints_(device) {
        for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
            if (!device.agents[agent].isActiveVariant)
                for (auto const profile : device.agents[agent].profiles)
                    agentsOfProfile_[profile].push_back(agent);
        preinitsAreIncomplete_ = std::ranges::any_of(device.faults, [&](Fault const& fault) {
            return cutsFolderShort(fault) &&
                   fault.exception.msg.endsWith(" in " + device_.preinitDirectory);
        });
    }

    std::vector<Finding> take() {
        for (auto const& fault : device_.faults)
            add(fault);
        return std::move(findings_);
    }

  private:
    using LineKey = std::tuple<FileId, std::int32_t>;
    using FindingKey = std::tuple<FileId, std::int32_t, std::string>;
    // What is said of a line that has nothing left to understand.
    struct Spoilt {
        Rook::String message;
        std::int32_t parserLine = 0;
    };

    void add(Fault const& fault) {
        auto const message = fault.exception.msg.view();
        auto const rule = ruleOfFault(fault);
        if (isFollowOn(message) || isSaidOfSpoiltLine(fault, rule) || isOfRefusedPreinit(fault))
            return;
        auto finding = findingOf(fault, rule);
        auto const [known, added] = known_.try_emplace(keyOf(finding), findings_.size());
        if (!added) {
            meetAgain(findings_[known->second], finding);
            return;
        }
        noteRefusedPreinit(fault);
        findings_.push_back(std::move(finding));
    }

    // A conflict of keywords names the agent that meets it.
    static FindingKey keyOf(Finding const& finding) {
        bool const namesAgent = finding.rule == RuleId::conditionWithActiveMount;
        return {finding.place.file, finding.place.line, namesAgent ? "" : finding.message};
    }

    RuleId ruleOfFault(Fault const& fault) {
        if (fault.place.isKnown()) {
            auto const& text = texts_.of(device_.pathOf(fault.place));
            if (text.isTakenInPieces(text.editorLine(fault.place.line)))
                return RuleId::lineTooLong;
        }
        return ruleOfMessage(fault.exception.msg.view());
    }

    // After a fault that leaves nothing of the line to understand. Of a line that was taken in
    // pieces, the first fault stands for all.
    bool isSaidOfSpoiltLine(Fault const& fault, RuleId rule) {
        if (!fault.place.isKnown())
            return false;
        auto const& text = texts_.of(device_.pathOf(fault.place));
        LineKey const line{fault.place.file, text.editorLine(fault.place.line)};
        auto const spoilt = spoilt_.find(line);
        if (spoilt != spoilt_.end())
            return spoilt->second.message != fault.exception.msg ||
                   spoilt->second.parserLine != fault.place.line;
        if (spoilsTheLine(rule))
            spoilt_.emplace(line, Spoilt{fault.exception.msg, fault.place.line});
        return false;
    }

    Finding findingOf(Fault const& fault, RuleId rule) {
        Finding finding;
        finding.rule = rule;
        finding.severity = ruleOf(rule).severity;
        finding.place = fault.place;
        finding.message = fault.exception.msg.view();
        while (finding.message.ends_with('\n'))
            finding.message.pop_back();
        finding.hint = hints_.of(rule, fault);
        if (cutsFolderShort(fault))
            finding.hint = "the files behind it in this folder are not read";
        finding.agents = namesOf(fault);
        for (auto const& cause : fault.causes)
            finding.related.push_back({cause, "in conflict with this line"});
        if (rule == RuleId::typesDiffer && !finding.place.isKnown() && !fault.causes.empty()) {
            finding.place = fault.causes.front();
            finding.related.erase(finding.related.begin());
        }
        if (rule == RuleId::attributeRedefined)
            relateFirstDeclaration(finding);
        if (rule == RuleId::matchActiveNameAlone || rule == RuleId::matchActiveNameWithRest)
            moveToKeyword(finding, fault);
        if (finding.place.include != none)
            finding.includes.push_back(finding.place.include);
        if (finding.place.isKnown()) {
            auto const& text = texts_.of(device_.pathOf(finding.place));
            finding.subject =
                subjectOf(rule, finding.message, text.line(text.editorLine(finding.place.line)));
        }
        return finding;
    }

    static void meetAgain(Finding& known, Finding const& again) {
        for (auto const include : again.includes)
            if (std::ranges::find(known.includes, include) == known.includes.end())
                known.includes.push_back(include);
        if (known.agents.empty() || again.agents.empty())
            known.agents.clear(); // all agents
        else
            addAgents(known, again);
    }

    static void addAgents(Finding& known, Finding const& again) {
        for (auto const& agent : again.agents)
            if (std::ranges::find(known.agents, agent) == known.agents.end())
                known.agents.push_back(agent);
    }

    std::vector<std::string> namesOf(Fault const& fault) const {
        std::vector<std::string> names;
        auto const add = [&](std::uint32_t agent) {
            std::string name(device_.agents[agent].name.view());
            if (names.empty() || names.back() != name)
                names.push_back(std::move(name));
        };
        if (fault.isTogether)
            std::ranges::for_each(fault.agents, add);
        else if (auto const found = agentsOfProfile_.find(fault.profile);
                 found != agentsOfProfile_.end() &&
                 !device_.profiles[fault.profile].isDefaultGroup())
            std::ranges::for_each(found->second, add);
        return names;
    }

    void relateFirstDeclaration(Finding& finding) const {
        auto const path = behind(finding.message, "Redefining attribute for ");
        auto const first =
            std::ranges::find_if(device_.preinits, [&](PreinitDeclaration const& line) {
                return line.path.view() == path;
            });
        if (first != device_.preinits.end())
            finding.related.push_back({first->place, "first declared here"});
    }

    // The parser notices at the end of a file, or at the agent-name line, what a keyword line
    // lacks.
    void moveToKeyword(Finding& finding, Fault const& fault) const {
        if (fault.profile == none)
            return;
        auto const& range = device_.profiles[fault.profile].keywords;
        for (auto i = range.begin; i < range.end; ++i) {
            auto const& keyword = device_.keywords[i];
            if (keyword.keyword != "matchActiveName")
                continue;
            finding.related.push_back({finding.place, "noticed here"});
            finding.place = keyword.place;
            return;
        }
    }

    void noteRefusedPreinit(Fault const& fault) {
        if (!fault.place.isKnown() || device_.files[fault.place.file].family != FileFamily::preinit)
            return;
        auto const& text = texts_.of(device_.pathOf(fault.place));
        auto const path = declaredPath(text.line(text.editorLine(fault.place.line)));
        if (!path.empty())
            refusedPreinits_.try_emplace(path, findings_.size());
    }

    // A path without a type because the line that was to declare it is a finding itself.
    bool isOfRefusedPreinit(Fault const& fault) {
        if (ruleOfMessage(fault.exception.msg.view()) != RuleId::pathWithoutType)
            return false;
        if (preinitsAreIncomplete_)
            return true;
        Rook::String const path(quoted(fault.exception.msg.view()));
        auto const refused = refusedPreinits_.find(Kelda::MountFileInfo::wildcardPath(path));
        if (refused == refusedPreinits_.end())
            return false;
        constexpr std::size_t shown = 5;
        auto& related = findings_[refused->second].related;
        if (related.size() < shown)
            related.push_back({fault.place, "mounted here"});
        return true;
    }

    Device const& device_;
    Hints hints_;
    SourceTexts texts_;
    std::map<ProfileId, std::vector<std::uint32_t>> agentsOfProfile_;
    std::map<FindingKey, std::size_t> known_;
    std::map<LineKey, Spoilt> spoilt_;
    std::map<Rook::String, std::size_t> refusedPreinits_;
    bool preinitsAreIncomplete_ = false; // so that nobody knows which paths have a type
    std::vector<Finding> findings_;
};

} // namespace

std::vector<Finding> faultFindings(Device const& device) {
    return FindingsOfFaults(device).take();
}

} // namespace KeldaDatabase
