// kelda report: the page as a file, what it holds beside what other commands say, hostile files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include <sys/stat.h>

#include "support/Corpus.h"
#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using namespace std::string_literals;
using support::contentOf;
using support::Device;
using support::KeldaProgram;
using support::Words;
using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::ordered_json;

// What a browser finds between two tags.
std::string between(std::string const& page, std::string const& begin, std::string const& end) {
    auto const at = page.find(begin);
    if (at == std::string::npos)
        return "no " + begin;
    auto const from = at + begin.size();
    return page.substr(from, page.find(end, from) - from);
}

std::string dataText(std::string const& page) {
    return between(page, "<script type=\"application/json\" id=\"device-data\">", "</script");
}

support::Outcome reportOf(std::filesystem::path const& device, Words const& words = {"-o", "-"}) {
    return KeldaProgram().inFolder(device).run(
        Words{"report", "--preinit", "preinit", "--profiles", "profiles"} + words);
}

Json dataOf(std::filesystem::path const& device) {
    return Json::parse(dataText(reportOf(device).out));
}

Json answerOf(std::filesystem::path const& device, Words const& words) {
    return KeldaProgram()
        .inFolder(device)
        .run(words + Words{"--preinit", "preinit", "--profiles", "profiles", "--format", "json"})
        .json();
}

// The same device told by several commands.
class EveryDevice : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        folder = support::exampleDevice();
        if (GetParam() == "example")
            return;
        SKIP_WITHOUT_CORPUS();
        folder = support::corpusDir(GetParam().c_str());
    }

    std::filesystem::path folder;
};

TEST_P(EveryDevice, HasTheAgentsOfKeldaAgents) {
    auto const data = dataOf(folder);
    auto const agents = answerOf(folder, {"agents"});
    std::map<std::size_t, std::size_t> paths;
    std::set<std::size_t> mounted;
    for (auto const& mount : data["mounts"]) {
        ++paths[mount[0].get<std::size_t>()];
        mounted.insert(mount[1].get<std::size_t>());
    }
    ASSERT_EQ(data["agents"].size(), agents["totals"]["agents"]);
    EXPECT_EQ(mounted.size(), agents["totals"]["paths"]);
    for (std::size_t i = 0; i < data["agents"].size(); ++i) {
        auto const& told = data["agents"][i];
        auto const& agent = agents["agents"][i];
        EXPECT_EQ(told["name"], agent["name"]);
        EXPECT_EQ(told["active"], agent["activeMount"]);
        EXPECT_EQ(told.value("hasActiveVariant", false), agent["hasActiveVariant"]);
        EXPECT_EQ(told["subAgents"], agent["subAgents"]);
        EXPECT_EQ(told["faultCount"], agent["faults"]);
        EXPECT_EQ(paths[i], agent["paths"]) << agent["name"];
        std::vector<std::string> profiles;
        for (auto const& file : told["profiles"])
            profiles.push_back(data["files"][file.get<std::size_t>()]);
        EXPECT_EQ(profiles, agent["profiles"].get<std::vector<std::string>>());
    }
}

std::vector<std::string> mountsOf(Json const& data) {
    std::vector<std::string> mounts;
    for (auto const& mount : data["mounts"]) {
        auto const& path = data["paths"][mount[1].get<std::size_t>()];
        std::string text = data["agents"][mount[0].get<std::size_t>()]["name"];
        text += " " + path["p"].get<std::string>() + " " + path["t"].get<std::string>() + " " +
                data["flags"][mount[2].get<std::size_t>()].get<std::string>();
        for (auto const& number : mount[3]) {
            auto const& line = data["lines"][number.get<std::size_t>()];
            text += " " + data["files"][line["f"].get<std::size_t>()].get<std::string>() + ":" +
                    line["l"].dump();
            if (line.contains("i"))
                text += "<" + data["files"][line["i"][0].get<std::size_t>()].get<std::string>() +
                        ":" + line["i"][1].dump();
        }
        mounts.push_back(text);
    }
    return mounts;
}

TEST_P(EveryDevice, HasTheMountsOfKeldaWho) {
    std::vector<std::string> expected;
    auto const who = answerOf(folder, {"who", "**"});
    for (auto const& mount : who["mounts"]) {
        auto text = mount["agent"].get<std::string>() + " " + mount["path"].get<std::string>() +
                    " " + mount["type"].get<std::string>() + " " +
                    mount["flags"].get<std::string>();
        for (auto const& place : mount["places"]) {
            text += " " + place["file"].get<std::string>() + ":" + place["line"].dump();
            for (auto const& by : place["includedFrom"])
                text += "<" + by["file"].get<std::string>() + ":" + by["line"].dump();
        }
        expected.push_back(text);
    }
    EXPECT_FALSE(expected.empty());
    EXPECT_THAT(mountsOf(dataOf(folder)), testing::UnorderedElementsAreArray(expected));
}

TEST_P(EveryDevice, HasTheFindingsOfKeldaCheck) {
    auto const data = dataOf(folder);
    auto const check = answerOf(folder, {"check"});
    ASSERT_EQ(data["findings"].size(), check["findings"].size());
    EXPECT_EQ(data["suppressed"], check["suppressed"]);
    for (std::size_t i = 0; i < data["findings"].size(); ++i) {
        auto const& told = data["findings"][i];
        auto const& finding = check["findings"][i];
        EXPECT_EQ(data["files"][told["file"].get<std::size_t>()], finding["file"]);
        for (auto const* const member : {"severity", "rule", "line", "column", "message"})
            EXPECT_EQ(told[member], finding[member]);
        EXPECT_EQ(told.value("hint", ""), finding.value("hint", ""));
        EXPECT_TRUE(data["rules"].contains(finding["rule"].get<std::string>()));
    }
}

TEST_P(EveryDevice, HasThePathsThatKeldaPreinitDeclares) {
    auto const data = dataOf(folder);
    std::map<std::string, Json> paths;
    for (auto const& path : data["paths"])
        paths[path["p"]] = path;
    EXPECT_EQ(paths.size(), data["paths"].size());
    auto const preinit = KeldaProgram()
                             .inFolder(folder)
                             .run({"preinit", "--preinit", "preinit", "--format", "json"})
                             .json();
    EXPECT_FALSE(preinit["paths"].empty());
    for (auto const& declared : preinit["paths"]) {
        auto const wildcard = std::regex_replace(declared["path"].get<std::string>(),
                                                 std::regex("%[A-Za-z0-9_]*"), "*");
        ASSERT_TRUE(paths.contains(wildcard)) << wildcard;
        EXPECT_EQ(paths[wildcard]["t"], preinit["types"][wildcard]);
        EXPECT_FALSE(paths[wildcard]["d"].empty()) << wildcard;
    }
}

INSTANTIATE_TEST_SUITE_P(Report, EveryDevice, testing::Values("example", "openconfig"),
                         [](auto const& device) { return device.param; });

// A small device in a folder that the program is called from.
class ReportCommand : public testing::Test {
  protected:
    ReportCommand() { device.preinit("P", "a,T\nb,T\n").profile("A", "agentName:A\na,T,rw\n"); }

    support::Outcome report(Words const& words) const {
        return reportOf(device.directory().path(), words);
    }
    std::string file(std::string const& name) const { return contentOf(device.directory() / name); }

    Device device;
};

TEST_F(ReportCommand, WritesAPageAndSaysWhatIsInIt) {
    auto const outcome = report({"-o", "out.html"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "report written to out.html: 1 agent, 2 paths, 1 finding\n");
    EXPECT_EQ(outcome.status, 0);
    auto const page = file("out.html");
    EXPECT_EQ(Json::parse(dataText(page))["paths"].size(), 2U);
    EXPECT_EQ(between(page, "<title>", "</title>"), "Device report");
    for (auto const* const place : {"{{title}}", "{{csp}}", "{{style}}", "{{script}}", "{{data}}"})
        EXPECT_EQ(page.find(place), std::string::npos) << place;
}

TEST_F(ReportCommand, WritesTheSamePageToStandardOutput) {
    report({"--output", "out.html"});
    auto const outcome = report({"-o", "-"});
    EXPECT_EQ(outcome.out, file("out.html"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCommand, FindsTheFoldersBelowARoot) {
    auto const root = device.directory() / "image";
    std::filesystem::create_directories(root / "usr/lib64");
    std::filesystem::rename(device.preinitDir(), root / "usr/lib64/preinit");
    std::filesystem::rename(device.profileDir(), root / "usr/lib64/KeldaMountProfiles");
    auto const outcome = KeldaProgram().run({"report", "-o", "-", "--root", root.string()});
    EXPECT_EQ(Json::parse(dataText(outcome.out))["agents"][0]["name"], "A");
}

TEST_F(ReportCommand, TakesFaultsForFindings) {
    device.profile("B", "agentName:B\nc,T,r\nsyntax\n");
    auto const outcome = report({"-o", "out.html"});
    EXPECT_EQ(outcome.err, "report written to out.html: 2 agents, 2 paths, 3 findings\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ReportCommand, TakesThePlaceOfAnOldPageAndKeepsItsPermissions) {
    auto const path = device.directory().write("out.html", "old");
    chmod(path.c_str(), 0640);
    EXPECT_EQ(report({"-o", "out.html"}).status, 0);
    EXPECT_THAT(file("out.html"), StartsWith("<!"));
    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(ReportCommand, TellsAFileThatCannotBeWritten) {
    auto const outcome = report({"-o", "none/out.html"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "kelda report: cannot write none/out.html: No such file or directory\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(ReportCommand, LeavesTheOldPageWhereAFolderCannotBeRead) {
    device.directory().write("out.html", "old");
    for (auto const* const option : {"--preinit", "--profiles"}) {
        auto words =
            Words{"report", "-o", "out.html", "--preinit", "preinit", "--profiles", "profiles"};
        *(std::find(words.begin(), words.end(), option) + 1) = "none";
        auto const outcome = KeldaProgram().inFolder(device.directory().path()).run(words);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "kelda: Cannot open directory none\n");
        EXPECT_EQ(outcome.status, 2);
    }
    EXPECT_EQ(file("out.html"), "old");
}

struct Wrong {
    Words words;
    std::string message;
};

class EveryWrongReport : public ReportCommand, public testing::WithParamInterface<Wrong> {};

TEST_P(EveryWrongReport, IsTold) {
    auto const outcome = report(GetParam().words);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "kelda report: " + GetParam().message + "\nTry 'kelda report --help'.\n");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(Report, EveryWrongReport,
                         testing::Values(Wrong{{}, "--output is required"},
                                         Wrong{{"-o", ""}, "--output: must not be empty"},
                                         Wrong{{"-o", "-", "--title", ""},
                                               "--title: must not be empty"},
                                         Wrong{{"-o", "-", "more"}, "unexpected argument 'more'"}));

TEST_F(ReportCommand, ShowsItsHelp) {
    auto const outcome = KeldaProgram().run({"report", "--help"});
    EXPECT_EQ(outcome.out, support::expected("help-report.txt"));
    EXPECT_EQ(outcome.status, 0);
}

// Names that are no mere names to a browser.
std::vector<std::string> const hostileNames = {
    "<script>alert(1)</script>",
    "</script><script>alert(1)</script>",
    "<!--<script>",
    "-->",
    "]]>",
    "{{data}}{{title}}",
    "\"'`",
    "&lt;&quot;",
    "a\x01\x1b[31m\x7f",
    "\u2028\u2029\u202e",
    "\xff\xc0\xaf\xed\xa0\x80",
    "__proto__",
    "</title>",
};

class EveryHostileName : public testing::TestWithParam<std::string> {
  protected:
    // Bytes that are no text are replaced.
    static std::string shown(std::string const& bytes) {
        auto const json = Json(bytes).dump(-1, ' ', false, Json::error_handler_t::replace);
        return Json::parse(json);
    }
};

TEST_P(EveryHostileName, StaysAName) {
    auto const& name = GetParam();
    Device device;
    device.preinit("P", name + "," + name + "\n")
        .profile("A", "agentName:" + name + "\nMountGroup:" + name + "\n" + name + "," + name +
                          ",r\n" + name + "\n");
    auto const page = reportOf(device.directory().path()).out;
    auto const data = Json::parse(dataText(page));
    EXPECT_EQ(data.at("paths").at(0).at("p"), shown(name));
    EXPECT_EQ(data.at("paths").at(0).at("t"), shown(name));
    EXPECT_EQ(data.at("agents").at(0).at("name"), shown(name));
    EXPECT_EQ(data.at("lines").at(0).at("g"), shown(name));
    EXPECT_EQ(dataText(page).find_first_of("<>&"), std::string::npos);
    EXPECT_THAT(page, HasSubstr("</html>"));
}

TEST_P(EveryHostileName, StaysATitle) {
    auto const& name = GetParam();
    Device const device;
    auto const page = reportOf(device.directory().path(), {"-o", "-", "--title", name}).out;
    auto const title = between(page, "<title>", "</title");
    EXPECT_EQ(title.find_first_of("<>\"'"), std::string::npos) << title;
    EXPECT_EQ(title.find("{{data}}") == std::string::npos,
              name.find("{{data}}") == std::string::npos);
    // Without the title, the page is that of any other one.
    auto const other = reportOf(device.directory().path(), {"-o", "-", "--title", "x"}).out;
    EXPECT_EQ(page.substr(page.find("</title>")), other.substr(other.find("</title>")));
}

INSTANTIATE_TEST_SUITE_P(Report, EveryHostileName, testing::ValuesIn(hostileNames));

TEST(HostileFiles, ANulCharacterDoesNotEndTheData) {
    Device device;
    device.preinit("P", "a,T\n\0b,T\n"s).profile("A", "agentName:A\na,T,r\nb\0</script>,T,r\n"s);
    auto const data = dataOf(device.directory().path());
    EXPECT_EQ(data["agents"].size(), 1U);
    EXPECT_FALSE(data["findings"].empty());
}

TEST(HostileFiles, AFileNameIsToldByItsBytes) {
    Device device;
    auto const name = "A<!--\n\xff{{data}}"s;
    device.preinit("P", "a,T\n").profile(name, "agentName:A\na,T,r\n");
    auto const data = dataOf(device.directory().path());
    EXPECT_EQ(data["files"][1], "profiles/A<!--\n\ufffd{{data}}");
}

} // namespace
