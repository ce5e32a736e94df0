// Alias definitions: the "alias:" line, the two tables and the lookup.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include <Fen/Assert.h>
#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"

namespace Kelda {

namespace {

constexpr std::size_t aliasKeyword = std::string_view("alias:").size();

// "%" and then letters, digits and "_", the first neither "_" nor a digit.
bool isAliasKey(std::string_view key) {
    if (key.size() < 2 || key[0] != '%')
        return false;
    if (key[1] == '_' || std::isdigit(static_cast<unsigned char>(key[1])) != 0)
        return false;
    return std::all_of(key.begin() + 1, key.end(), isTokenChar);
}

} // namespace

void MountFileInfo::handleAliasLine(LineBuffer& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    char* const key = line.data() + aliasKeyword;
    char* const eq = std::strchr(key, '=');
    FEN_ASSERT(eq != nullptr);
    *eq = '\0';
    if (!isAliasKey(key))
        reportAndTrace(fmt::format("syntax error: '{}': lhs must specify key name matched by "
                                   "'%[a-zA-Z0-9_].*' with no leading '_' or digit after the %.",
                                   key));
    recordAlias(key, eq + 1);
}

void MountFileInfo::recordAlias(char const* key, char* rhs) {
    auto const value = evaluateAliasExpr(rhs);
    perFileAliasesPushBack(key, value);
    if (observer_ != nullptr)
        observer_->aliasDefined(key, rhs, value, currentFiles_);
}

void MountFileInfo::perFileAliasesPushBack(Rook::String const& key, Rook::String const& value) {
    MFI_TRACE(8, "( key: {}, value: {} )", key, value);
    perFileAliases_[key.toLower()] = value;
}

void MountFileInfo::predefinedAliasesIs(Rook::String const& key, Rook::String const& value) {
    MFI_TRACE(8, "( key: {}, value: {} )", key, value);
    predefinedAliases_[key.toLower()] = value;
}

std::optional<Rook::String> MountFileInfo::lookupAlias(Rook::String const& token) const {
    MFI_TRACE(8, "( token : {} )", token);
    auto const key = token.toLower();
    if (auto const found = perFileAliases_.find(key); found != perFileAliases_.end()) {
        MFI_TRACE(9, " Found {} as {} in per-file aliases", token, found->second);
        if (observer_ != nullptr) [[unlikely]]
            observer_->aliasUsed(key, found->second, currentFiles_);
        return found->second;
    }
    if (auto const found = predefinedAliases_.find(key); found != predefinedAliases_.end()) {
        MFI_TRACE(9, " Found {} as {} in pre-defined aliases", token, found->second);
        return found->second;
    }
    MFI_TRACE(9, " Found no alias for {}", token);
    return std::nullopt;
}

} // namespace Kelda
