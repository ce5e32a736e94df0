#include "formatting/SameMeaning.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <KeldaBase/LoadObserver.h>
#include <KeldaBase/MountFileInfo.h>
#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "database/language/Keywords.h"
#include "formatting/SourceLines.h"

namespace KeldaTool {
namespace {

using Kelda::Places;
using KeldaDatabase::FileFamily;
using Story = std::vector<std::string>; // what a reader makes of a text, in the order met

// --- texts as files ---

struct OpenText {
    std::string_view text;
    std::size_t at = 0;
};

ssize_t readText(void* cookie, char* buffer, std::size_t size) {
    auto& open = *static_cast<OpenText*>(cookie);
    auto const count = open.text.substr(open.at).copy(buffer, size);
    open.at += count;
    return static_cast<ssize_t>(count);
}

int seekInText(void* cookie, off64_t* offset, int whence) {
    auto& open = *static_cast<OpenText*>(cookie);
    auto const from = whence == SEEK_SET   ? 0
                      : whence == SEEK_CUR ? static_cast<off64_t>(open.at)
                                           : static_cast<off64_t>(open.text.size());
    auto const to = from + *offset;
    if (to < 0 || to > static_cast<off64_t>(open.text.size()))
        return -1;
    open.at = static_cast<std::size_t>(to);
    *offset = to;
    return 0;
}

// A text that reads as a file, NUL characters and all.
class TextFile {
  public:
    explicit TextFile(std::string_view text) : open_{text} {
        file_.reset(fopencookie(&open_, "r", {readText, nullptr, seekInText, nullptr}));
        if (file_ == nullptr)
            throw std::bad_alloc();
    }
    FILE* get() const { return file_.get(); }

  private:
    OpenText open_;
    std::unique_ptr<FILE, int (*)(FILE*)> file_{nullptr, &std::fclose};
};

// --- the reader ---

// The case of keywords and attributes means nothing, also where a message quotes a line.
std::string withUsualWords(std::string line) {
    for (auto const family : {FileFamily::profile, FileFamily::preinit})
        if (auto const* const keyword = KeldaDatabase::keywordOf(line, family))
            keyword->spelling.copy(line.data(), keyword->spelling.size());
    for (auto const& attribute : KeldaDatabase::preinitAttributes()) {
        auto const at = line.size() - std::min(line.size(), attribute.spelling.size());
        if (beginsWith(std::string_view(line).substr(at), attribute.spelling))
            attribute.spelling.copy(line.data() + at, attribute.spelling.size());
    }
    return line;
}

std::string withUsualWordsInQuote(std::string message) {
    auto const begin = message.find('\'') + 1;
    auto const end = message.rfind('\'');
    if (begin > 0 && end > begin && beginsWith(message, "syntax error"))
        withUsualWords(message.substr(begin, end - begin))
            .copy(message.data() + begin, end - begin);
    return message;
}

// Reads one file as a parser does that stops at nothing: each fault is an entry of the story, each
// path has the type that its line gives it, and includes find no file.
class Reader : public Kelda::MountFileInfo, private Kelda::LoadObserver {
  public:
    explicit Reader(Story& story)
        : MountFileInfo(true, noFolder, noFolder, "DefaultMountGroup"), story_(story) {
        loadObserverIs(this);
        currentFiles_.push_back({"file", 0});
    }

    void doInit() override {}

    // --- the ways to read a file ---

    void readPreinit(FILE* file) {
        preinitLoader(file);
        tellPreinits();
    }
    // As an agent's profile, if it is one.
    void readProfile(FILE* file) {
        Kelda::LineBuffer buffer{};
        char const* const name = getAgentNameFromProfile(file, buffer);
        tell("agent name: {}", name == nullptr ? "none" : name);
        if (name == nullptr)
            return;
        agentKey_ = name;
        for (auto const& token : tokenize(name, "-%"))
            recordAgentNameTokenAlias("%" + token, "value of " + token, false);
        perFileAliasesPushBack("%agentString", "agent string");
        tell("matchActiveName is found ahead: {}", findMatchActiveName(file, false));
        readDefaultGroup(file);
    }
    void readIncluded(FILE* file) {
        inInclude_ = true;
        readDefaultGroup(file);
    }
    void readDefaultGroup(FILE* file) {
        tell("profiles: {}", profileLoader(file));
        tellProfile();
    }
    // Line by line, whatever the lines are.
    void readLines(FILE* file) {
        Kelda::LineBuffer buffer{};
        while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), file) != nullptr) {
            prepareLine(buffer, file);
            if (auto const line = withoutBlanks(buffer.data()); !line.empty())
                tell("line: {}", withUsualWords(line));
        }
    }

    // --- what the parser asks its flavours ---

    Rook::String evaluateAliasValue(Rook::String const& token) override {
        if (token.find("%") == Rook::String::npos)
            return token;
        if (auto const value = lookupAlias(token))
            return *value;
        reportAndTrace("No such alias defined: '" + token + "'");
        return {};
    }
    std::optional<Rook::String> excuseMissingType(std::ostringstream& /*message*/,
                                                  char const* type) const override {
        return Rook::String(type);
    }
    void maybeThrow(Rook::String const& message) const override {
        MountFileInfo::maybeThrow(message);
        tell("fault: {}", withUsualWordsInQuote(std::string(message.view())));
    }
    // The text is handed on with its blanks; what it is handed on with in front does not count.
    void recordCondition(Kelda::LineBuffer const& line, bool blocking) override {
        std::string_view const text(line.data());
        tell("condition{}:{}", blocking ? " blocker" : "", text.substr(text.find(':') + 1));
        MountFileInfo::recordCondition(line, blocking);
    }

  private:
    // A folder that there never is.
    static constexpr char const* noFolder = "/dev/null/none";

    template <class... Values>
    void tell(fmt::format_string<Values const&...> format, Values const&... values) const {
        story_.push_back(fmt::format(format, values...));
    }

    // --- what the parser tells ---

    void preinitLine(Kelda::PreinitLine const& line, Places /*places*/) override {
        tell("{}path {} has the type {} and the attribute {}", line.isConfig ? "config " : "",
             line.path, line.type, static_cast<unsigned>(line.attr));
    }
    void mountLine(Kelda::MountLine const& line, Places /*places*/) override {
        tell("mount {} ({}) of the type {} with the flags {}{}", line.writtenPath, line.path,
             line.writtenType, line.flags, line.isConditional ? ", conditional" : "");
    }
    void recordChanged(Rook::String const& path, Kelda::MountArgs const* /*before*/,
                       Kelda::MountArgs const& after, Places /*places*/) override {
        tell("record of {}: {} {:#x}", path, after.type, after.flags.bits());
    }
    void tokenBound(Rook::String const& token, Rook::String const& value,
                    Places /*places*/) override {
        tell("token {} is {}", token, value);
    }
    void aliasDefined(Rook::String const& name, std::string_view expression,
                      Rook::String const& value, Places /*places*/) override {
        tell("alias {} = {} is {}", name, expression, value);
    }
    void aliasUsed(Rook::String const& name, Rook::String const& value, Places) override {
        tell("alias {} is looked up: {}", name, value);
    }
    void keywordLine(std::string_view keyword, std::string_view line, Places /*places*/) override {
        tell("keyword {} with {}", keyword, line.substr(keyword.size()));
    }
    void groupOpened(std::string_view name, unsigned char priority, Places /*places*/) override {
        tell("group {} of priority {}", name, static_cast<unsigned>(priority));
    }
    void included(std::string_view pattern, int files, Places /*places*/) override {
        tell("include of {}: {}", pattern, files);
    }

    // --- what is left in the parser ---

    template <class Map, class Text>
    void tellSorted(std::string_view what, Map const& map, Text const& text) const {
        Story entries;
        for (auto const& entry : map)
            entries.push_back(text(entry));
        std::ranges::sort(entries);
        tell("{}: {}", what, fmt::format("{}", fmt::join(entries, "; ")));
    }
    void tellPreinits() const {
        tellSorted("types", pathTypeMap_, [](auto const& entry) {
            return fmt::format("{} {}", entry.first, entry.second);
        });
        tellSorted("attributes", pathAttrMap_, [](auto const& entry) {
            return fmt::format("{} {}", entry.first, static_cast<unsigned>(entry.second));
        });
        tellSorted("config paths", pathConfigInfoMap_,
                   [](auto const& entry) { return std::string(entry.first.view()); });
    }
    void tellProfile() const {
        tell("root flags {}, connection flags {}, sub-agents {}", rootFlags_, connectionFlags_,
             vecToString(subAgents_));
        tell("active mount {}, active name {}, condition {}, no default group {}", activeMountSeen_,
             matchActiveNameSeen_, conditionSeen_, noDefaultMountGroup_);
        tellSorted("groups", mountGroupPathsMap_, [](auto const& entry) {
            return fmt::format("{} {}", entry.first, vecToString(entry.second));
        });
    }

    Story& story_;
};

// --- comparing ---

using Reading = void (Reader::*)(FILE*);

Story storyOf(std::string_view text, Reading reading) {
    Story story;
    TextFile const file(text);
    Reader reader(story);
    (reader.*reading)(file.get());
    return story;
}

std::string entryOf(Story const& story, std::size_t at) {
    return at < story.size() ? story[at] : "nothing more";
}

std::optional<std::string> differenceOf(Story const& before, Story const& after) {
    for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i)
        if (entryOf(before, i) != entryOf(after, i))
            return fmt::format("before: {}, after: {}", entryOf(before, i), entryOf(after, i));
    return std::nullopt;
}

} // namespace

std::optional<std::string> differenceInMeaning(std::string_view before, std::string_view after,
                                               FileFamily family) {
    std::vector<Reading> readings{&Reader::readLines};
    if (family == FileFamily::preinit)
        readings.push_back(&Reader::readPreinit);
    else
        readings.insert(readings.end(),
                        {&Reader::readProfile, &Reader::readIncluded, &Reader::readDefaultGroup});
    for (auto const& reading : readings)
        if (auto difference = differenceOf(storyOf(before, reading), storyOf(after, reading)))
            return difference;
    return std::nullopt;
}

} // namespace KeldaTool
