// A finding is known by what JSON can hold of it: bytes that are no UTF-8 are replaced before
// anything is compared.
#include "check/Baseline.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "JsonDocument.h"
#include "Text.h"
#include "database/findings/Rules.h"

namespace KeldaTool {
namespace {

namespace fs = std::filesystem;

constexpr int schemaVersion = 1;

std::string name(std::string const& path) {
    return "baseline " + printable(path);
}

std::string contentOf(std::string const& path) {
    std::unique_ptr<FILE, int (*)(FILE*)> const file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    std::string text;
    std::array<char, 65536> buffer;
    for (std::size_t read = buffer.size(); file && read == buffer.size();) {
        read = std::fread(buffer.data(), 1, buffer.size(), file.get());
        text.append(buffer.data(), read);
    }
    if (!file || std::ferror(file.get()) != 0)
        throw std::runtime_error(
            fmt::format("cannot read {}: {}", name(path), std::strerror(errno)));
    return text;
}

// --- paths ---

bool leadsOut(fs::path const& path) {
    return path.empty() || path.is_absolute() || *path.begin() == "..";
}

// As the system has it, without links; as far as it exists.
fs::path withoutLinks(fs::path const& path) {
    std::error_code failed;
    auto const found = fs::weakly_canonical(path, failed);
    return failed ? path : found;
}

fs::path fromRoot(fs::path const& path) {
    std::error_code failed;
    auto const found = fs::absolute(path, failed).lexically_normal();
    return failed ? path : found;
}

// The folder of a file, written in the two ways in which others may be told from there.
struct Folder {
    fs::path named;
    fs::path real;

    explicit Folder(std::string const& file)
        : named(fromRoot(file).parent_path()), real(withoutLinks(named)) {}

    // Below the folder as it is named, where only links lead out of it; else from its real place.
    std::string relative(std::string const& file) const {
        if (file.empty())
            return file;
        auto const path = fromRoot(file);
        auto const below = path.lexically_relative(named);
        if (!leadsOut(below))
            return below.string();
        auto const realPath = withoutLinks(path.parent_path()) / path.filename();
        auto const fromReal = realPath.lexically_relative(real);
        return (fromReal.empty() ? path : fromReal).string();
    }
    // The other way round.
    std::string pathOf(std::string const& relative) const {
        auto const& base = leadsOut(relative) ? real : named;
        return relative.empty() ? relative : (base / relative).lexically_normal().string();
    }
};

// --- documents ---

[[noreturn]] void refuse(std::string const& path, std::string const& why) {
    throw std::runtime_error(fmt::format("{} {}", name(path), why));
}

Json documentOf(std::string const& path) {
    auto const text = contentOf(path);
    auto document = Json::parse(text, nullptr, false);
    if (document.is_discarded())
        refuse(path, "is no JSON document");
    auto const version = document.is_object() ? document.find("schemaVersion") : document.end();
    if (version == document.end() || !version->is_number_integer())
        refuse(path, "has no whole number 'schemaVersion'");
    if (*version != schemaVersion)
        refuse(path, fmt::format("has the version {}; only {} can be read", version->dump(),
                                 schemaVersion));
    return document;
}

std::string textIn(Json const& entry, char const* member, std::string const& path, std::size_t i) {
    auto const found = entry.is_object() ? entry.find(member) : entry.end();
    if (found == entry.end() || !found->is_string())
        refuse(path, fmt::format("has no text '{}' in finding {}", member, i + 1));
    return found->get<std::string>();
}

// 0 where there is none that fits.
std::int32_t lineIn(Json const& entry) {
    auto const found = entry.find("line");
    if (found == entry.end() || !found->is_number_unsigned())
        return 0;
    auto const line = found->get<std::uint64_t>();
    return line <= INT32_MAX ? static_cast<std::int32_t>(line) : 0;
}

std::vector<Baseline::Entry> entriesOf(std::vector<CheckedFinding> const& findings,
                                       Folder const& folder) {
    std::map<std::string, std::string> names; // of files
    std::vector<Baseline::Entry> entries;
    for (auto const& finding : findings) {
        auto const [known, added] = names.try_emplace(finding.place.file);
        if (added)
            known->second = replaceNonUtf8(folder.relative(finding.place.file));
        entries.push_back({known->second, std::string(finding.rule->name),
                           replaceNonUtf8(finding.message), finding.place.line});
    }
    return entries;
}

std::string shown(Baseline::Entry const& entry) {
    auto const file = printable(entry.file);
    auto const where = entry.line > 0 ? fmt::format("{}:{}", file, entry.line) : file;
    return fmt::format("{}{}{} [{}]", where, where.empty() ? "" : ": ", printable(entry.message),
                       printable(entry.rule));
}

// The entries that no finding has taken yet.
class OpenEntries {
  public:
    explicit OpenEntries(std::vector<Baseline::Entry> const& entries) {
        for (std::size_t i = 0; i < entries.size(); ++i)
            lists_[keyOf(entries[i])].emplace(entries[i].line, i);
    }

    // Takes an entry for a finding; of the same line, or any.
    bool takeOfLine(Baseline::Entry const& finding) {
        auto const list = lists_.find(keyOf(finding));
        return list != lists_.end() && take(list->second, list->second.find(finding.line));
    }
    bool takeAny(Baseline::Entry const& finding) {
        auto const list = lists_.find(keyOf(finding));
        return list != lists_.end() && take(list->second, list->second.begin());
    }

    // Their indexes, in order.
    std::vector<std::size_t> left() const {
        std::vector<std::size_t> indexes;
        for (auto const& [key, list] : lists_)
            for (auto const& [line, index] : list)
                indexes.push_back(index);
        std::ranges::sort(indexes);
        return indexes;
    }

  private:
    using Key = std::tuple<std::string, std::string, std::string>;
    using List = std::multimap<std::int32_t, std::size_t>; // indexes by line

    static Key keyOf(Baseline::Entry const& entry) {
        return {entry.file, entry.rule, entry.message};
    }
    static bool take(List& list, List::iterator entry) {
        if (entry == list.end())
            return false;
        list.erase(entry);
        return true;
    }

    std::map<Key, List> lists_;
};

// Whether each finding stands in the baseline. Where several are alike, those are meant that stand
// in the lines of the entries.
std::vector<bool> takeAll(OpenEntries& open, std::vector<Baseline::Entry> const& findings) {
    std::vector<bool> isKnown;
    for (auto const& finding : findings)
        isKnown.push_back(open.takeOfLine(finding));
    for (std::size_t i = 0; i < findings.size(); ++i)
        isKnown[i] = isKnown[i] || open.takeAny(findings[i]);
    return isKnown;
}

} // namespace

Baseline Baseline::read(std::string const& path) {
    auto const document = documentOf(path);
    auto const findings = document.find("findings");
    if (findings == document.end() || !findings->is_array())
        refuse(path, "has no list 'findings'");
    Baseline baseline;
    baseline.path_ = path;
    for (auto const& entry : *findings) {
        auto const i = baseline.entries_.size();
        baseline.entries_.push_back({textIn(entry, "file", path, i), textIn(entry, "rule", path, i),
                                     textIn(entry, "message", path, i), lineIn(entry)});
    }
    return baseline;
}

void Baseline::apply(CheckResult& result, IsChecked const& isChecked) const {
    Folder const folder(path_);
    OpenEntries open(entries_);
    auto const isKnown = takeAll(open, entriesOf(result.findings, folder));
    std::vector<CheckedFinding> left;
    for (std::size_t i = 0; i < isKnown.size(); ++i)
        if (!isKnown[i])
            left.push_back(std::move(result.findings[i]));
    result.inBaseline += isKnown.size() - left.size();
    result.findings = std::move(left);
    for (auto const i : open.left())
        if (isChecked(entries_[i], folder.pathOf(entries_[i].file)))
            result.staleBaseline.push_back(shown(entries_[i]));
}

std::string baselineText(CheckResult const& result, std::string const& path) {
    auto entries = entriesOf(result.findings, Folder(path));
    std::ranges::sort(entries, {}, [](Baseline::Entry const& entry) {
        return std::tie(entry.file, entry.line, entry.rule, entry.message);
    });
    Json document{{"schemaVersion", schemaVersion}, {"findings", Json::array()}};
    for (auto const& entry : entries)
        document["findings"].push_back({{"file", entry.file},
                                        {"line", entry.line},
                                        {"rule", entry.rule},
                                        {"message", entry.message}});
    return documentText(document);
}

} // namespace KeldaTool
