#include <KeldaUtil/MountFlags.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace KeldaUtil {

using Fen::MountTable::Flags;

namespace {

constexpr std::string_view letters = "rwcitfSDdOApKLnNECey"; // in the order of their bits
constexpr std::uint32_t readOrWrite = 0x3;
constexpr std::uint32_t instantiating = 0x80000;

// Texts with letters that have no bit. The bits of such a text count down from the highest number,
// so they never meet those of letters.
class UnknownTexts {
  public:
    Flags flagsOf(Rook::String const& text) {
        std::scoped_lock const lock(mutex_);
        auto const found = std::ranges::find(texts_, text);
        auto const index = static_cast<std::uint32_t>(found - texts_.begin());
        if (found == texts_.end())
            texts_.push_back(text);
        return Flags(~index);
    }
    std::optional<Rook::String> textOf(Flags flags) {
        std::scoped_lock const lock(mutex_);
        std::uint32_t const index = ~flags.bits();
        if (index >= texts_.size())
            return std::nullopt;
        return texts_[index];
    }

  private:
    std::mutex mutex_;
    std::vector<Rook::String> texts_;
};

// Never destroyed: it serves destructors of static variables too.
UnknownTexts& unknownTexts() {
    static auto& texts = *new UnknownTexts;
    return texts;
}

} // namespace

Flags parseMountTableFlags(Rook::String text) {
    std::uint32_t bits = 0;
    for (char const letter : text.view()) {
        auto const position = letters.find(letter);
        if (position == std::string_view::npos)
            return unknownTexts().flagsOf(text);
        bits |= std::uint32_t{1} << position;
    }
    return Flags((bits & readOrWrite) != 0 ? bits | instantiating : bits);
}

Rook::String mountTableFlagsToString(Flags flags) {
    if (auto const text = unknownTexts().textOf(flags))
        return *text;
    auto bits = flags.bits();
    if ((bits & readOrWrite) != 0)
        bits &= ~instantiating;
    std::string text;
    for (std::size_t position = 0; position < letters.size(); ++position)
        if ((bits >> position & 1U) != 0)
            text += letters[position];
    return text;
}

Flags safelyMergeFlags(Flags a, Flags b) {
    if (!unknownTexts().textOf(a) && !unknownTexts().textOf(b))
        return a | b;
    std::string merged(mountTableFlagsToString(a).view());
    for (char const letter : mountTableFlagsToString(b).view())
        if (merged.find(letter) == std::string::npos)
            merged += letter;
    return parseMountTableFlags(merged);
}

} // namespace KeldaUtil
