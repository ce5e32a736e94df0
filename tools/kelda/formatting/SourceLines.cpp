#include "formatting/SourceLines.h"

#include <algorithm>
#include <optional>
#include <string>

#include <KeldaBase/MountFileInfoTypes.h>
#include <strings.h>

namespace KeldaTool {
namespace {

using KeldaDatabase::FileFamily;

static_assert(std::tuple_size_v<Kelda::LineBuffer> == longestLine + 1);

constexpr std::string_view agentNameKeyword = "agentName:";
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

constexpr std::string_view tooLong = "the line is longer than 1023 characters";
constexpr std::string_view nul = "the line holds a NUL character";
constexpr std::string_view continuedComment = "a comment line may not hold a backslash";
constexpr std::string_view strayBackslash = "a backslash does not end the line";
constexpr std::string_view backslashAtEnd = "a backslash ends the file";
constexpr std::string_view continuedName = "the line of the agent's name is not continued";
constexpr std::string_view commentInName = "a comment behind the agent's name is a part of it";
constexpr std::string_view markInFront = "the line begins with a byte order mark";
constexpr std::string_view hiddenName =
    "without the blanks before the comment the file would be a profile";

std::string_view untilNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// Walks over a text as the parser's line reader does.
class LineReader {
  public:
    LineReader(std::string_view text, std::size_t at) : text_(text), at_(at) {}

    std::size_t at() const { return at_; }
    bool atEnd() const { return at_ == text_.size(); }

    // What is read at once into a buffer with room for this many characters.
    std::string_view piece(std::size_t most = longestLine) {
        auto const rest = text_.substr(at_, most);
        auto const taken = rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
        at_ += taken.size();
        return taken;
    }

    // Passes by a logical line and the pieces that are left of its last line. Returns the obstacle.
    std::string_view passLine() {
        auto obstacle = passLogicalLine();
        while (!atEnd() && text_[at_ - 1] != '\n') {
            obstacle = tooLong;
            passLogicalLine();
        }
        return obstacle;
    }

  private:
    std::string_view passLogicalLine() {
        std::string_view obstacle;
        std::string line(piece());
        for (;;) {
            if (auto const end = line.find('\0'); end != std::string::npos) {
                obstacle = nul;
                line.resize(end);
            }
            auto const backslash = line.find('\\');
            if (backslash == std::string::npos)
                return obstacle;
            if (line.front() == '#')
                return continuedComment;
            if (std::string_view(line).substr(backslash) != "\\\n")
                return strayBackslash;
            if (atEnd())
                return backslashAtEnd;
            line.resize(backslash);
            line += piece(longestLine - backslash);
        }
    }

    std::string_view text_;
    std::size_t at_;
};

struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

// The piece that names the agent, as whoever looks for an agent's profile finds it.
std::optional<Range> agentNamePiece(std::string_view text) {
    LineReader reader(text, 0);
    while (!reader.atEnd()) {
        auto const begin = reader.at();
        auto const piece = reader.piece();
        auto const content = withoutBlanks(untilNul(piece));
        if (piece.front() == '#' || content.empty())
            continue;
        bool const holdsNul = piece.find('\0') != std::string_view::npos;
        if (!beginsWith(content, agentNameKeyword) || holdsNul)
            return std::nullopt;
        return Range{begin, reader.at()};
    }
    return std::nullopt;
}

std::vector<std::string_view> partsOf(std::string_view bytes) {
    std::vector<std::string_view> parts;
    while (!bytes.empty()) {
        auto const end = std::min(bytes.find('\n'), bytes.size());
        parts.push_back(bytes.substr(0, end));
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
        if (!bytes.empty())
            parts.back().remove_suffix(1);
    }
    return parts;
}

class Splitter {
  public:
    Splitter(std::string_view text, FileFamily family)
        : text_(text), name_(family == FileFamily::profile ? agentNamePiece(text) : std::nullopt),
          reader_(text, 0) {}

    std::vector<SourceLine> lines() {
        std::vector<SourceLine> lines;
        std::int32_t number = 1;
        while (!reader_.atEnd()) {
            lines.push_back(next());
            auto& line = lines.back();
            line.number = number;
            number += static_cast<std::int32_t>(std::ranges::count(line.bytes, '\n'));
            if (line.obstacle.empty())
                line.parts = partsOf(line.bytes);
        }
        return lines;
    }

  private:
    SourceLine next() {
        SourceLine line;
        auto const begin = reader_.at();
        line.obstacle = reader_.passLine();
        if (name_ && begin <= name_->begin && name_->begin < reader_.at())
            nameAgent(line, begin);
        line.bytes = text_.substr(begin, reader_.at() - begin);
        // In any line: without the blanks before it, it may begin the file.
        if (line.obstacle.empty() && withoutBlanksInFront(line.bytes).starts_with(byteOrderMark))
            line.obstacle = markInFront;
        return line;
    }

    // Who looks for an agent's profile goes on behind the piece with the name, who includes the
    // file behind the line: up to where both meet again, nothing may move.
    void nameAgent(SourceLine& line, std::size_t begin) {
        line.namesAgent = line.obstacle.empty() && begin == name_->begin;
        if (reader_.at() > name_->end) {
            line.obstacle = continuedName;
            meet(LineReader(text_, name_->end));
        }
        auto const piece = text_.substr(name_->begin, name_->end - name_->begin);
        if (line.obstacle.empty() && piece.find('#') != std::string_view::npos)
            line.obstacle = commentInName;
    }

    void meet(LineReader other) {
        while (other.at() != reader_.at())
            (other.at() < reader_.at() ? other : reader_).passLine();
    }

    std::string_view text_;
    std::optional<Range> name_;
    LineReader reader_;
};

bool isIndentedComment(SourceLine const& line) {
    return line.parts.size() == 1 && !line.bytes.starts_with('#') &&
           withoutBlanksInFront(line.bytes).starts_with('#');
}

// Comments that do not begin at the very left make a file, in which an agent-name line follows, a
// file without one.
void keepWhatHidesTheName(std::vector<SourceLine>& lines) {
    std::vector<SourceLine*> hiding;
    for (auto& line : lines) {
        bool const isTakenInPieces = line.obstacle == tooLong;
        auto const content = withoutBlanks(untilNul(line.bytes.substr(0, longestLine)));
        if (isIndentedComment(line))
            hiding.push_back(&line);
        else if (isTakenInPieces || beginsWith(content, agentNameKeyword)) {
            for (auto* const comment : hiding)
                comment->obstacle = hiddenName;
            if (!isTakenInPieces) // all of which may be blank
                return;
        } else if (!content.empty() && !line.bytes.starts_with('#'))
            return;
    }
}

} // namespace

std::vector<SourceLine> sourceLines(std::string_view text, FileFamily family) {
    auto lines = Splitter(text, family).lines();
    if (family == FileFamily::profile)
        keepWhatHidesTheName(lines);
    return lines;
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view withoutBlanksInFront(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view withoutBlanksAround(std::string_view text) {
    text = withoutBlanksInFront(text);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string withoutBlanks(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    std::copy_if(text.begin(), text.end(), std::back_inserter(result),
                 [](char c) { return !isBlank(c); });
    return result;
}

bool beginsWith(std::string_view text, std::string_view word) {
    return text.size() >= word.size() && strncasecmp(text.data(), word.data(), word.size()) == 0;
}

} // namespace KeldaTool
