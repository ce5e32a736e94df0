#include "WrittenLine.h"

#include <algorithm>
#include <filesystem>

namespace KeldaDatabase {
namespace {

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isTokenCharacter(char c) {
    return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// Writes a short form out wherever it stands, in any case.
void writeOut(std::string& path, std::string_view shortForm, std::string_view longForm) {
    auto const end = shortForm.size();
    for (std::size_t at = 0; at + end <= path.size(); ++at)
        if (lowerCase(std::string_view(path).substr(at, end)) == shortForm) {
            path.replace(at, end, longForm);
            at += longForm.size() - 1;
        }
}

std::string toldPath(std::string_view written) {
    std::string path(written.ends_with('/') ? written.substr(0, written.size() - 1) : written);
    if (path.find('%') != std::string::npos) {
        writeOut(path, "%cellpath", "cell/%cellId");
        writeOut(path, "%peercellpath", "cell/%peerCellId");
    }
    return path;
}

} // namespace

LogicalLine logicalLine(SourceText const& text, std::int32_t editorLine) {
    std::string joined(text.line(editorLine));
    auto next = editorLine + 1;
    bool const isComment = joined.starts_with('#');
    for (; !isComment && joined.ends_with('\\') && next <= text.lines(); ++next) {
        joined.pop_back();
        joined = std::string(joined.empty() ? joined : std::string(trimmed(joined)) + " ") +
                 std::string(trimmed(text.line(next)));
    }
    return {std::string(trimmed(std::string_view(joined).substr(0, joined.find('#')))), next};
}

std::string withoutBlanks(std::string_view text) {
    std::string visible;
    std::ranges::copy_if(text, std::back_inserter(visible), [](char c) { return !isBlank(c); });
    return visible;
}

std::optional<PathFields> pathFields(std::string_view line) {
    auto const text = withoutBlanks(line);
    auto const first = text.find(',');
    auto const second = first == std::string::npos ? first : text.find(',', first + 1);
    if (second == std::string::npos || text.find('=') != std::string::npos)
        return std::nullopt;
    return PathFields{toldPath(std::string_view(text).substr(0, first)),
                      text.substr(first + 1, second - first - 1), text.substr(second + 1)};
}

std::optional<PathFields> preinitFields(std::string_view line) {
    auto text = withoutBlanks(line);
    constexpr std::string_view config = "config:";
    if (lowerCase(text).starts_with(config))
        text.erase(0, config.size());
    auto const first = text.find(',');
    if (first == std::string::npos)
        return std::nullopt;
    auto const second = std::min(text.find(',', first + 1), text.size());
    return PathFields{toldPath(std::string_view(text).substr(0, first)),
                      text.substr(first + 1, second - first - 1),
                      text.substr(std::min(second + 1, text.size()))};
}

std::vector<std::string> tokensIn(std::string_view path) {
    std::vector<std::string> tokens;
    for (auto at = path.find('%'); at != std::string_view::npos; at = path.find('%', at + 1)) {
        auto end = at + 1;
        while (end < path.size() && isTokenCharacter(path[end]))
            ++end;
        tokens.emplace_back(path.substr(at, end - at));
    }
    return tokens;
}

std::string wildcard(std::string_view path) {
    std::string result;
    for (std::size_t at = 0; at < path.size(); ++at) {
        result += path[at] == '%' ? '*' : path[at];
        if (path[at] == '%')
            while (at + 1 < path.size() && isTokenCharacter(path[at + 1]))
                ++at;
    }
    return result;
}

SourceText const& PlaceReader::textOf(std::string const& file) {
    static SourceText const nothing{std::string()};
    std::error_code error;
    return std::filesystem::is_regular_file(file, error) ? texts_.of(file) : nothing;
}

StoryPlace PlaceReader::told(std::string const& file, std::int32_t parserLine) {
    auto const& text = textOf(file);
    auto const line = text.editorLine(parserLine);
    return {file, line, {}, logicalLine(text, line).text};
}

StoryPlace PlaceReader::told(Place const& place) {
    if (!place.isKnown())
        return {};
    auto told = this->told(device_.pathOf(place), place.line);
    if (place.include != none) {
        auto const by = this->told(device_.includes[place.include].place);
        told.from.push_back({by.file, by.line});
    }
    return told;
}

} // namespace KeldaDatabase
