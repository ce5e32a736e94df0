// JSON documents: UTF-8 whatever the bytes were, members in the order in which they are written.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace KeldaTool {

using Json = nlohmann::ordered_json;

/// A string; bytes that are not UTF-8 are replaced.
Json jsonText(std::string_view bytes);
/// An array of strings.
Json jsonTexts(std::vector<std::string> const& texts);
/// An object with sorted keys. Keys that only differ in replaced bytes share one member: of texts
/// the last one, of lists all elements.
Json jsonObject(std::map<std::string, std::string> const& members);
Json jsonObject(std::map<std::string, std::vector<std::string>> const& members);

/// The document as text, indented, with a newline at its end.
std::string documentText(Json const& document);

} // namespace KeldaTool
