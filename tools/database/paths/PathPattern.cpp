#include "PathPattern.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace KeldaDatabase {
namespace {

constexpr std::string_view anyNumber = "**";
constexpr std::string_view wildcards = "*?";

// The segment that begins at an offset.
std::string_view segmentAt(std::string_view path, std::size_t at) {
    return path.substr(at, path.find('/', at) - at);
}

// How long a UTF-8 sequence is that begins with this byte; 1 for a byte that begins none.
std::size_t lengthOfSequence(char lead) {
    auto const byte = static_cast<unsigned char>(lead);
    return byte < 0xc2 || byte > 0xf4 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

// Whether the byte at an offset belongs to the character that begins before it.
bool continuesCharacter(std::string_view text, std::size_t at) {
    if (!isContinuation(text[at]))
        return false;
    for (std::size_t back = 1; back <= std::min<std::size_t>(at, 3); ++back)
        if (!isContinuation(text[at - back]))
            return lengthOfSequence(text[at - back]) > back;
    return false;
}

// Which beginnings of a segment's pattern have an instance in common with the text read so far.
// Each character of the text makes the next row out of the one before; a "*" of the text stays in
// its row.
class Row {
  public:
    Row(std::string_view pattern, std::span<char> reached) : pattern_(pattern), reached_(reached) {
        std::ranges::fill(reached_, false);
        reached_[0] = true;
        passStars();
    }

    void readStar() {
        // From the first beginning on, the text's star takes in whatever the pattern goes on with.
        bool any = false;
        for (std::size_t i = 0; i <= pattern_.size(); ++i)
            reached_[i] = any = any || reached_[i];
    }

    // Reads the character at an offset of the text.
    void read(std::string_view text, std::size_t at) {
        bool const continues = continuesCharacter(text, at);
        bool anyIsLeft = false;
        bool before = std::exchange(reached_[0], false);
        for (std::size_t i = 1; i <= pattern_.size(); ++i) {
            bool const same = reached_[i];
            char const c = pattern_[i - 1];
            if (c == '*')
                reached_[i] = same || before || reached_[i - 1];
            else if (c == '?')
                reached_[i] = continues ? same : before;
            else
                reached_[i] = before && c == text[at];
            before = same;
            anyIsLeft = anyIsLeft || reached_[i];
        }
        isDead_ = !anyIsLeft;
    }

    bool isDead() const { return isDead_; }
    bool isComplete() const { return reached_[pattern_.size()]; }

  private:
    // Stars may stand for nothing.
    void passStars() {
        for (std::size_t i = 0; i < pattern_.size() && pattern_[i] == '*'; ++i)
            reached_[i + 1] = true;
    }

    std::string_view pattern_;
    std::span<char> reached_;
    bool isDead_ = false;
};

bool haveCommonInstance(std::string_view pattern, std::string_view text, std::span<char> space) {
    Row row(pattern, space);
    for (std::size_t at = 0; at < text.size() && !row.isDead(); ++at) {
        if (text[at] == '*')
            row.readStar();
        else
            row.read(text, at);
    }
    return !row.isDead() && row.isComplete();
}

std::string_view withoutSlash(std::string_view pattern) {
    return pattern.ends_with('/') ? pattern.substr(0, pattern.size() - 1) : pattern;
}

} // namespace

PathPattern::PathPattern(std::string_view pattern) {
    auto const text = withoutSlash(pattern);
    isLiteral_ = text.find_first_of(wildcards) == std::string_view::npos;
    prefix_ = text.substr(0, text.find_first_of(wildcards));
    bool atWildcard = false;
    for (std::size_t at = 0; at <= text.size();) {
        auto const segment = segmentAt(text, at);
        bool const literal = segment.find_first_of(wildcards) == std::string_view::npos;
        // "a/**" stands for "a" as well.
        if (!literal && !atWildcard && segment == anyNumber && at > 0)
            prefix_ = text.substr(0, at - 1);
        atWildcard = atWildcard || !literal;
        segments_.push_back({std::string(segment), segment == anyNumber, literal});
        at += segment.size() + 1;
    }
}

bool PathPattern::fits(Segment const& segment, std::string_view text) {
    if (segment.isLiteral && text.find('*') == std::string_view::npos)
        return segment.text == text;
    if (segment.text == "*")
        return true;
    constexpr std::size_t usualLength = 255;
    if (std::array<char, usualLength + 1> space; segment.text.size() <= usualLength)
        return haveCommonInstance(segment.text, text,
                                  std::span(space).first(segment.text.size() + 1));
    std::vector<char> space(segment.text.size() + 1);
    return haveCommonInstance(segment.text, text, space);
}

bool PathPattern::matches(std::string_view path) const {
    auto const differs = std::ranges::mismatch(prefix_, path);
    if (differs.in1 != prefix_.end() && (differs.in2 == path.end() || *differs.in2 != '*'))
        return false;
    // Behind a "**", the rest is tried at one segment of the path after another. What stands
    // before a further "**" may well take the first place that it fits.
    constexpr auto never = std::string_view::npos;
    std::size_t segment = 0;
    std::size_t at = 0;
    std::size_t behindAny = never;
    std::size_t retry = 0;
    while (at <= path.size()) {
        if (segment < segments_.size() && segments_[segment].isAnyNumber) {
            behindAny = ++segment;
            retry = at;
            continue;
        }
        auto const text = segmentAt(path, at);
        if (segment < segments_.size() && fits(segments_[segment], text)) {
            ++segment;
            at += text.size() + 1;
            continue;
        }
        if (behindAny == never)
            return false;
        segment = behindAny;
        at = retry += segmentAt(path, retry).size() + 1;
    }
    while (segment < segments_.size() && segments_[segment].isAnyNumber)
        ++segment;
    return segment == segments_.size();
}

} // namespace KeldaDatabase
