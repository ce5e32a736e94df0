// Devices made of random lines in the words of both file languages. The same seed always gives the
// same device; most lines are valid, so that both faulty devices and clean ones come about.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "Device.h"

namespace support {

// A small generator of its own: the same numbers in every standard library.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}

    // 0 to n - 1.
    std::size_t below(std::size_t n) {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return static_cast<std::size_t>((mixed ^ (mixed >> 31U)) % n);
    }
    bool oneIn(std::size_t n) { return below(n) == 0; }
    std::string oneOf(std::initializer_list<char const*> words) {
        return words.begin()[below(words.size())];
    }

  private:
    std::uint64_t state_;
};

class RandomDevice {
  public:
    // One in `faultOdds` words of a line is a word that is probably wrong there.
    RandomDevice(std::uint64_t seed, std::size_t faultOdds) : dice_(seed), odds_(faultOdds) {
        device_.preinit("Base", base);
        for (std::size_t i = dice_.below(3); i > 0; --i)
            device_.preinit("P" + std::to_string(i), lines(6, &RandomDevice::preinitLine));
        for (std::size_t i = 1 + dice_.below(4); i > 0; --i)
            device_.profile("M" + std::to_string(i), agentNameLine() + profileLines(8));
        for (auto const* const shared : {"Shared", "SharedToo"})
            if (!dice_.oneIn(odds_))
                device_.profile(shared, lines(3, &RandomDevice::sharedLine));
        for (auto const* const group : {"DefaultMountGroup", "DefaultMountGroupPerAgent"})
            if (!dice_.oneIn(3))
                device_.profile(group, lines(3, &RandomDevice::defaultLine));
        for (std::size_t i = 1 + dice_.below(2); i > 0; --i)
            agents_.emplace_back(agentString(), dice_.oneIn(4) ? "Other" : "");
    }

    Device const& device() const { return device_; }
    // Agent strings with their overrides.
    std::vector<std::pair<std::string, std::string>> const& agents() const { return agents_; }

    template <class Parser>
    void addAgents(Parser& parser) const {
        for (auto const& [agent, override] : agents_)
            parser.addAgent(agent, override);
    }

  private:
    // Wildcard paths that the words of profile lines lead to.
    static constexpr char base[] = "a,Fen::Dir\n"
                                   "a/b,T\n"
                                   "a/c,Fen::Dir\n"
                                   "a/c/d,T\n"
                                   "CONFIG:conf/x,T\n"
                                   "%cellPath/sys,T\n"
                                   "s/1,T\ns/1/b,Fen::Dir\ns/1/b/%x,U,createOnMount\n"
                                   "s/%slot,T,createOnMount\n"
                                   "s/%slot/b,Fen::Dir,createOnMount\n"
                                   "s/%slot/b/%x,U,createOnMount\n";

    // Mostly one of the good words, now and then one of the bad.
    std::string word(std::initializer_list<char const*> good,
                     std::initializer_list<char const*> bad) {
        return dice_.oneIn(odds_) ? dice_.oneOf(bad) : dice_.oneOf(good);
    }
    std::string path() {
        return word({"a/b", "a/c", "a/c/d", "conf/x", "%cellPath/sys", "s/%cellId", "s/1", "s/1/b",
                     "s/1/b/%sliceId", "s/%agentString", "cell/%cellId/sys", "a/b/", "a"},
                    {"", "/", "/a/b", "x", "%", "s/%nosuch", "a//b", "s/%", "a/%b", "a\\b", "a b"});
    }
    std::string flags() {
        return word({"r", "w", "rw", "wc", "rcd", "", "i", "fS", "K", "t"},
                    {"x", "cD", "d", "r,w", "R", "\xff"});
    }
    std::string agentNameLine() {
        return word({"agentName: A", "agentName: A-1", "agentName: A-%slot", "AGENTNAME:A-%slot$",
                     "# none\n\nagentName: B", "agentName: A-%slot-%x"},
                    {"agentName:", "", "foo", "agentName: A-$", "  # agentName: A"}) +
               lineEnd();
    }
    std::string agentString() {
        return dice_.oneOf({"A", "A", "A-1", "A-1", "A-1-2", "A-1-2-3", "A-", "B", "A-Active-1",
                            "A-Active-1-2", "Nobody", "-", ""});
    }
    std::string lineEnd() {
        return word({"\n", "\n", "\n", " \n", "\r\n", " # why\n", "\t\n"},
                    {"\\\n", "\\ \n", " # why \\\n", ""});
    }

    std::string preinitLine() {
        if (dice_.oneIn(6))
            return dice_.oneOf({"# comment\n", "\n", "  \n", "\t# comment\n"});
        return word({"p/q,T", "p/q,U", "CONFIG:p/c,T", "config : p/c, T", "p/r,T,createOnStandby",
                     "p/r , T , CREATEONSTANDBY", "p/q/s,Fen::Dir", "q/%cellId,T", "q/%cell,T",
                     "%peerCellPath/p,U", "q/r/,T", "q/%y,T,createOnMount", "a/b,T"},
                    {"p/r,T", "CONFIG:q/%cellId,T", "p/%nosuch,T", "p", "p,T,foo", "p,T,", ",",
                     "p,T,createOnMount,x", "CONFIG:z,T,createOnMount", "CONFIG:,T", "%,T",
                     "CONFIG:CONFIG:p,T", "a/b,U", "p//q,T", "/p,T", "p\\q,T", "p,"}) +
               lineEnd();
    }
    std::string pathLine() {
        return path() + "," + word({"T", "U"}, {""}) + "," + flags() + lineEnd();
    }
    std::string sharedLine() {
        return word({"", "", "", "# comment\n", "\n"}, {"activeMount\n", "foo\n", "alias:%x=1\n"}) +
               pathLine();
    }
    std::string defaultLine() {
        return word({"", "", "", "subAgent: S\n", "MountGroup: late\n", "alias:%x=1\n"},
                    {"agentName: A\n", "Include: nosuch\n", "activeMount\n", "foo\n"}) +
               pathLine();
    }
    std::string aliasLine() {
        return word({"alias:%x=", "ALIAS : %Y1 =", "alias:%slot="},
                    {"alias:x=", "alias:%=", "alias:%_x=", "alias:%x"}) +
               word({"1", "%cellId", "%sliceId,%cellId", "abc~b", "%sysname~x", "1?2:3", "",
                     "%agentString"},
                    {"%nosuch", "1?2", "%nosuch,1", "%", "?:", "~", ","}) +
               lineEnd();
    }
    std::string keywordLine() {
        return word({"MountGroup: g", "mountgroup:h,5", "subAgent: S-%cellId", "rootFlags: rw",
                     "rootFlags:", "connectionFlags: SN", "Include: Shared", "include:Shared*",
                     "Include: nosuch*", "Include: ConfigMountProfile", "noDefaultMountGroup"},
                    {"MountGroup: all", "MountGroup:g,0", "subAgent:%nosuch", "rootFlags: x",
                     "connectionFlags: r", "Include: nosuch", "Include: *", "foo", "Include: M1",
                     "activeMount", "matchActiveName", "Condition: a b", "ConditionBlocker: c"}) +
               lineEnd();
    }
    std::string profileLine() {
        switch (dice_.below(8)) {
        case 0:
            return dice_.oneOf({"# comment\n", "\n", " \t\n"});
        case 1:
            return aliasLine();
        case 2:
        case 3:
            return keywordLine();
        default:
            return pathLine();
        }
    }
    // The keywords that exclude each other lead a profile, so that most go together.
    std::string profileLines(std::size_t most) {
        return dice_.oneOf({"", "", "activeMount\n", "activeMount\nmatchActiveName\n",
                            "Condition: a b\n"}) +
               lines(most, &RandomDevice::profileLine);
    }
    std::string lines(std::size_t most, std::string (RandomDevice::*line)()) {
        std::string text;
        for (std::size_t i = dice_.below(most + 1); i > 0; --i)
            text += (this->*line)();
        if (!text.empty() && dice_.oneIn(6))
            text.pop_back(); // no line end at the end
        return text;
    }

    Dice dice_;
    std::size_t odds_;
    Device device_;
    std::vector<std::pair<std::string, std::string>> agents_;
};

} // namespace support
