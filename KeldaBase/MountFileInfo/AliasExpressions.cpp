// The right-hand side of an alias line: a list, a containment test, a choice or one operand. The
// first kind whose operator occurs anywhere applies; operators do not nest.
#include <KeldaBase/MountFileInfo.h>

#include "../Tracing.h"

namespace Kelda {

Rook::String MountFileInfo::evaluateAliasExpr(char const* rhs) {
    MFI_TRACE(8, "( rhs : {} )", rhs);
    Rook::String const expression(rhs);
    if (expression.find(",") != Rook::String::npos)
        return evaluateList(expression);
    if (auto const tilde = expression.find("~"); tilde != Rook::String::npos)
        return evaluateContainment(expression, tilde);
    if (auto const mark = expression.find("?"); mark != Rook::String::npos)
        return evaluateChoice(expression, mark);
    return evaluateAliasValue(expression);
}

// The values of `a,b,c` that are not empty, joined by "-".
Rook::String MountFileInfo::evaluateList(Rook::String const& expression) {
    Rook::String joined;
    for (auto const& piece : tokenize(expression, ",")) {
        auto const value = evaluateAliasValue(piece);
        if (value.empty())
            continue;
        joined = joined.empty() ? value : joined + "-" + value;
    }
    return joined;
}

// The left value of `left~right` when it contains the right one, else the empty string.
Rook::String MountFileInfo::evaluateContainment(Rook::String const& expression, std::size_t tilde) {
    auto left = evaluateAliasValue(expression.substr(0, tilde));
    auto const right = evaluateAliasValue(expression.substr(tilde + 1, Rook::String::npos));
    return left.find(right) == Rook::String::npos ? Rook::String() : left;
}

// `condition?then:otherwise`. The first colon counts, also one before the question mark, and each
// operand ends at whichever mark comes next.
Rook::String MountFileInfo::evaluateChoice(Rook::String const& expression, std::size_t mark) {
    auto const colon = expression.find(":");
    if (colon == Rook::String::npos) {
        reportAndTrace("missing ':' after '?' in ternary alias");
        MFI_TRACE(3, "Returning empty string");
        return {};
    }
    auto const operandFrom = [&](std::size_t start) {
        auto end = expression.size();
        for (auto const cut : {mark, colon})
            if (cut >= start && cut < end)
                end = cut;
        return expression.substr(start, end - start);
    };
    auto const condition = evaluateAliasValue(operandFrom(0));
    auto const then = evaluateAliasValue(operandFrom(mark + 1));
    auto const otherwise = evaluateAliasValue(operandFrom(colon + 1));
    return condition.empty() ? otherwise : then;
}

} // namespace Kelda
