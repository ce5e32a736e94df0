#include "report/ReportData.h"

#include <algorithm>
#include <set>
#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "check/CheckResolution.h"
#include "database/AgentFaults.h"
#include "database/findings/Rules.h"
#include "database/findings/Suppressions.h"
#include "database/paths/PathDeclarations.h"
#include "report/AgentFacts.h"
#include "report/CompactJson.h"
#include "report/ReportLines.h"
#include "report/ReportMounts.h"
#include "report/ReportPaths.h"
#include "report/SourceLines.h"

namespace KeldaTool {
namespace {

using namespace KeldaDatabase;

constexpr int schemaVersion = 1;
constexpr int unknown = -1;                // a file or line that there is not
constexpr std::size_t mostFaultsTold = 20; // of one agent; the first one ends it

// Agents of both kinds share a name: the "-Active-" variants are told by a member of the others.
std::unordered_set<Rook::String> agentsWithVariant(Device const& device) {
    std::unordered_set<Rook::String> names;
    for (auto const& agent : device.agents)
        if (agent.isActiveVariant)
            names.insert(agent.name);
    return names;
}

// Messages that quote a line do so with its end.
std::string_view withoutLineEnd(std::string_view message) {
    while (message.ends_with('\n'))
        message.remove_suffix(1);
    return message;
}

class Document {
  public:
    explicit Document(DatabaseMountFileInfo& parser)
        : device_(parser.device()), mounts_(device_), source_(device_),
          lines_(device_, mounts_, parser.predefinedAliases(), source_) {}

    ReportData of(SuppressionResult const& checked) {
        json_.beginObject();
        json_.number("schemaVersion", schemaVersion);
        json_.text("program", "kelda " KELDA_VERSION);
        writeDevice();
        writeAgents();
        json_.key("lines");
        lines_.writeTo(json_);
        ReportPaths const paths(device_, mounts_, lines_.wildcardPaths());
        writePaths(paths.paths());
        writeMounts(paths);
        writeFindings(checked);
        json_.endObject();
        return {json_.take(), agentCount_, paths.paths().size(), checked.findings.size()};
    }

  private:
    void writeDevice() {
        json_.beginObject("device");
        json_.text("preinitDir", device_.preinitDirectory);
        json_.text("profileDir", device_.profileDirectory);
        json_.endObject();
        json_.beginArray("files");
        for (auto const& file : device_.files)
            json_.text(file.path());
        json_.endArray();
    }

    void writeTexts(std::string_view name, std::vector<std::string> const& texts) {
        json_.beginArray(name);
        for (auto const& text : texts)
            json_.text(text);
        json_.endArray();
    }

    void writeAgents() {
        AgentKeywords const keywords(device_);
        auto const withVariant = agentsWithVariant(device_);
        json_.beginArray("agents");
        for (std::size_t i = 0; i < device_.agents.size(); ++i)
            if (auto const& agent = device_.agents[i]; !agent.isActiveVariant) {
                ++agentCount_;
                json_.beginObject();
                json_.text("name", agent.name.view());
                if (withVariant.contains(agent.name))
                    json_.boolean("hasActiveVariant", true);
                writeFacts(keywords.of(agent));
                writeProfiles(agent);
                writeFaults(i);
                json_.endObject();
            }
        json_.endArray();
    }

    void writeFacts(AgentFacts const& facts) {
        json_.boolean("active", facts.hasActiveMounts);
        json_.boolean("noDefaultMountGroup", facts.noDefaultMountGroup);
        json_.text("rootFlags", facts.rootFlags);
        json_.text("connectionFlags", facts.connectionFlags);
        writeTexts("subAgents", facts.subAgents);
    }

    void writeProfiles(Agent const& agent) {
        json_.beginArray("profiles");
        for (auto const id : agent.profiles)
            if (auto const file = device_.profiles[id].file; file != none)
                json_.number(file);
        json_.endArray();
    }

    // Without those that only follow from another one of their line.
    void writeFaults(std::size_t agent) {
        auto faults = faultsOf(device_, agent);
        std::erase_if(faults, [this](std::size_t i) {
            return isFollowOn(device_.faults[i].exception.msg.view());
        });
        json_.beginArray("faults");
        for (std::size_t i = 0; i < std::min(faults.size(), mostFaultsTold); ++i) {
            auto const& fault = device_.faults[faults[i]];
            json_.beginObject();
            json_.text("message", withoutLineEnd(fault.exception.msg.view()));
            writeFileAndLine(fault.place);
            json_.endObject();
        }
        json_.endArray();
        json_.number("faultCount", static_cast<std::int64_t>(faults.size()));
    }

    void writeFileAndLine(Place const& place) {
        json_.number("file", place.isKnown() ? std::int64_t{place.file} : unknown);
        json_.number("line", place.isKnown() ? source_.numberOf(place) : unknown);
    }

    void writePaths(std::vector<ReportPath> const& paths) {
        json_.beginArray("paths");
        for (auto const& path : paths) {
            json_.beginObject();
            json_.text("p", path.path);
            json_.text("t", path.type);
            writeDeclarations(path.declarations);
            json_.endObject();
        }
        json_.endArray();
    }

    void writeDeclarations(std::span<std::size_t const> declarations) {
        bool isConfig = false;
        json_.beginArray("d");
        for (auto const i : declarations) {
            writePlacePair(device_.preinits[i].place, source_, json_);
            isConfig = isConfig || device_.preinits[i].isConfig;
        }
        json_.endArray();
        if (declarations.empty())
            return;
        if (auto const attribute = attributeText(device_.preinits[declarations.back()].attr);
            !attribute.empty())
            json_.text("a", attribute);
        if (isConfig)
            json_.boolean("c", true);
    }

    void writeMounts(ReportPaths const& paths) {
        writeTexts("flags", mounts_.flags());
        json_.beginArray("mounts");
        for (auto const& mount : mounts_.mounts()) {
            auto const path = paths.indexOf(mount.path);
            json_.beginArray();
            json_.number(mount.agent);
            json_.number(path);
            json_.number(mount.flags);
            json_.beginArray();
            for (auto const line : mounts_.linesOf(mount))
                json_.number(lines_.numberOf(line));
            json_.endArray();
            if (auto const type = mounts_.types()[mount.type].view();
                type != paths.paths()[path].type)
                json_.text(type);
            json_.endArray();
        }
        json_.endArray();
    }

    void writeFindings(SuppressionResult const& checked) {
        writeRules(checked.findings);
        CheckResolution resolution(device_, [](std::string const& path) { return path; });
        json_.beginArray("findings");
        for (auto const& finding : checked.findings) {
            auto const resolved = resolution.resolved(finding);
            json_.beginObject();
            json_.text("severity", nameOf(finding.severity));
            json_.text("rule", ruleOf(finding.rule).name);
            writePosition(finding.place, resolved.place);
            json_.text("message", finding.message);
            if (!finding.hint.empty())
                json_.text("hint", finding.hint);
            json_.endObject();
        }
        json_.endArray();
        json_.number("suppressed", static_cast<std::int64_t>(checked.suppressed));
    }

    // Of what goes on in the next line, the line that it stands in.
    void writePosition(Place const& place, SourcePlace const& resolved) {
        json_.number("file", place.isKnown() ? std::int64_t{place.file} : unknown);
        json_.number("line", place.isKnown() ? resolved.line : unknown);
        json_.number("column", place.isKnown() ? resolved.column : unknown);
    }

    // Those of the findings.
    void writeRules(std::vector<Finding> const& findings) {
        std::set<RuleId> used;
        for (auto const& finding : findings)
            used.insert(finding.rule);
        json_.beginObject("rules");
        for (auto const rule : used)
            json_.text(ruleOf(rule).name, ruleOf(rule).summary);
        json_.endObject();
    }

    Device const& device_;
    ReportMounts mounts_;
    SourceLines source_;
    ReportLines lines_;
    CompactJson json_;
    std::size_t agentCount_ = 0;
};

} // namespace

ReportData reportData(DatabaseMountFileInfo& parser) {
    auto const& device = parser.device();
    auto const checked = suppress(device, parser.takeFindings());
    return Document(parser).of(checked);
}

} // namespace KeldaTool
