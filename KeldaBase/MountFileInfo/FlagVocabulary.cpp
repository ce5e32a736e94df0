#include "FlagVocabulary.h"

namespace Kelda::FlagVocabulary {

namespace {

bool isOneOf(std::string_view letters, char letter) {
    return letters.find(letter) != std::string_view::npos;
}

} // namespace

LetterKind kindOf(char letter, bool isConnectionFlags) {
    if (isOneOf(internalLetters, letter))
        return LetterKind::internal;
    bool const known =
        isOneOf(connectionLetters, letter) || (!isConnectionFlags && isOneOf(mountLetters, letter));
    return known ? LetterKind::valid : LetterKind::unknown;
}

RuleBreach breachOf(std::string_view flags, bool isConnectionFlags) {
    auto const counts = [&](char letter) {
        return isOneOf(flags, letter) && kindOf(letter, isConnectionFlags) != LetterKind::unknown;
    };
    if (counts('c') && counts('D'))
        return RuleBreach::cWithD;
    if (counts('d') && !counts('c'))
        return RuleBreach::dWithoutC;
    return RuleBreach::none;
}

} // namespace Kelda::FlagVocabulary
