#include "AskedPath.h"

#include <algorithm>

#include "WrittenLine.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {
namespace {

// Takes the first name, and the slash behind it, off a path.
std::string_view takeName(std::string_view& path) {
    auto const slash = path.find('/');
    auto const name = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    return name;
}

std::vector<std::string_view> namesOf(std::string_view path) {
    std::vector<std::string_view> names;
    for (;;) {
        auto const slash = path.find('/');
        names.push_back(path.substr(0, slash));
        if (slash == std::string_view::npos)
            return names;
        path.remove_prefix(slash + 1);
    }
}

std::string withoutSlashAtEnd(std::string text) {
    if (text.ends_with('/'))
        text.pop_back();
    return text;
}

} // namespace

std::size_t typingErrors(std::string_view a, std::string_view b) {
    constexpr std::size_t shortText = 3;
    constexpr std::size_t longText = 5;
    constexpr std::size_t longest = 64;
    auto const [shorter, longer] = std::minmax({a.size(), b.size()});
    std::size_t const allowed = longer >= longText ? 2 : longer >= shortText ? 1 : 0;
    if (longer > longest || longer - shorter > allowed || equalIgnoringCase(a, b))
        return 0;
    auto const errors = editDistance(a, b);
    return errors <= allowed ? errors : 0;
}

AskedPath::AskedPath(std::string_view path)
    : text_(withoutSlashAtEnd(wildcard(path))), names_(namesOf(text_)) {
    for (auto const name : names_)
        patterns_.emplace_back(name);
}

bool AskedPath::nameMatches(std::size_t index, std::string_view name) const {
    bool const areLiteral =
        patterns_[index].isLiteral() && name.find('*') == std::string_view::npos;
    return names_[index] == name || (!areLiteral && patterns_[index].matches(name));
}

bool AskedPath::matches(std::string_view path) const {
    if (path == text_)
        return true;
    for (std::size_t i = 0; i < names_.size(); ++i) {
        bool const isLast = path.find('/') == std::string_view::npos;
        if (isLast != (i + 1 == names_.size()) || !nameMatches(i, takeName(path)))
            return false;
    }
    return true;
}

std::string_view AskedPath::ancestorIn(std::string_view path) const {
    auto rest = path;
    for (std::size_t i = 0; i < names_.size(); ++i)
        if (rest.find('/') == std::string_view::npos || !nameMatches(i, takeName(rest)))
            return {};
    return path.substr(0, path.size() - rest.size() - 1);
}

bool AskedPath::sharesFirstName(std::string_view path) const {
    return nameMatches(0, path.substr(0, path.find('/')));
}

std::optional<AskedPath::Difference> AskedPath::differenceTo(std::string_view path) const {
    Difference difference;
    std::size_t index = 0;
    while (!path.empty()) {
        auto const name = takeName(path);
        if (name.empty()) {
            difference.slashes = true;
            continue;
        }
        if (index == names_.size())
            return std::nullopt;
        auto const asked = names_[index];
        if (nameMatches(index++, name))
            continue;
        if (equalIgnoringCase(asked, name)) {
            difference.letterCase = true;
            continue;
        }
        if (difference.hasOtherName)
            return std::nullopt;
        difference.hasOtherName = true;
        difference.asked = asked;
        difference.other = name;
    }
    if (index != names_.size())
        return std::nullopt;
    return difference;
}

} // namespace KeldaDatabase
