// Results of kelda check for tests of the forms in which they are written.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <rapidcheck.h>

#include "check/CheckResult.h"

namespace support {

using KeldaDatabase::RuleId;
using KeldaDatabase::Severity;
using KeldaTool::CheckedFinding;
using KeldaTool::CheckResult;

// A finding of a rule, with the severity that the rule has.
inline CheckedFinding findingOf(RuleId id, KeldaTool::SourcePlace const& place,
                                std::string const& message) {
    CheckedFinding finding;
    finding.rule = &KeldaDatabase::ruleOf(id);
    finding.severity = finding.rule->severity;
    finding.place = place;
    finding.message = message;
    finding.reportedLine = place.line;
    return finding;
}

inline CheckResult resultWith(CheckedFinding const& finding) {
    CheckResult result;
    result.findings = {finding};
    return result;
}

// Has every member that there is: a finding with all of them, one of a whole file, and one that no
// file has.
inline CheckResult sampleResult() {
    CheckResult result;
    result.preinitFiles = 2;
    result.profiles = 20;
    auto flag = findingOf(RuleId::flagUnknown, {"profiles/Slot", 7, 31, 3, "fan/%slot,Fan,rqx"},
                          "unknown mount flag in 'rqx'\n");
    flag.hint = "did you mean 'rx'?";
    flag.includedFrom = {{"profiles/Fan", 4}, {"profiles/Fan tray", 9}};
    flag.related = {{{"preinit/Fans", 3, 1, 9, "fan/%slot,Fan"}, "declared here"}};
    flag.agents = {"Fan-%slot", "FanTray"};
    flag.reportedLine = 8;
    result.findings = {flag,
                       findingOf(RuleId::orphanFile, {"profiles/Old", 0, 0, 0, ""}, "not read"),
                       findingOf(RuleId::aliasUnused, {"/etc/p/A", 2, 1, 4, "Slot:1"}, "not used"),
                       findingOf(RuleId::otherFault, {"", 0, 0, 0, ""}, "nothing there")};
    result.suppressed = 3;
    result.inBaseline = 1;
    result.staleBaseline = {"flag-unknown profiles/Gone unknown mount flag"};
    result.filesRead = {"preinit/Fans", "profiles/Fan"};
    result.filesSkipped = {{"profiles/Fan~", "a backup"}};
    return result;
}

// Any bytes, and among them often those that mean something in one of the forms.
inline std::string anyBytes() {
    auto const piece = rc::gen::weightedOneOf<std::string>(
        {{3, rc::gen::container<std::string>(rc::gen::arbitrary<char>())},
         {2, rc::gen::element<std::string>("](", "[", "{", "}", "\\", "\"", "\n", "\r", "/", "//",
                                           ":", "%", "?#", " ", "..", "\xff", "\xc3", "\xc3\xa4",
                                           "\xed\xa0\x80", "\u2028", std::string(1, '\0'))}});
    std::string bytes;
    for (auto const& part :
         *rc::gen::resize(6, rc::gen::container<std::vector<std::string>>(piece)))
        bytes += part;
    return bytes;
}

inline std::int32_t anyNumber() {
    using Limits = std::numeric_limits<std::int32_t>;
    return *rc::gen::weightedOneOf<std::int32_t>(
        {{3, rc::gen::inRange(-2, 100)},
         {1, rc::gen::element(Limits::min(), Limits::max())},
         {1, rc::gen::arbitrary<std::int32_t>()}});
}

inline KeldaTool::SourcePlace anyPlace() {
    return {anyBytes(), anyNumber(), anyNumber(), anyNumber(), anyBytes()};
}

// Between none and two of what `make` makes.
template <class Make>
auto some(Make const& make) {
    std::vector<decltype(make())> list;
    for (auto left = *rc::gen::inRange(0, 3); left > 0; --left)
        list.push_back(make());
    return list;
}

inline CheckedFinding anyFinding() {
    auto const rules = KeldaDatabase::allRules();
    auto const id = rules[*rc::gen::inRange<std::size_t>(0, rules.size())].id;
    auto finding = findingOf(id, anyPlace(), anyBytes());
    finding.severity = *rc::gen::element(Severity::note, Severity::warning, Severity::error);
    finding.hint = anyBytes();
    finding.includedFrom = some([] { return KeldaTool::IncludedFrom{anyBytes(), anyNumber()}; });
    finding.related = some([] { return KeldaTool::RelatedPlace{anyPlace(), anyBytes()}; });
    finding.agents = some(anyBytes);
    finding.reportedLine = anyNumber();
    return finding;
}

inline CheckResult anyResult() {
    CheckResult result;
    result.preinitFiles = *rc::gen::arbitrary<std::uint32_t>();
    result.findings = some(anyFinding);
    result.staleBaseline = some(anyBytes);
    result.filesRead = some(anyBytes);
    result.filesSkipped = some([] { return CheckResult::Skipped{anyBytes(), anyBytes()}; });
    return result;
}

} // namespace support
