// Replacement of shorthands and aliases against a plain model on std::string, for any text at any
// distance from the buffer's end; and no byte outside the buffer is ever written.
#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/LenientParser.h"

namespace {

using support::LenientParser;

// A line buffer between guard bytes, with stale characters behind its text.
template <std::size_t size>
class GuardedBuffer {
  public:
    explicit GuardedBuffer(std::string_view text) {
        if (text.size() >= size)
            throw std::length_error("text does not fit the buffer");
        memory_.before.fill(guard);
        memory_.after.fill(guard);
        memory_.buffer.fill('%');
        text.copy(memory_.buffer.data(), text.size());
        memory_.buffer[text.size()] = '\0';
    }

    std::array<char, size>& buffer() { return memory_.buffer; }

    // The text in the buffer; the whole buffer when nothing ends it.
    std::string text() const {
        auto const end = std::find(memory_.buffer.begin(), memory_.buffer.end(), '\0');
        return {memory_.buffer.begin(), end};
    }
    bool guardsAreIntact() const {
        auto const isGuard = [](char byte) { return byte == guard; };
        return std::all_of(memory_.before.begin(), memory_.before.end(), isGuard) &&
               std::all_of(memory_.after.begin(), memory_.after.end(), isGuard);
    }

  private:
    static constexpr char guard = 0x5a;
    struct {
        std::array<char, 2048> before;
        std::array<char, size> buffer;
        std::array<char, 8192> after;
    } memory_;
};

// What an operation makes of a text, and what it reports.
struct Outcome {
    std::string text;
    std::vector<std::string> faults;

    friend bool operator==(Outcome const&, Outcome const&) = default;
};

void showValue(Outcome const& outcome, std::ostream& stream) {
    stream << '"' << outcome.text << '"';
    for (auto const& fault : outcome.faults)
        stream << "\n  fault: " << fault;
}

std::string lowerCase(std::string text) {
    for (char& character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

void cut(std::string& text, std::size_t size) {
    text.resize(std::min(text.size(), size));
}

std::size_t const lineSize = std::tuple_size_v<Kelda::LineBuffer>;

Outcome modelOfReplacement(std::string text, std::string const& from, std::string const& to) {
    Outcome outcome;
    auto const find = [&](std::size_t at) { return lowerCase(text).find(lowerCase(from), at); };
    for (auto at = find(0); at != std::string::npos; at = find(at + to.size())) {
        if (text.size() - from.size() + to.size() >= lineSize)
            outcome.faults.push_back("cannot expand path" + text);
        text.replace(at, from.size(), to);
        cut(text, lineSize - 1);
    }
    outcome.text = text;
    return outcome;
}

using Aliases = std::map<std::string, std::string>;

Aliases const aliases{{"%a", "A"},   {"%b", ""},
                      {"%ab", "ab"}, {"%aab", "cd%ae"},
                      {"%b_1", "%"}, {"%bb", "0123456789"},
                      {"%", "%%"},   {"%ba", "longer/than/its/name"}};

std::string tokenAt(std::string const& path, std::size_t at) {
    auto end = at + 1;
    while (end < path.size() &&
           (std::isalnum(static_cast<unsigned char>(path[end])) != 0 || path[end] == '_'))
        ++end;
    return path.substr(at, end - at);
}

Outcome modelOfExpansion(std::string path, std::size_t size) {
    Outcome outcome;
    for (auto at = path.find('%'); at != std::string::npos;) {
        auto const token = tokenAt(path, at);
        auto const alias = aliases.find(lowerCase(token));
        auto const value = alias == aliases.end() ? std::string() : alias->second;
        if (alias == aliases.end())
            outcome.faults.push_back("No such alias defined: '" + token + "'");
        auto const newSize = path.size() - token.size() + value.size();
        if (newSize >= size)
            outcome.faults.push_back("Path buffer too small to expand alias from '" + token +
                                     "'to '" + value + "' in " + path);
        if (newSize == size)
            break;
        path.replace(at, token.size(), value);
        cut(path, size - 1);
        at = path.find('%', at + value.size());
    }
    outcome.text = path;
    return outcome;
}

// A parser with the aliases; one for all cases, it forgets its faults between them.
LenientParser& parserWithAliases() {
    static LenientParser parser;
    parser.clearProfileData();
    for (auto const& [name, value] : aliases)
        parser.perFileAliasesPushBack(name, value);
    return parser;
}

std::string joined(std::vector<std::string> const& pieces) {
    std::string text;
    for (auto const& piece : pieces)
        text += piece;
    return text;
}

// Short pieces in a row, padded on one side to lie close to the end of a buffer, or not at all.
std::string textFor(std::size_t size, std::vector<std::string> const& pieces) {
    auto text = joined(pieces);
    cut(text, size - 1);
    auto const padding = *rc::gen::element(0, 1, 2);
    if (padding == 0)
        return text;
    auto const room = size - 1 - text.size();
    std::string const filler(room - std::min(room, *rc::gen::inRange<std::size_t>(0, 40)), 'x');
    return padding == 1 ? filler + text : text + filler;
}

std::vector<std::string> piecesOf(std::vector<std::string> const& choice) {
    return *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(choice));
}

template <std::size_t size>
Outcome expansion(std::string const& path) {
    auto& parser = parserWithAliases();
    GuardedBuffer<size> guarded(path);
    parser.expandAliasInPath(guarded.buffer().data(), size);
    RC_ASSERT(guarded.guardsAreIntact());
    return {guarded.text(), support::messages(parser)};
}

std::vector<std::string> const pathPieces{"%a",  "%B", "%aB", "%AAB", "%b_1", "%bb", "%ba", "%",
                                          "%no", "a",  "b",   "_",    "1",    "/",   "-",   "."};

RC_GTEST_PROP(ShorthandReplacementModel, AgreesWithTheParserAndItsBuffer, ()) {
    auto const text = textFor(lineSize, piecesOf({"a", "A", "ab", "aB", "b", "/", "%"}));
    auto const from = *rc::gen::element<std::string>("a", "AB", "ba", "%a", "aa", "%");
    auto const to =
        *rc::gen::element<std::string>("", "b", "ab", "a%a", "AbA", "cell/%a", "longer/%than/from");
    auto& parser = parserWithAliases();
    GuardedBuffer<lineSize> guarded(text);
    parser.strcCaseReplace(guarded.buffer(), from.c_str(), to.c_str());
    RC_ASSERT(guarded.guardsAreIntact());
    RC_ASSERT((Outcome{guarded.text(), support::messages(parser)}) ==
              modelOfReplacement(text, from, to));
}

RC_GTEST_PROP(ShorthandReplacementModel, AgreesWithTheParserForReplacementsOfAnyLength, ()) {
    auto const text = textFor(lineSize, piecesOf({"a", "b", "%a"}));
    std::string const to(*rc::gen::inRange<std::size_t>(0, 1500), 'y');
    auto& parser = parserWithAliases();
    GuardedBuffer<lineSize> guarded(text);
    parser.strcCaseReplace(guarded.buffer(), "%A", to.c_str());
    RC_ASSERT(guarded.guardsAreIntact());
    RC_ASSERT((Outcome{guarded.text(), support::messages(parser)}) ==
              modelOfReplacement(text, "%a", to));
}

RC_GTEST_PROP(AliasExpansionModel, AgreesWithTheParserInALineBuffer, ()) {
    auto const path = textFor(lineSize, piecesOf(pathPieces));
    RC_ASSERT(expansion<lineSize>(path) == modelOfExpansion(path, lineSize));
}

RC_GTEST_PROP(AliasExpansionModel, AgreesWithTheParserInASmallBuffer, ()) {
    auto const path = textFor(24, piecesOf(pathPieces));
    RC_ASSERT(expansion<24>(path) == modelOfExpansion(path, 24));
}

RC_GTEST_PROP(AliasExpansionModel, AgreesWithTheParserInABufferThatHardlyHoldsAToken, ()) {
    auto const path = textFor(4, piecesOf(pathPieces));
    RC_ASSERT(expansion<4>(path) == modelOfExpansion(path, 4));
}

// Around the limit, for every distance: a result of exactly the buffer's size is refused, a shorter
// one is whole, a longer one is cut.
RC_GTEST_PROP(AliasExpansionModel, OneAliasIsExpandedRefusedOrCutByTheSizeOfTheResult, ()) {
    auto const resultSize = *rc::gen::inRange<std::size_t>(1021, 1031);
    auto const valueSize = *rc::gen::inRange(resultSize - 1021, resultSize + 1);
    std::string const value(valueSize, 'v');
    std::string const rest(resultSize - valueSize, 'x');
    LenientParser parser;
    parser.perFileAliasesPushBack("%v", value);
    GuardedBuffer<lineSize> guarded(rest + "%v");
    parser.expandAliasInPath(guarded.buffer().data(), lineSize);
    RC_ASSERT(guarded.guardsAreIntact());
    RC_ASSERT(guarded.text() ==
              (resultSize == lineSize ? rest + "%v" : (rest + value).substr(0, lineSize - 1)));
    RC_ASSERT(parser.exceptions().size() == (resultSize < lineSize ? 0U : 1U));
}

} // namespace
