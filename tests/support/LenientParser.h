// A lenient flavour for tests: reads every profile, records every fault and goes on. Tokens of an
// agent name and %agentString stand for "*".
#pragma once

#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <KeldaBase/AgentMountFileInfo.h>
#include <KeldaBase/MountFileInfo.h>

#include "TemporaryDirectory.h"

namespace support {

// The messages of all faults, in order.
inline std::vector<std::string> messages(Kelda::MountFileInfo const& parser) {
    std::vector<std::string> texts;
    for (auto const& exception : parser.exceptions())
        texts.emplace_back(exception.msg.view());
    return texts;
}

template <class Strings>
std::vector<std::string> strings(Strings const& list) {
    std::vector<std::string> texts;
    for (auto const& text : list)
        texts.emplace_back(std::string_view(text));
    return texts;
}

template <std::size_t size>
void fill(std::array<char, size>& buffer, std::string_view text) {
    if (text.size() >= size)
        throw std::length_error("text does not fit the buffer");
    buffer.fill('\0');
    text.copy(buffer.data(), text.size());
}

inline Kelda::LineBuffer lineOf(std::string_view text) {
    Kelda::LineBuffer buffer;
    fill(buffer, text);
    return buffer;
}

// An open stream that closes itself.
using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;
inline Stream streamOf(std::string_view text) {
    Stream stream(std::tmpfile(), &std::fclose);
    std::fwrite(text.data(), 1, text.size(), stream.get());
    std::rewind(stream.get());
    return stream;
}

class LenientParser : public Kelda::MountFileInfo {
  public:
    explicit LenientParser(std::string const& preinitDir = "/nonexistent/preinit",
                           std::string const& profileDir = "/nonexistent/profiles",
                           bool dontMergeFlags = false)
        : MountFileInfo(dontMergeFlags, preinitDir, profileDir, "DefaultMountGroup") {}

    void doInit() override {
        if (isInitialized_)
            return;
        doLoadPreinits();
        auto const search = static_cast<FileLoader>(&MountFileInfo::profileSearcher);
        mapDir(keldaMountProfileDir_, search, nullptr, &profileFileCheck_);
        if (!extraProfileDir_.empty())
            mapDir(extraProfileDir_, search, nullptr, &profileFileCheck_);
        loadDefaultGroup(defaultGroupName_);
        loadDefaultGroup(defaultGroupName_ + "PerAgent");
        allProfilesLoaded_ = true;
        handleDoInit();
    }

    int profileSearcher(FILE* file) override {
        Kelda::LineBuffer buffer{};
        char const* const name = getAgentNameFromProfile(file, buffer);
        if (name == nullptr)
            return 0;
        activeMountSeen_ = matchActiveNameSeen_ = conditionSeen_ = false;
        bindTokensToStar(name);
        perFileAliasesPushBack("%agentString", "*");
        return profileLoader(file);
    }

    Rook::String evaluateAliasValue(Rook::String const& token) override {
        if (token.find("%") == Rook::String::npos)
            return token;
        if (auto const value = lookupAlias(token))
            return *value;
        reportAndTrace("No such alias defined: '" + token + "'");
        return {};
    }

    // --- what a test does with it ---

    // Makes a file the current one, as a loader's caller would, and closes it again.
    void openFile(std::string_view name, int line = 0) { currentFiles_.push_back({name, line}); }
    void closeFile() { currentFiles_.pop_back(); }

    // Runs the loader over a text as if it were the file `name`.
    int loadProfile(std::string_view text, std::string_view name = "Profile") {
        return load(&MountFileInfo::profileLoader, text, name);
    }
    int loadPreinit(std::string_view text, std::string_view name = "Preinit") {
        return load(&MountFileInfo::preinitLoader, text, name);
    }
    int load(FileLoader loader, std::string_view text, std::string_view name) {
        auto const stream = streamOf(text);
        openFile(name);
        int const result = (this->*loader)(stream.get());
        closeFile();
        return result;
    }

    // Gives each of these wildcard paths a type, so that profiles may mount it.
    void declare(std::vector<std::string> const& paths, std::string const& type = "T") {
        for (auto const& path : paths)
            pathTypeMapIs(path, type);
    }

    // Members that tests look at or set.
    auto& currentFiles() { return currentFiles_; }
    auto& intermediatePaths() { return intermediatePaths_; }
    std::string currentMountGroup() const { return std::string(currentMountGroup_.view()); }
    bool inConditionalGroup() const { return inConditionalGroup_; }
    bool conditionSeen() const { return conditionSeen_; }
    bool inInclude() const { return inInclude_; }
    void inIncludeIs(bool on) { inInclude_ = on; }
    void allProfilesLoadedIs(bool on) { allProfilesLoaded_ = on; }
    void initializedIs(bool on) { isInitialized_ = on; }
    void agentKeyIs(Rook::String const& key) { agentKey_ = key; }
    void agentStringIs(Rook::String const& agent) { agentString_ = agent; }
    void agentStringsAre(std::vector<Rook::String> agents) { agentStrings_ = std::move(agents); }
    void activeMountSeenIs(bool on) { activeMountSeen_ = on; }
    void rootFlagsAre(Rook::String const& flags) { rootFlags_ = flags; }
    void exclusionRegexIs(std::string const& text) { exclusionRegex_ = std::regex(text); }
    Kelda::DynFileLoadCheck& profileFileCheck() { return profileFileCheck_; }
    Kelda::DynFileLoadCheck& preinitFileCheck() { return preinitFileCheck_; }

  private:
    void bindTokensToStar(Rook::String const& name) {
        auto pieces = tokenize(name, "-%");
        agentKey_ = pieces.empty() ? Rook::String() : pieces.front();
        for (std::size_t i = 1; i < pieces.size(); ++i) {
            auto token = "%" + pieces[i];
            if (i + 1 == pieces.size() && token.endsWith("$"))
                token = token.substr(0, token.size() - 1);
            recordAgentNameTokenAlias(token, "*", false);
        }
    }

    void loadDefaultGroup(Rook::String const& name) {
        currentMountGroup_ = "default";
        perFileAliasesPushBack("%agentString", "*");
        auto const load = &MountFileInfo::profileLoader;
        if (extraProfileDir_.empty() || mapDir(extraProfileDir_, load, name.c_str(), nullptr) == 0)
            mapDir(keldaMountProfileDir_, load, name.c_str(), nullptr);
        resetFileContext();
    }
};

// An agent-side parser that records faults and goes on instead of throwing.
class LenientAgent : public Kelda::AgentMountFileInfo {
  public:
    LenientAgent(std::string const& preinitDir, std::string const& profileDir)
        : AgentMountFileInfo(false, preinitDir, profileDir, true, "DefaultMountGroup") {}
    ~LenientAgent() override = default;
    void maybeThrow(Rook::String const& message) const override {
        MountFileInfo::maybeThrow(message);
    }
};

} // namespace support
