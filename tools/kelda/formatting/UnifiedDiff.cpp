#include "formatting/UnifiedDiff.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <vector>

#include <fmt/format.h>

#include "formatting/SourceLines.h"

namespace KeldaTool {
namespace {

constexpr std::size_t context = 3;

using Lines = std::vector<std::string_view>; // with their line ends

Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        auto const size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

// Lines of both texts, up to the next that are the same in both or differ.
struct Stretch {
    bool isSame = false;
    std::size_t oldBegin = 0, oldEnd = 0;
    std::size_t newBegin = 0, newEnd = 0;
};

bool isBlankLine(std::string_view line) {
    return std::ranges::all_of(line, isBlank);
}

std::string essence(std::string_view line) {
    auto text = withoutBlanks(line);
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Walks over both texts at once.
class Walk {
  public:
    Walk(Lines const& before, Lines const& after) : before_(before), after_(after) {}

    std::vector<Stretch> stretches() {
        while (old_ < before_.size() || new_ < after_.size()) {
            if (old_ == before_.size())
                advance(false, 0, 1);
            else if (new_ == after_.size())
                advance(false, 1, 0);
            else if (before_[old_] == after_[new_])
                advance(true, 1, 1);
            else
                advanceOverChange(before_[old_], after_[new_]);
        }
        return stretches_;
    }

  private:
    void advanceOverChange(std::string_view oldLine, std::string_view newLine) {
        bool const isChanged = essence(oldLine) == essence(newLine);
        if (!isChanged && isBlankLine(oldLine))
            advance(false, 1, 0);
        else if (!isChanged && isBlankLine(newLine))
            advance(false, 0, 1);
        else
            advance(false, 1, 1);
    }

    void advance(bool isSame, std::size_t oldLines, std::size_t newLines) {
        if (stretches_.empty() || stretches_.back().isSame != isSame)
            stretches_.push_back({isSame, old_, old_, new_, new_});
        old_ += oldLines;
        new_ += newLines;
        stretches_.back().oldEnd = old_;
        stretches_.back().newEnd = new_;
    }

    Lines const& before_;
    Lines const& after_;
    std::size_t old_ = 0, new_ = 0;
    std::vector<Stretch> stretches_;
};

// A line of the diff.
void append(std::string& text, char mark, std::string_view line) {
    text += mark;
    text += line;
    if (!line.ends_with('\n'))
        text += "\n\\ No newline at end of file\n";
}

// "-12,3": a range of no lines stands behind the line before it.
std::string rangeText(char mark, std::size_t begin, std::size_t end) {
    auto const count = end - begin;
    auto const first = begin + (count == 0 ? 0 : 1);
    return count == 1 ? fmt::format("{}{}", mark, first)
                      : fmt::format("{}{},{}", mark, first, count);
}

// "--- profiles/Fan": patch(1) takes a name with blanks for a name only up to a tab.
std::string nameLine(std::string_view mark, std::string_view name) {
    bool const hasBlank = name.find(' ') != std::string_view::npos;
    return fmt::format("{} {}{}\n", mark, name, hasBlank ? "\t" : "");
}

// Changes with the lines around them.
class Hunk {
  public:
    Hunk(Lines const& before, Lines const& after, Stretch const& first)
        : before_(before), after_(after), whole_(first) {
        auto const lead = std::min(context, first.oldBegin);
        whole_.oldBegin -= lead;
        whole_.newBegin -= lead;
        same(whole_.oldBegin, first.oldBegin);
    }

    void change(Stretch const& stretch) {
        for (auto i = stretch.oldBegin; i < stretch.oldEnd; ++i)
            append(text_, '-', before_[i]);
        for (auto i = stretch.newBegin; i < stretch.newEnd; ++i)
            append(text_, '+', after_[i]);
        whole_.oldEnd = stretch.oldEnd;
        whole_.newEnd = stretch.newEnd;
    }
    // The first lines of what follows a change.
    void follow(std::size_t count) {
        same(whole_.oldEnd, whole_.oldEnd + count);
        whole_.oldEnd += count;
        whole_.newEnd += count;
    }
    std::string text() const {
        return fmt::format("@@ {} {} @@\n{}", rangeText('-', whole_.oldBegin, whole_.oldEnd),
                           rangeText('+', whole_.newBegin, whole_.newEnd), text_);
    }

  private:
    void same(std::size_t begin, std::size_t end) {
        for (auto i = begin; i < end; ++i)
            append(text_, ' ', before_[i]);
    }

    Lines const& before_;
    Lines const& after_;
    Stretch whole_;
    std::string text_;
};

} // namespace

std::string unifiedDiff(std::string_view name, std::string_view before, std::string_view after) {
    if (before == after)
        return {};
    auto const oldLines = linesOf(before);
    auto const newLines = linesOf(after);
    auto const stretches = Walk(oldLines, newLines).stretches();
    auto text = nameLine("---", name) + nameLine("+++", name);
    for (std::size_t i = stretches.front().isSame ? 1 : 0; i < stretches.size();) {
        Hunk hunk(oldLines, newLines, stretches[i]);
        for (;;) {
            hunk.change(stretches[i]);
            bool const isLast = i + 2 >= stretches.size();
            auto const between =
                i + 1 == stretches.size() ? 0 : stretches[i + 1].oldEnd - stretches[i + 1].oldBegin;
            bool const goesOn = !isLast && between <= 2 * context;
            hunk.follow(goesOn ? between : std::min(context, between));
            i += 2;
            if (!goesOn)
                break;
        }
        text += hunk.text();
    }
    return text;
}

} // namespace KeldaTool
