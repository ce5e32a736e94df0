// The files for the editor Vim: the syntax files are those that the program prints, and a real Vim
// takes them all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <fmt/format.h>

#include "CheckResults.h"
#include "check/CheckFormats.h"
#include "database/language/Keywords.h"
#include "database/language/VimSyntax.h"
#include "support/FileContent.h"
#include "support/TemporaryDirectory.h"

namespace {

using KeldaDatabase::FileFamily;
using support::TemporaryDirectory;
using testing::HasSubstr;

std::string vimFolder() {
    return std::string(KELDA_SOURCE_DIR) + "/contrib/vim";
}

TEST(VimSyntax, IsKeptAsItIsPrinted) {
    EXPECT_EQ(support::contentOf(vimFolder() + "/syntax/kelda-preinit.vim"),
              vimSyntax(FileFamily::preinit));
    EXPECT_EQ(support::contentOf(vimFolder() + "/syntax/kelda-profile.vim"),
              vimSyntax(FileFamily::profile));
}

TEST(VimSyntax, KnowsEachWordOfTheLanguage) {
    auto const preinit = vimSyntax(FileFamily::preinit);
    auto const profile = vimSyntax(FileFamily::profile);
    for (auto const& keyword : KeldaDatabase::keywords()) {
        auto const rule = fmt::format("Keyword /^\\s*\\V{}", keyword.spelling);
        EXPECT_EQ(preinit.find(rule) != std::string::npos, keyword.family == FileFamily::preinit);
        EXPECT_EQ(profile.find(rule) != std::string::npos, keyword.family == FileFamily::profile);
    }
    for (auto const& word : KeldaDatabase::preinitAttributes())
        EXPECT_THAT(preinit, HasSubstr(fmt::format("\\V{}\\m", word.spelling)));
    for (auto const& word : KeldaDatabase::predefinedTokens())
        EXPECT_THAT(profile, HasSubstr(fmt::format("\\V{}\\m", word.spelling)));
}

// Runs Vim on a script, behind lines that make it find the files.
class Vim {
  public:
    static bool isInstalled() {
        return std::system("vim --version 2> /dev/null | grep -q '+syntax' && "
                           "vim --version | grep -q '+eval'") == 0;
    }

    TemporaryDirectory const& folder() const { return folder_; }

    // What the script writes to the file "out".
    std::string run(std::string const& script) const {
        folder_.write("script.vim",
                      fmt::format("set nomore runtimepath^={}\n{}\nqall!\n", vimFolder(), script));
        auto const command =
            fmt::format("cd '{}' && LC_ALL=C.UTF-8 timeout 60 vim -N -u NONE -i NONE "
                        "-es -S script.vim < /dev/null > messages 2>&1",
                        folder_.string());
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(support::contentOf(folder_ / "messages"), "");
        return support::contentOf(folder_ / "out");
    }

  private:
    TemporaryDirectory folder_;
};

#define SKIP_WITHOUT_VIM()                                                                         \
    if (!Vim::isInstalled())                                                                       \
    GTEST_SKIP() << "Vim is not installed, or without its scripts and colours"

// The groups of a file's characters, a line each: "Keyword(agentName:) Token(%x)".
constexpr char const* groupsOfFile =
    "filetype on\n"
    "syntax on\n"
    "execute 'edit ' . file\n"
    "let lines = ['filetype ' . &filetype]\n"
    "for lnum in range(1, line('$'))\n"
    "  let pieces = []\n"
    "  let last = ''\n"
    "  for col in range(1, col([lnum, '$']) - 1)\n"
    "    let group = substitute(synIDattr(synID(lnum, col, 1), 'name'), "
    "'^kelda\\(Preinit\\|Profile\\)', '', '')\n"
    "    if group !=# last\n"
    "      if last !=# '' | let pieces[-1] .= ')' | endif\n"
    "      if group !=# '' | call add(pieces, group . '(') | endif\n"
    "    endif\n"
    "    if group !=# '' | let pieces[-1] .= getline(lnum)[col - 1] | endif\n"
    "    let last = group\n"
    "  endfor\n"
    "  if last !=# '' | let pieces[-1] .= ')' | endif\n"
    "  call add(lines, join(pieces))\n"
    "endfor\n"
    "call writefile(lines, 'out')\n";

std::string groupsOf(std::string const& file, std::string const& text) {
    Vim const vim;
    vim.folder().makeDirectory("preinit");
    vim.folder().makeDirectory("profiles");
    vim.folder().write(file, text);
    return vim.run(fmt::format("let file = '{}'\n{}", file, groupsOfFile));
}

TEST(Vim, ColoursAProfile) {
    SKIP_WITHOUT_VIM();
    EXPECT_EQ(groupsOf("profiles/Fan", "agentName: Fan-%slot$\n"
                                       "activeMount # why\n"
                                       "activeMounts\n"
                                       "alias: %a = %slot ? x : y\n"
                                       "mountgroup: g, 10\n"
                                       "fan/%slot/s, F::S, rw  # kelda: allow flag-unknown: so\n"
                                       "%cellPath/a, A, \\\n"
                                       "  rz\n"
                                       "a,A,w i,r\n"),
              "filetype kelda-profile\n"
              "Keyword(agentName:) AgentName( Fan-) Token(%slot$)\n"
              "Keyword(activeMount ) Comment(# why)\n"
              "\n"
              "Keyword(alias:) Alias( ) Token(%a) Alias( ) Operator(=) Alias( ) Token(%slot) "
              "Alias( ) Operator(?) Alias( x ) Operator(:) Alias( y)\n"
              "Keyword(mountgroup:)\n"
              "Path(fan/) Token(%slot) Path(/s) TypeComma(,) Type(F::S) LastComma(,) Flags(rw) "
              "Comment(# ) Allow(kelda: allow) Comment( flag-unknown: so)\n"
              "Known(%cellPath) Path(/a) TypeComma(,) Type(A) LastComma(,) LastContinued(\\)\n"
              "Flags(r) Last(z)\n"
              "Path(a) TypeComma(,) Type(A) LastComma(,) Flags(w) Flags(i) Last(,) Flags(r)\n");
}

TEST(Vim, ColoursAPreinitFile) {
    SKIP_WITHOUT_VIM();
    EXPECT_EQ(groupsOf("preinit/Fans", "# TODO: more\n"
                                       "config: a/b, A\n"
                                       "fan/%slot, F, createOnMount\n"
                                       "a, A, createOnMounts\n"),
              "filetype kelda-preinit\n"
              "Comment(# ) Todo(TODO) Comment(: more)\n"
              "Keyword(config:) Path( a/b) TypeComma(,) Type(A)\n"
              "Path(fan/) Token(%slot) TypeComma(,) Type(F) LastComma(,) Attribute(createOnMount)\n"
              "Path(a) TypeComma(,) Type(A) LastComma(,) Last(createOnMounts)\n");
}

TEST(Vim, LeavesFilesOfOtherFoldersAlone) {
    SKIP_WITHOUT_VIM();
    Vim const vim;
    vim.folder().write("profiles/Fan", "a\n");
    EXPECT_EQ(vim.run("filetype on\nedit profiles/Fan\ncall writefile([&filetype], 'out')"), "\n");
}

TEST(Vim, FindsTheFindingsOfACheck) {
    SKIP_WITHOUT_VIM();
    Vim const vim;
    vim.folder().write("text", KeldaTool::checkConcise(toolunits::sampleResult()) +
                                   "a/b:3: error: m [flag-unknown]\n");
    EXPECT_EQ(vim.run("compiler kelda\n"
                      "cgetfile text\n"
                      "call writefile(map(getqflist(), {_, f -> join([bufname(f.bufnr), f.lnum, "
                      "f.col, f.type, f.text], '|')}), 'out')"),
              "profiles/Fan|7|24|e|Encountered unknown mount flag z [flag-unknown]\n"
              "preinit/Slots|20|1|e|Redefining attribute for slot/%x / Old Attribute: "
              "createOnStandby / New Attribute: createOnMount [attribute-redefined]\n"
              "profiles/Led|2|1|e|syntax error: 'MountGrop:leds' [unknown-keyword]\n"
              "|0|0|e|Cannot open directory profiles [directory-unreadable]\n"
              "profiles/Old|0|0|w|no agent loads this file [orphan-file]\n"
              "profiles/Led|5|8|n|alias 'led' is not used [alias-unused]\n"
              "a/b|3|0|e|m [flag-unknown]\n");
}

TEST(Vim, CallsKeldaForTheDeviceThatIsSet) {
    SKIP_WITHOUT_VIM();
    Vim const vim;
    EXPECT_EQ(vim.run("let g:kelda_device = '--preinit \"a b\" --profiles c'\n"
                      "compiler kelda\n"
                      "call writefile([&makeprg], 'out')"),
              "kelda check --format concise --preinit \"a b\" --profiles c $*\n");
    EXPECT_EQ(vim.run("compiler kelda\ncall writefile([&makeprg], 'out')"),
              "kelda check --format concise  $*\n");
}

} // namespace
