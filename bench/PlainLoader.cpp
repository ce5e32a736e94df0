#include "PlainLoader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

#include <fnmatch.h>

#include "PlainText.h"

namespace bench {

namespace {

constexpr std::string_view flagLetters = "rwcitfSDdOApKLnNECey";
constexpr std::uint32_t instantiating = 0x80000;

// One line with those that continue it, without its comment and without blanks.
bool nextLine(std::ifstream& file, std::string& line) {
    if (!std::getline(file, line))
        return false;
    std::string more;
    while (!line.empty() && line.back() == '\\' && std::getline(file, more)) {
        line.pop_back();
        line += more;
    }
    if (auto const comment = line.find('#'); comment != std::string::npos)
        line.erase(comment);
    std::erase_if(line, [](unsigned char c) { return std::isspace(c) != 0; });
    return true;
}

std::vector<std::string> namesIn(std::string const& directory) {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(directory)) {
        auto name = entry.path().filename().string();
        if (name.front() != '.' && name.back() != '~')
            names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

PlainLoader::PlainLoader(std::string preinitDir, std::string profileDir, Strings aliases)
    : preinitDir_(std::move(preinitDir)), profileDir_(std::move(profileDir)),
      aliases_(std::move(aliases)) {}

void PlainLoader::loadEverything() {
    loadPreinits();
    profileNames_ = namesIn(profileDir_);
    for (auto const& name : profileNames_) {
        std::ifstream file(profileDir_ + "/" + name);
        std::string agentName;
        if (readAgentName(file, agentName) && bindTokens(agentName, "")) {
            fileAliases_["%agentstring"] = "*";
            loadProfile(file, name);
        }
    }
    agentName_.clear();
    loadDefaultGroups("*");
    finishLoading();
}

void PlainLoader::loadAgent(std::string const& agentString) {
    loadPreinits();
    profileNames_ = namesIn(profileDir_);
    for (auto const& name : profileNames_) {
        std::ifstream file(profileDir_ + "/" + name);
        std::string agentName;
        if (readAgentName(file, agentName) && bindTokens(agentName, agentString)) {
            fileAliases_["%agentstring"] = agentString;
            loadProfile(file, name);
            profilesOfAgent_[agentString].push_back(name);
        }
    }
    if (!noDefaultGroup_)
        loadDefaultGroups(agentString);
    finishLoading();
    for (auto& [group, paths] : groups_) {
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    }
}

void PlainLoader::finishLoading() {
    for (auto& [name, paths] : files_)
        std::sort(paths.begin(), paths.end());
}

void PlainLoader::loadPreinits() {
    for (auto const& name : namesIn(preinitDir_))
        loadPreinitFile(preinitDir_ + "/" + name);
}

void PlainLoader::loadPreinitFile(std::string const& name) {
    std::ifstream file(name);
    std::string line;
    while (nextLine(file, line))
        if (!line.empty())
            preinitLine(line);
}

void PlainLoader::preinitLine(std::string line) {
    bool const isConfig = beginsIgnoringCase(line, "CONFIG:");
    if (isConfig)
        line.erase(0, std::string_view("CONFIG:").size());
    auto const comma = line.find(',');
    if (comma == std::string::npos) {
        faults_.push_back("preinit syntax error: " + line);
        return;
    }
    auto const second = line.find(',', comma + 1);
    auto const path = withCellPaths(withoutEndingSlash(line.substr(0, comma)));
    auto const type = line.substr(comma + 1, second == std::string::npos ? std::string::npos
                                                                         : second - comma - 1);
    auto attribute = Attribute::none;
    if (second != std::string::npos) {
        auto const text = line.substr(second + 1);
        if (equalsIgnoringCase(text, "createOnMount"))
            attribute = Attribute::createOnMount;
        else if (equalsIgnoringCase(text, "createOnStandby"))
            attribute = Attribute::createOnStandby;
        else
            faults_.push_back("invalid attribute: " + text);
    }
    if (attributes_.emplace(path, attribute).first->second != attribute)
        faults_.push_back("redefining attribute for " + path);
    if (isConfig)
        configPaths_[path] = {true, true};
    auto const wildcard = wildcardOf(path);
    types_[wildcard] = type;
    if (attribute != Attribute::createOnMount)
        typeParents(wildcard);
}

void PlainLoader::typeParents(std::string path) {
    for (std::size_t slash; (slash = path.rfind('/')) != std::string::npos;) {
        path.erase(slash);
        if (!types_.emplace(path, "Fen::Dir").second)
            return;
    }
}

void PlainLoader::loadDefaultGroups(std::string const& agent) {
    bool const everything = agent == "*";
    loadDefaultGroup("DefaultMountGroup", agent);
    if (everything || subAgents_.empty())
        loadDefaultGroup("DefaultMountGroupPerAgent", agent);
    else
        for (auto const& subAgent : std::vector(subAgents_))
            loadDefaultGroup("DefaultMountGroupPerAgent", subAgent);
}

void PlainLoader::loadDefaultGroup(std::string const& name, std::string const& agent) {
    std::ifstream file(profileDir_ + "/" + name);
    if (!file)
        return;
    fileAliases_["%agentstring"] = agent;
    group_ = "default";
    loadProfile(file, name);
}

// The agent name of the first line that is neither blank nor a comment; false when it has none.
bool PlainLoader::readAgentName(std::ifstream& file, std::string& name) {
    constexpr std::string_view keyword = "agentname:";
    std::string line;
    while (std::getline(file, line)) {
        if (!line.empty() && line.front() == '#')
            continue;
        std::erase_if(line, [](unsigned char c) { return std::isspace(c) != 0; });
        if (line.empty())
            continue;
        if (!beginsIgnoringCase(line, keyword))
            return false;
        name = line.substr(keyword.size());
        return true;
    }
    return false;
}

// Whether the agent's profile has this name; makes its tokens aliases. Without an agent string
// every profile fits and tokens stand for "*".
bool PlainLoader::bindTokens(std::string const& name, std::string const& agentString) {
    fileAliases_.clear();
    auto tokens = split(name, "-%");
    auto const prefix = tokens.front();
    bool const hasTokens = tokens.size() > 1;
    if (!agentString.empty()) {
        bool const fits =
            hasTokens ? agentString.starts_with(prefix) && (agentString.size() == prefix.size() ||
                                                            agentString[prefix.size()] == '-')
                      : agentString == name;
        if (!fits)
            return false;
    }
    agentName_ = prefix;
    bool const consuming = hasTokens && tokens.back().ends_with('$');
    if (consuming)
        tokens.back().pop_back();
    auto const values = agentString.size() > prefix.size()
                            ? split(agentString.substr(prefix.size() + 1), "-")
                            : std::vector<std::string>();
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        auto value = i <= values.size() ? values[i - 1] : std::string();
        if (consuming && i + 1 == tokens.size())
            for (auto more = i; more < values.size(); ++more)
                value += "-" + values[more];
        fileAliases_[lowerCase("%" + tokens[i])] = agentString.empty() ? "*" : value;
    }
    return true;
}

void PlainLoader::loadProfile(std::ifstream& file, std::string const& name) {
    std::string line;
    while (nextLine(file, line))
        if (!line.empty())
            profileLine(line, name);
    if (inInclude_)
        return;
    profilesOfAgent_[agentName_].push_back(name);
    group_.clear();
    fileAliases_.clear();
}

void PlainLoader::profileLine(std::string const& line, std::string const& file) {
    auto const after = [&](std::string_view keyword) { return line.substr(keyword.size()); };
    auto const begins = [&](std::string_view keyword) { return beginsIgnoringCase(line, keyword); };
    bool const isPath =
        std::count(line.begin(), line.end(), ',') >= 2 && line.find('=') == std::string::npos;
    if (isPath) {
        pathLine(line, file);
    } else if (equalsIgnoringCase(line, "activeMount")) {
        activeMount_ = true;
    } else if (inInclude_) {
        faults_.push_back("syntax error in included file: " + line);
    } else if (begins("alias:") && line.find('=') != std::string::npos) {
        auto const definition = after("alias:");
        auto const equals = definition.find('=');
        fileAliases_[lowerCase(definition.substr(0, equals))] =
            evaluate(definition.substr(equals + 1));
    } else if (begins("MountGroup:")) {
        auto const group = after("MountGroup:");
        group_ = group.substr(0, group.find(','));
    } else if (equalsIgnoringCase(line, "noDefaultMountGroup")) {
        noDefaultGroup_ = true;
    } else if (equalsIgnoringCase(line, "matchActiveName")) {
        matchActiveName_ = true;
    } else if (begins("subAgent:")) {
        subAgents_.push_back(expandAliases(after("subAgent:")));
    } else if (begins("Condition:") || begins("ConditionBlocker:")) {
        // Conditions say nothing about paths or flags.
    } else if (begins("rootFlags:")) {
        rootFlags_ = after("rootFlags:");
    } else if (begins("connectionFlags:")) {
        connectionFlags_ = after("connectionFlags:");
    } else if (begins("Include:")) {
        include(after("Include:"), file);
    } else {
        faults_.push_back("syntax error: " + line);
    }
}

void PlainLoader::include(std::string const& pattern, std::string const& file) {
    inInclude_ = true;
    for (auto const& name : namesMatching(pattern)) {
        includes_[file].push_back(name);
        std::ifstream included(profileDir_ + "/" + name);
        loadProfile(included, name);
    }
    inInclude_ = false;
}

std::vector<std::string> PlainLoader::namesMatching(std::string const& pattern) {
    std::vector<std::string> matches;
    if (pattern.find_first_of("?[*") == std::string::npos) {
        if (std::binary_search(profileNames_.begin(), profileNames_.end(), pattern))
            matches.push_back(pattern);
        else
            faults_.push_back("no profile to include: " + pattern);
        return matches;
    }
    for (auto const& name : profileNames_)
        if (fnmatch(pattern.c_str(), name.c_str(), 0) == 0)
            matches.push_back(name);
    return matches;
}

void PlainLoader::pathLine(std::string const& line, std::string const& file) {
    auto const comma = line.find(',');
    auto const second = line.find(',', comma + 1);
    auto const written = withCellPaths(withoutEndingSlash(line.substr(0, comma)));
    auto const type = types_.find(wildcardOf(written));
    if (type == types_.end()) {
        faults_.push_back("no type for " + written);
        return;
    }
    auto const path = expandAliases(written);
    record(path, type->second, line.substr(second + 1));
    groups_[agentName_ + "::" + group_].push_back(path);
    files_[file].push_back(path);
}

void PlainLoader::record(std::string const& path, std::string const& type,
                         std::string const& flags) {
    std::uint32_t bits = 0;
    for (char const letter : flags) {
        auto const position = flagLetters.find(letter);
        if (position == std::string_view::npos) {
            faults_.push_back("invalid flags " + flags + " in path " + path);
            return;
        }
        bits |= std::uint32_t{1} << position;
        if (letter == 'r' || letter == 'w')
            bits |= instantiating;
    }
    auto const [found, added] = records_.try_emplace(path, Record{type, bits, true});
    if (added)
        return;
    if (found->second.type != type)
        faults_.push_back("types don't match for path " + path);
    else
        found->second.flags |= bits;
}

std::string PlainLoader::expandAliases(std::string const& text) {
    std::string expanded;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '%') {
            expanded += text[at++];
            continue;
        }
        auto const end = tokenEnd(text, at);
        expanded += valueOf(text.substr(at, end - at));
        at = end;
    }
    return expanded;
}

std::string PlainLoader::valueOf(std::string const& operand) {
    if (operand.find('%') == std::string::npos)
        return operand;
    auto const key = lowerCase(operand);
    if (auto const found = fileAliases_.find(key); found != fileAliases_.end())
        return found->second;
    if (auto const found = aliases_.find(key); found != aliases_.end())
        return found->second;
    faults_.push_back("no such alias: " + operand);
    return {};
}

std::string PlainLoader::evaluate(std::string const& expression) {
    if (expression.find(',') != std::string::npos) {
        std::string joined;
        for (auto const& piece : split(expression, ",")) {
            auto const value = valueOf(piece);
            joined += joined.empty() || value.empty() ? value : "-" + value;
        }
        return joined;
    }
    if (auto const tilde = expression.find('~'); tilde != std::string::npos) {
        auto const value = valueOf(expression.substr(0, tilde));
        auto const part = valueOf(expression.substr(tilde + 1));
        return value.find(part) != std::string::npos ? value : std::string();
    }
    auto const question = expression.find('?');
    auto const colon = expression.find(':', question == std::string::npos ? 0 : question);
    if (question == std::string::npos)
        return valueOf(expression);
    if (colon == std::string::npos) {
        faults_.push_back("no ':' after '?' in " + expression);
        return {};
    }
    bool const condition = !valueOf(expression.substr(0, question)).empty();
    return valueOf(condition ? expression.substr(question + 1, colon - question - 1)
                             : expression.substr(colon + 1));
}

} // namespace bench
