#include "JsonDocument.h"

#include "Text.h"

namespace KeldaTool {

Json jsonText(std::string_view bytes) {
    return replaceNonUtf8(bytes);
}

Json jsonTexts(std::vector<std::string> const& texts) {
    auto array = Json::array();
    for (auto const& text : texts)
        array.push_back(jsonText(text));
    return array;
}

// Replacing bytes can change the order of keys, so they are sorted after it.

Json jsonObject(std::map<std::string, std::string> const& members) {
    std::map<std::string, Json> sorted;
    for (auto const& [key, text] : members)
        sorted[replaceNonUtf8(key)] = jsonText(text);
    return Json(sorted);
}

Json jsonObject(std::map<std::string, std::vector<std::string>> const& members) {
    std::map<std::string, Json> sorted;
    for (auto const& [key, texts] : members) {
        auto& array = sorted.try_emplace(replaceNonUtf8(key), Json::array()).first->second;
        for (auto const& text : texts)
            array.push_back(jsonText(text));
    }
    return Json(sorted);
}

std::string documentText(Json const& document) {
    return document.dump(2) + "\n";
}

} // namespace KeldaTool
