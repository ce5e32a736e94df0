// The operations of Rook::String that build new texts.
#include <Rook/String.h>

#include <algorithm>
#include <ostream>

namespace Rook {

namespace {

constexpr bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

} // namespace

String String::substr(std::size_t from, std::size_t n) const {
    if (from >= size())
        return {};
    auto const part = view().substr(from, n);
    return part.size() == size() ? *this : String(part);
}

String String::toLower() const {
    auto const text = view();
    if (std::none_of(text.begin(), text.end(), isUpper))
        return *this;
    std::string lower(text);
    for (auto& c : lower)
        if (isUpper(c))
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

String String::concat(std::string_view a, std::string_view b) {
    std::string joined;
    joined.reserve(a.size() + b.size());
    joined.append(a).append(b);
    return joined;
}

std::ostream& operator<<(std::ostream& stream, String const& text) {
    return stream << text.view();
}

} // namespace Rook
