// A file is a test case, and fails when it has errors or warnings. Many readers of such reports
// take one failure of each test case, and some refuse a second: all findings of a file stand in
// one, and the gravest gives it its type and message. Notes are the output of the test case.
#include "check/CheckFormats.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Text.h"
#include "check/CheckTextParts.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Severity;

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// A printable text as the content of an element or an attribute. Of what may not stand in a
// document, such a text can only hold the two characters that are none.
std::string xml(std::string text) {
    constexpr std::pair<std::string_view, std::string_view> replacements[] = {
        {"&", "&amp;"},
        {"<", "&lt;"},
        {">", "&gt;"},
        {"\"", "&quot;"},
        {"\xef\xbf\xbe", "\\u{fffe}"},
        {"\xef\xbf\xbf", "\\u{ffff}"},
    };
    for (auto const& [from, to] : replacements)
        replaceAll(text, from, to);
    return text;
}

struct TestCase {
    std::string name;
    std::vector<CheckedFinding const*> failures;
    std::vector<CheckedFinding const*> notes;
    std::string const* skipped = nullptr; // why
};

class TestCases {
  public:
    explicit TestCases(CheckResult const& result) {
        for (auto const& file : result.filesRead)
            of(file);
        for (auto const& finding : result.findings)
            add(finding);
        for (auto const& [file, reason] : result.filesSkipped)
            if (!indexes_.contains(file))
                of(file).skipped = &reason;
    }

    std::vector<TestCase> const& all() const { return cases_; }

    template <class Predicate>
    std::ptrdiff_t count(Predicate const& predicate) const {
        return std::count_if(cases_.begin(), cases_.end(), predicate);
    }

  private:
    TestCase& of(std::string const& file) {
        auto const [entry, isNew] = indexes_.try_emplace(file, cases_.size());
        if (isNew)
            cases_.push_back({file.empty() ? "no file" : printable(file), {}, {}, nullptr});
        return cases_[entry->second];
    }
    void add(CheckedFinding const& finding) {
        auto& testCase = of(finding.place.file);
        auto const isNote = finding.severity == Severity::note;
        (isNote ? testCase.notes : testCase.failures).push_back(&finding);
    }

    std::vector<TestCase> cases_;
    std::map<std::string, std::size_t> indexes_; // by file
};

std::string textOfAll(std::vector<CheckedFinding const*> const& findings) {
    std::string text;
    for (auto const* const finding : findings)
        text += findingText(*finding, {.colour = false, .showSource = true});
    return xml(std::move(text));
}

std::string failureElement(std::vector<CheckedFinding const*> const& findings) {
    auto const& gravest =
        **std::max_element(findings.begin(), findings.end(),
                           [](auto const* a, auto const* b) { return a->severity < b->severity; });
    auto message = messageInOneLine(gravest.message);
    if (findings.size() > 1)
        message += fmt::format(" (and {})", counted(findings.size() - 1, "more finding"));
    auto const type = gravest.rule == nullptr ? nameOf(gravest.severity) : gravest.rule->name;
    return fmt::format("      <failure type=\"{}\" message=\"{}\">{}</failure>\n",
                       xml(std::string(type)), xml(message), textOfAll(findings));
}

std::string testCaseElement(TestCase const& testCase) {
    std::string content;
    if (testCase.skipped != nullptr)
        content +=
            fmt::format("      <skipped message=\"{}\"/>\n", xml(printable(*testCase.skipped)));
    if (!testCase.failures.empty())
        content += failureElement(testCase.failures);
    if (!testCase.notes.empty())
        content += fmt::format("      <system-out>{}</system-out>\n", textOfAll(testCase.notes));
    auto const start =
        fmt::format("    <testcase name=\"{}\" classname=\"kelda.check\"", xml(testCase.name));
    return content.empty() ? start + "/>\n" : start + ">\n" + content + "    </testcase>\n";
}

constexpr std::string_view declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// The attributes that a suite shares with the suites around it.
std::string attributes(std::string const& name, TestCases const& cases) {
    auto const failed =
        cases.count([](TestCase const& testCase) { return !testCase.failures.empty(); });
    return fmt::format("name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\"", xml(name),
                       cases.all().size(), failed);
}

std::string suiteElement(std::string const& name, TestCases const& cases) {
    auto const skipped =
        cases.count([](TestCase const& testCase) { return testCase.skipped != nullptr; });
    auto text = fmt::format("  <testsuite {} skipped=\"{}\">\n", attributes(name, cases), skipped);
    for (auto const& testCase : cases.all())
        text += testCaseElement(testCase);
    return text + "  </testsuite>\n";
}

constexpr char const* nameOfAll = "kelda check";

} // namespace

std::string checkJunit(CheckResult const& result) {
    TestCases const cases(result);
    return fmt::format("{}<testsuites {}>\n{}</testsuites>\n", declaration,
                       attributes(nameOfAll, cases), suiteElement(nameOfAll, cases));
}

std::string checkJunitBegin() {
    return fmt::format("{}<testsuites name=\"{}\">\n", declaration, nameOfAll);
}

std::string checkJunitOfDevice(std::string const& device, CheckResult const& result) {
    return suiteElement(printable(device), TestCases(result));
}

std::string checkJunitError(std::string const& device, std::string const& message) {
    return fmt::format("  <testsuite name=\"{}\" tests=\"1\" failures=\"0\" errors=\"1\" "
                       "skipped=\"0\">\n"
                       "    <testcase name=\"device\" classname=\"kelda.check\">\n"
                       "      <error message=\"{}\"/>\n"
                       "    </testcase>\n"
                       "  </testsuite>\n",
                       xml(printable(device)), xml(printable(message)));
}

std::string checkJunitEnd() {
    return "</testsuites>\n";
}

} // namespace KeldaTool
