// Random devices for the side of the database: several profiles for one agent, keywords that meet
// in one agent only, paths that two lines give different types, and lines as no editor would leave
// them. The same seed always gives the same device.
//
// Values of tokens make no difference to what is wrong: each token has paths of its own, and no
// alias looks into one.
#pragma once

#include <cstdint>
#include <string>

#include "Device.h"
#include "RandomFiles.h"

namespace support {

class RandomDatabase {
  public:
    // One in `faultOdds` words is a word that is probably wrong where it stands.
    RandomDatabase(std::uint64_t seed, std::size_t faultOdds) : dice_(seed), odds_(faultOdds) {
        device_.preinit("Base", base());
        if (dice_.oneIn(4))
            device_.preinit("More", moreDeclarations());
        addIncludeFiles();
        addDefaultGroups();
        for (std::size_t i = 1 + dice_.below(5); i > 0; --i)
            addProfile("M" + std::to_string(i));
        for (std::size_t i = dice_.below(3); i > 0; --i) // read after the files to include
            addProfile("Z" + std::to_string(i));
    }

    Device const& device() const { return device_; }

  private:
    std::string word(std::initializer_list<char const*> good,
                     std::initializer_list<char const*> bad) {
        return dice_.oneIn(odds_) ? dice_.oneOf(bad) : dice_.oneOf(good);
    }

    // --- preinit files ---

    // "m/1" has other types than "m/*": lines that lead to the same path may differ in its type.
    std::string base() {
        std::string text = "m/1,T\nm/2,Fen::Dir\nm/%x,U,createOnMount\nm/%x/b,T,createOnMount\n"
                           "m/1/b,Fen::Dir\nm/1/b/c,U\nm/%x/b/c,U,createOnMount\n"
                           "n/a,T\nn/a/b,T\nn/a/b/c,T\nn/d,Fen::Dir\nn/d/e,T\n"
                           "CONFIG:conf/x,T\nCONFIG:conf/y/z,T\n%cellPath/sys,T\n";
        for (auto const* const token : {"fa", "fb", "pp", "ag", "pg"})
            text += std::string(token) + "/%x,T,createOnMount\n" + token +
                    "/%x/b,T,createOnMount\n" + token + "/%x/d,Fen::Dir,createOnMount\n";
        return text;
    }
    std::string moreDeclarations() {
        return word({"p/q,T\n", "p/q,T\\\n,createOnStandby\r\n", "CONFIG:n/c,T\n", "n/a,U\n",
                     "# none\n\n"},
                    {"p,T,foo\n", "p/%q,T\n", "n/a,T,createOnStandby\n", "CONFIG:p/%cellId,T\n",
                     "p\n", "# why \\\n", "p/q,T\\ \n"}) +
               word({"", "p/r,T\n"}, {"p/r\n"});
    }

    // --- files that others read ---

    void addIncludeFiles() {
        device_.profile("Shared", lines(3, &RandomDatabase::includedLine));
        device_.profile("SharedToo", lines(3, &RandomDatabase::includedLine));
        device_.profile("Supervise", "activeMount\n" + lines(2, &RandomDatabase::includedLine));
        if (dice_.oneIn(3))
            device_.profile("Shared~", "foo\n");
    }
    void addDefaultGroups() {
        if (!dice_.oneIn(3))
            device_.profile("DefaultMountGroup", lines(4, &RandomDatabase::defaultLine));
        if (!dice_.oneIn(3))
            device_.profile("DefaultMountGroupPerAgent", lines(3, &RandomDatabase::perAgentLine));
    }

    // --- profiles ---

    // The tokens of "Fan" are never more than those that an agent string of "Fan-Tray" has left.
    void addProfile(std::string const& file) {
        name_ = word({"Led", "Led", "Fan-%a", "Fan-%a", "Fan-Tray-%b", "Fan-Tray-%b-%c", "Fan-Tray",
                      "Port-%p$", "Port-%p", "Led-%a", "Fan-3", "-%p"},
                     {"Led-Active-%a", "", "Fan-%", "Led$", "Fan-Active"});
        device_.profile(file, word({"", "", "# a comment\n\n", "\r\n"}, {" # no name\n"}) +
                                  word({"agentName: ", "AGENTNAME:", "agent Name :\t"},
                                       {"agentname", "agentName : \\\n"}) +
                                  name_ + word({"\n", "\n", "\r\n", " \n"}, {""}) +
                                  keywordsInFront() + (dice_.oneIn(30) ? "" : "alias:%one=1\n") +
                                  lines(7, &RandomDatabase::profileLine));
        name_.clear();
    }
    std::string keywordsInFront() {
        switch (dice_.below(12)) {
        case 0:
            return "activeMount\n";
        case 1:
            return "activeMount\nmatchActiveName\n";
        case 2:
            return "matchActiveName\nInclude: Supervise\n";
        case 3:
            return "Condition: a b\n";
        case 4:
            return "Include: Super*\n";
        case 5:
            return dice_.oneOf({"noDefaultMountGroup\n", "matchActiveName\n"});
        case 6:
            return "activeMount\n" +
                   dice_.oneOf({" MATCHactivename # why\n", "match ActiveName\n",
                                "matchActive\\\nName\n", "rootFlags: r\\\nmatchActiveName\n",
                                "# matchActiveName\n", "matchActiveName\\\n\n"});
        default:
            return "";
        }
    }
    std::string profileLine() {
        switch (dice_.below(12)) {
        case 0:
            return dice_.oneOf({"# comment\n", "\n", " \t\n"});
        case 1:
        case 2:
            return ended(aliasText());
        case 3:
        case 4:
            return ended(keywordText());
        case 5:
            return ended(keywordInConflict());
        default:
            return ended(pathText(anyPath()));
        }
    }
    std::string includedLine() {
        return word({"", "", "", "# comment\n"}, {"activeMount\n", "foo\n", "alias:%x=1\n"}) +
               ended(pathText(sharedPath()));
    }
    std::string defaultLine() {
        return word({"", "", "", "", "subAgent: S\n", "MountGroup: late\n", "alias:%one=1\n",
                     "Include: Shared\n", "noDefaultMountGroup\n"},
                    {"agentName: Led\n", "Include: nosuch\n", "activeMount\n", "Condition: a\n",
                     "matchActiveName\n", "foo\n"}) +
               ended(pathText(sharedPath()));
    }
    std::string perAgentLine() {
        return word({"", "", "", "", "MountGroup: late\n", "Condition: a\n"},
                    {"subAgent: S\n", "activeMount\n", "matchActiveName\n", "foo\n"}) +
               ended(pathText(word({"pg/%agentString", "pg/%agentString/b", "pg/%agentString/d/"},
                                   {"pg/%nosuch", "pg/x"})));
    }

    // --- the texts of lines ---

    std::string anyPath() {
        if (!dice_.oneIn(3))
            return word({"m/%one", "m/%one/b", "m/%one/b/"}, {"m/%two"});
        if (dice_.oneIn(2))
            return sharedPath();
        return subtree() + word({"", "/b", "/d", "/"}, {"/x", "//", "/%nosuch"});
    }
    // A path that only one of the profile's tokens leads to.
    std::string subtree() {
        for (auto const* const subtree : {"fa/%a", "fb/%b", "pp/%p"})
            if (name_.find(subtree + 2) != std::string::npos && dice_.oneIn(2))
                return subtree;
        return word({"ag/%agentString"}, {"fa/%a", "fb/%b", "pp/%p"});
    }
    std::string sharedPath() {
        return word({"m/1", "m/2", "m/%cellId", "m/%peerCellId", "m/1/b", "m/%cellId/b", "m/1/b/c",
                     "m/%cellId/b/c", "n/a", "n/a/b", "n/a/b/c", "n/d", "n/d/e", "n/d/", "conf/x",
                     "%cellPath/sys"},
                    {"n", "n/x", "/n/a", "n//a", "", "m/%", "m/%nosuch", "n\\a", "N/A"});
    }
    std::string pathText(std::string const& path) {
        return path + "," + word({"T", "T", "U", "Fen::Dir"}, {""}) + "," +
               word({"r", "r", "w", "rw", "i", "S", "", "y", "wc", "t"},
                    {"x", "cD", "d", "r,w", "R"});
    }
    // What hangs on a token is never part of a path.
    std::string aliasText() {
        if (dice_.oneIn(5))
            return "alias:%own=" +
                   word({"%agentString", "%agentString~b", "%agentString?1:%one", "%own"},
                        {"%a", "%b,1", "%p"});
        return word({"alias:%one=", "alias:%one=", "ALIAS : %two ="},
                    {"alias:one=", "alias:%1=", "alias:%one"}) +
               word({"1", "%cellId", "1", "2", "abc~b", "1?2:3", "%cellId,%cellId"},
                    {"%nosuch", "1?2", "%"});
    }
    std::string keywordText() {
        return word({"MountGroup: g", "mountgroup:h,5", "subAgent: S-%cellId", "rootFlags: rw",
                     "connectionFlags: SN", "Include: Shared", "include:Shared*",
                     "Include: nosuch*", "Include: S?ared", "Include: ConfigMountProfile",
                     "noDefaultMountGroup"},
                    {"MountGroup: all", "MountGroup:g,0", "subAgent:%nosuch", "rootFlags: x",
                     "connectionFlags: r", "Include: nosuch", "Include: *", "foo", "Include: M1",
                     "activeMountX", "matchActiveNameX"});
    }
    // Each fine by itself.
    std::string keywordInConflict() {
        return dice_.oneOf({"activeMount", "Condition: a b", "ConditionBlocker: c",
                            "Include: Supervise", "activeMount", "Condition:"});
    }

    // --- how lines are written ---

    // The line with an end, now and then continued, or filled up beyond the buffer of the parser.
    std::string ended(std::string text) {
        if (dice_.oneIn(12))
            text.insert(dice_.below(text.size() + 1), "\\\n");
        if (dice_.oneIn(100))
            text.insert(dice_.below(text.size() + 1), 1000 + dice_.below(60), ' ');
        return text + word({"\n", "\n", "\n", "\n", "\r\n", " # why\n", "\t\n"},
                           {"\\\n", "\\ \n", " # why \\\n", std::string(1100, '#').c_str(), ""});
    }
    std::string lines(std::size_t most, std::string (RandomDatabase::*line)()) {
        std::string text;
        for (std::size_t i = dice_.below(most + 1); i > 0; --i)
            text += (this->*line)();
        return text;
    }

    Dice dice_;
    std::size_t odds_;
    Device device_;
    std::string name_; // agent name of the profile that is being written
};

} // namespace support
