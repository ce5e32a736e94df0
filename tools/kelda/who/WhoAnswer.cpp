#include "who/WhoAnswer.h"

#include <algorithm>
#include <tuple>

#include <KeldaUtil/MountFlags.h>

#include "database/paths/AgentMounts.h"
#include "database/paths/PathPattern.h"

namespace KeldaTool {
namespace {

using Flags = Fen::MountTable::Flags;

// A text against one with "*" for any text in it.
bool matchesStars(std::string_view text, std::string_view pattern) {
    auto star = pattern.find('*');
    if (star == std::string_view::npos)
        return text == pattern;
    if (!text.starts_with(pattern.substr(0, star)))
        return false;
    text.remove_prefix(star);
    pattern.remove_prefix(star + 1);
    while ((star = pattern.find('*')) != std::string_view::npos) {
        auto const at = text.find(pattern.substr(0, star));
        if (at == std::string_view::npos)
            return false;
        text.remove_prefix(at + star);
        pattern.remove_prefix(star + 1);
    }
    return text.ends_with(pattern);
}

constexpr std::uint32_t instantiating = 0x80000; // "y"

// The flags of a text; without the instantiating one, which r and w imply, unless it says so.
Flags lettersOf(std::string const& text) {
    auto const bits = KeldaUtil::parseMountTableFlags(text).bits();
    return Flags(text.find('y') == std::string::npos ? bits & ~instantiating : bits);
}

class Asking {
  public:
    Asking(KeldaDatabase::Device const& device, WhoQuestion const& question)
        : device_(device), question_(question),
          flags_(KeldaUtil::parseMountTableFlags(question.flags)),
          letters_(lettersOf(question.flags)),
          mounts_(device, [pattern = KeldaDatabase::PathPattern(question.path)](
                              Rook::String const& path) { return pattern.matches(path.view()); }) {}

    WhoAnswer answer() {
        for (std::uint32_t agent = 0; agent < device_.agents.size(); ++agent)
            if (!device_.agents[agent].isActiveVariant)
                mounts_.visit(device_.agents[agent],
                              [&](KeldaDatabase::AgentMount const& mount) { add(agent, mount); });
        std::sort(answer_.rows.begin(), answer_.rows.end(), [](WhoRow const& a, WhoRow const& b) {
            return std::tie(a.path, a.agent) < std::tie(b.path, b.agent);
        });
        return std::move(answer_);
    }

  private:
    void add(std::uint32_t agent, KeldaDatabase::AgentMount const& mount) {
        bool const fits =
            (mount.flags & flags_) == flags_ &&
            (question_.type.empty() || matchesStars(mount.type.view(), question_.type));
        if (!fits) {
            ++answer_.leftOut;
            return;
        }
        WhoRow row{
            agent, mount.path, mount.type, mount.flags, {mount.lines.begin(), mount.lines.end()},
            0};
        row.decisiveLine = decisiveLine(row.lines);
        answer_.rows.push_back(std::move(row));
    }

    std::size_t decisiveLine(std::vector<std::size_t> const& lines) const {
        auto const gives = [this](std::size_t line) {
            return (device_.mounts[line].flags & letters_) != Flags();
        };
        auto const found = std::find_if(lines.begin(), lines.end(), gives);
        return found == lines.end() ? lines.front() : *found;
    }

    KeldaDatabase::Device const& device_;
    WhoQuestion const& question_;
    Flags flags_;
    Flags letters_; // of these, what is not only implied by another letter
    KeldaDatabase::AgentMounts mounts_;
    WhoAnswer answer_;
};

} // namespace

bool areFlagLetters(std::string const& letters) {
    return letters.find_first_not_of("rwcitfSDdOApKLnNECey") == std::string::npos;
}

WhoAnswer askWho(KeldaDatabase::Device const& device, WhoQuestion const& question) {
    return Asking(device, question).answer();
}

} // namespace KeldaTool
