// The attributes of preinit paths, by token path.
#include <KeldaBase/MountFileInfo.h>

#include <cstring>

#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"

namespace Kelda {

namespace {

struct AttributeText {
    PreinitAttr attr;
    char const* text;
};

constexpr AttributeText attributeTexts[] = {
    {PreinitAttr::createOnMount, "createOnMount"},
    {PreinitAttr::createOnStandby, "createOnStandby"},
};

// Whether a token, in any case, begins one of the two cell tokens.
bool isCellToken(std::string_view token) {
    for (std::string_view const cellToken : {"%cellId", "%peerCellId"})
        if (token.size() <= cellToken.size() &&
            strncasecmp(token.data(), cellToken.data(), token.size()) == 0)
            return true;
    return false;
}

bool holdsOnlyCellTokens(char const* path) {
    for (char const* at = std::strchr(path, '%'); at != nullptr; at = std::strchr(at, '%')) {
        auto const length = tokenLength(at);
        if (!isCellToken({at, length}))
            return false;
        at += length;
    }
    return true;
}

} // namespace

PreinitAttr MountFileInfo::preinitAttrFromString(char const* text) const {
    if (text == nullptr)
        return PreinitAttr::none;
    for (auto const& row : attributeTexts)
        if (equalsIgnoringCase(text, row.text))
            return row.attr;
    reportAndTrace(fmt::format("invalid attribute: {}", text));
    return PreinitAttr::invalid;
}

char const* MountFileInfo::preinitAttrToString(PreinitAttr attr) const {
    if (attr == PreinitAttr::none)
        return "";
    for (auto const& row : attributeTexts)
        if (attr == row.attr)
            return row.text;
    reportAndTrace("Invalid preinit path attr");
    return nullptr;
}

PreinitAttr MountFileInfo::validateAndRecordPathAttr(char const* tokenPath, char const* attrText) {
    MFI_TRACE(8, "( tokenPath : {}, attr : {} )", tokenPath, attrText == nullptr ? "" : attrText);
    auto const attr = preinitAttrFromString(attrText);
    auto const [entry, added] = pathAttrMap_.try_emplace(tokenPath, attr);
    if (!added && entry->second != attr) {
        reportRedefinition(tokenPath, entry->second, attr);
        return PreinitAttr::invalid;
    }
    if (attr == PreinitAttr::createOnMount || holdsOnlyCellTokens(tokenPath))
        return attr;
    reportAndTrace(fmt::format("non-cell tokens in non-createOnMount path: {}", tokenPath));
    return PreinitAttr::invalid;
}

void MountFileInfo::reportRedefinition(char const* path, PreinitAttr oldAttr,
                                       PreinitAttr newAttr) const {
    auto const textOf = [this](PreinitAttr attr) {
        char const* const text = preinitAttrToString(attr);
        return text == nullptr ? "" : text;
    };
    // An attribute without a text is reported while the message is put together.
    std::string_view const oldText = textOf(oldAttr);
    std::string_view const newText = textOf(newAttr);
    reportAndTrace(fmt::format("Redefining attribute for {}\nOld Attribute: {}\nNew Attribute: {}",
                               path, oldText, newText));
}

void MountFileInfo::pathAttrMapIs(Rook::String path, PreinitAttr attr) {
    pathAttrMap_.insert_or_assign(std::move(path), attr);
}

Rook::String MountFileInfo::getPreinitAttr(Rook::String path) {
    MFI_TRACE(7, "( path : {} )", path);
    doInit();
    auto const found = pathAttrMap_.find(path);
    if (path.find("*") != Rook::String::npos)
        reportAndTrace("getPreinitAttr: attributes are indexed by plain paths, including tokens, "
                       "not wildcards");
    else if (found != pathAttrMap_.end()) {
        char const* const text = preinitAttrToString(found->second);
        return text == nullptr ? "" : text;
    } else
        reportAndTrace(fmtNotFoundError("getPreinitAttr: no attr info for path " + path, false));
    MFI_TRACE(3, "Returning empty string");
    return {};
}

StringList MountFileInfo::rawPreinitPaths() {
    MFI_TRACE(7, "");
    doInit();
    StringList paths;
    paths.reserve(pathAttrMap_.size());
    for (auto const& entry : pathAttrMap_)
        paths.push_back(entry.first);
    return paths;
}

} // namespace Kelda
