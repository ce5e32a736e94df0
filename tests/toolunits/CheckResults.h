// Results of a check, made up for tests of the formats.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <rapidcheck.h>

#include "Text.h"
#include "check/CheckResult.h"
#include "database/findings/Rules.h"

namespace toolunits {

using KeldaDatabase::RuleId;
using KeldaDatabase::Severity;
using KeldaTool::CheckedFinding;
using KeldaTool::CheckResult;
using KeldaTool::SourcePlace;

// A finding with the severity of its rule.
inline CheckedFinding finding(RuleId rule, SourcePlace place, std::string message) {
    CheckedFinding made;
    made.rule = &KeldaDatabase::ruleOf(rule);
    made.severity = made.rule->severity;
    made.place = std::move(place);
    made.message = std::move(message);
    return made;
}

inline CheckResult resultOf(std::vector<CheckedFinding> findings) {
    CheckResult result;
    result.preinitFiles = 1;
    result.profiles = 2;
    result.findings = std::move(findings);
    return result;
}

namespace detail {

inline CheckedFinding flagFinding() {
    auto made = finding(RuleId::flagUnknown, {"profiles/Fan", 7, 24, 1, "sys/clock, Sys::Clock, z"},
                        "Encountered unknown mount flag z");
    made.includedFrom = {{"profiles/Routing", 4}, {"profiles/Other", 12}};
    made.agents = {"FanTray-%slot", "Routing", "Led", "Clock", "Other"};
    return made;
}

inline CheckedFinding attributeFinding() {
    auto made = finding(RuleId::attributeRedefined,
                        {"preinit/Slots", 20, 1, 7, "slot/%x\t,T,createOnMount"},
                        "Redefining attribute for slot/%x\n"
                        "Old Attribute: createOnStandby\nNew Attribute: createOnMount\n");
    made.related = {
        {{"preinit/Base", 3, 0, 0, "slot/%x,T,createOnStandby"}, "first declared here"}};
    return made;
}

inline CheckedFinding keywordFinding() {
    auto made = finding(RuleId::unknownKeyword, {"profiles/Led", 2, 1, 9, "MountGrop:leds"},
                        "syntax error: 'MountGrop:leds'");
    made.hint = "did you mean 'MountGroup:'?";
    made.agents = {"Led"};
    return made;
}

} // namespace detail

// One finding at least of each severity, with everything that a finding can have.
inline CheckResult sampleResult() {
    auto result = resultOf(
        {detail::flagFinding(), detail::attributeFinding(), detail::keywordFinding(),
         finding(RuleId::directoryUnreadable, {}, "Cannot open directory profiles"),
         finding(RuleId::orphanFile, {"profiles/Old", 0, 0, 0, ""}, "no agent loads this file"),
         finding(RuleId::aliasUnused, {"profiles/Led", 5, 8, 3, "alias: led=1 + 1"},
                 "alias 'led' is not used")});
    result.preinitFiles = 4;
    result.profiles = 20;
    result.suppressed = 2;
    result.inBaseline = 5;
    result.staleBaseline = {"profiles/Gone: flag-unknown: Encountered unknown mount flag q"};
    return result;
}

// The result with the files that were looked at.
inline CheckResult sampleResultWithFiles() {
    auto result = sampleResult();
    result.filesRead = {"preinit/Base", "preinit/Slots", "profiles/Fan", "profiles/Led"};
    result.filesSkipped = {{"profiles/Fan~", "the name of a copy"}};
    return result;
}

// Bytes that mean something to one of the formats, or to a terminal.
inline rc::Gen<std::string> hostileText() {
    auto const piece = rc::gen::oneOf(
        rc::gen::element<std::string>(
            "::error::x", "::", "\n", "\n\n", "\r", "\r\n", "\t", "\x1b[31m", "%0A", "%", ",", ":",
            "&", "<", ">", "\"", "'", "]]>", "<!--", "\xff", "\xe2\x82", "\xef\xbf\xbe",
            "\xef\xbf\xbf", "\xc2\x9b", "\u65e5\u672c", "\u202e", "\u200b", "\u0301", " ", "a/b"),
        rc::gen::map(rc::gen::inRange(0, 256),
                     [](int byte) { return std::string(1, static_cast<char>(byte)); }));
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
                        [](std::vector<std::string> const& pieces) {
                            std::string text;
                            for (auto const& one : pieces)
                                text += one;
                            return text;
                        });
}

inline std::int32_t anyNumber() {
    using Limits = std::numeric_limits<std::int32_t>;
    return *rc::gen::weightedOneOf<std::int32_t>(
        {{5, rc::gen::inRange(-1, 30)}, {1, rc::gen::element(Limits::min(), Limits::max())}});
}

inline SourcePlace anyPlace() {
    return {*hostileText(), anyNumber(), anyNumber(), anyNumber(), *hostileText()};
}

inline CheckedFinding anyFinding() {
    auto made =
        finding(*rc::gen::element(RuleId::flagUnknown, RuleId::aliasUnused, RuleId::aliasRedefined),
                anyPlace(), *hostileText());
    made.hint = *hostileText();
    for (int i = *rc::gen::inRange(0, 6); i > 0; --i) {
        made.includedFrom.push_back({*hostileText(), anyNumber()});
        made.agents.push_back(*hostileText());
    }
    for (int i = *rc::gen::inRange(0, 3); i > 0; --i)
        made.related.push_back({anyPlace(), *hostileText()});
    return made;
}

// To be called in a property: anything in every field.
inline CheckResult anyResult() {
    CheckResult result;
    for (int i = *rc::gen::inRange(0, 4); i > 0; --i)
        result.findings.push_back(anyFinding());
    result.filesRead = *rc::gen::container<std::vector<std::string>>(hostileText());
    result.staleBaseline = *rc::gen::container<std::vector<std::string>>(hostileText());
    for (int i = *rc::gen::inRange(0, 3); i > 0; --i)
        result.filesSkipped.push_back({*hostileText(), *hostileText()});
    return result;
}

inline std::vector<std::string> linesOf(std::string const& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        auto const end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

// Lines of well-formed UTF-8 without control characters.
inline bool isFitForATerminal(std::string const& text) {
    for (auto const& line : linesOf(text)) {
        for (char const c : line)
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
                return false;
        if (KeldaTool::printable(line) != line)
            return false;
    }
    return text.empty() || text.ends_with('\n');
}

// A file with what is expected, beside the tests.
inline std::string expected(std::string const& name) {
    auto const path = std::filesystem::path(KELDA_SOURCE_DIR) / "tests/toolunits/expected" / name;
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + path.string());
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace toolunits
