#include "VimSyntax.h"

#include <initializer_list>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "Keywords.h"

namespace KeldaDatabase {
namespace {

std::string_view languageOf(FileFamily family) {
    return family == FileFamily::preinit ? "preinit" : "profile";
}

// A word within "/.../" and behind "\V", where only these two mean anything but themselves.
std::string patternOf(std::string_view word) {
    std::string pattern;
    for (char const c : word) {
        if (c == '\\' || c == '/')
            pattern += '\\';
        pattern += c;
    }
    return pattern;
}

class Syntax {
  public:
    explicit Syntax(FileFamily family)
        : family_(family),
          prefix_(family == FileFamily::preinit ? "keldaPreinit" : "keldaProfile") {}

    std::string text() {
        writeHead();
        writeTokens(); // before what may begin with one: of equal places the later rule counts
        writePaths();
        if (family_ == FileFamily::preinit)
            writePreinit();
        else
            writeProfile();
        writeComments();
        writeLinks();
        return std::move(text_);
    }

  private:
    template <class... Arguments>
    void write(fmt::format_string<Arguments...> form, Arguments&&... arguments) {
        fmt::format_to(std::back_inserter(text_), form, std::forward<Arguments>(arguments)...);
    }
    // A rule; "@" in it stands for the language's prefix.
    void rule(std::string_view line) {
        for (char const c : line)
            if (c == '@')
                text_ += prefix_;
            else
                text_ += c;
        text_ += '\n';
    }

    void writeHead() {
        write("\" Vim syntax file\n"
              "\" Language: KeldaBase {0} files, kelda-{0}(5)\n"
              "\" Printed by kelda_vim_syntax {0} from the words that the library knows: change "
              "those.\n"
              "\n"
              "if exists('b:current_syntax')\n"
              "  finish\n"
              "endif\n"
              "let s:cpo = &cpo\n"
              "set cpo&vim\n"
              "syn case ignore\n",
              languageOf(family_));
    }

    // "path, type, third": each field begins behind the comma of the one before.
    void writePaths() {
        write("\n\" Path lines: a path, a type, {}.\n",
              family_ == FileFamily::preinit ? "an attribute" : "flags");
        rule("syn match @Path /^[^,#]\\+\\ze,/ contains=@Token,@Keyword nextgroup=@TypeComma");
        rule("syn match @TypeComma /,/ contained skipwhite skipnl nextgroup=@TypeContinued,@Type");
        rule("syn match @TypeContinued /\\\\$/ contained skipwhite skipnl nextgroup=@Type");
        rule("syn match @Type /[^,#\\\\[:blank:]][^,#\\\\]*/ contained nextgroup=@LastComma");
        rule("syn match @LastComma /,/ contained skipwhite skipnl nextgroup=@LastContinued,@Last");
        rule("syn match @LastContinued /\\\\$/ contained skipwhite skipnl nextgroup=@Last");
    }

    void writePreinit() {
        rule("syn match @Last /[^#\\\\[:blank:]]\\+/ contained skipwhite nextgroup=@Last "
             "contains=@Attribute");
        for (auto const& word : preinitAttributes())
            write("syn match {}Attribute /\\<\\V{}\\m\\>/ contained \" {}\n", prefix_,
                  patternOf(word.spelling), word.meaning);
        writeKeywords(" contained");
    }

    void writeProfile() {
        rule("syn match @Last /[^#\\\\[:blank:]]\\+/ contained skipwhite nextgroup=@Last "
             "contains=@Flags");
        write("syn case match\n"
              "syn match {}Flags /[{}{}{}]\\+/ contained\n"
              "syn case ignore\n",
              prefix_, mountFlagLetters(), internalFlagLetters(), connectionFlagLetters());
        text_ += "\n\" Keywords begin a line; some are the whole line.\n";
        writeKeywords("");
        rule("syn match @Operator /[?:~=]/ contained");
        rule("syn match @Alias /^\\s*alias:.*$/ contains=@Keyword,@Token,@Operator,@Comment");
        rule("syn match @AgentName /^\\s*agentName:.*$/ contains=@Keyword,@Token");
    }

    void writeKeywords(std::string_view option) {
        for (auto const& keyword : keywords())
            if (keyword.family == family_) {
                bool const isWholeLine = keyword.value == KeywordValue::nothing;
                write("syn match {}Keyword /^\\s*\\V{}{}/{} \" {}\n", prefix_,
                      patternOf(keyword.spelling), isWholeLine ? "\\m\\s*\\($\\|#\\)\\@=" : "",
                      option, keyword.meaning);
            }
    }

    void writeTokens() {
        text_ += "\n\" Tokens and aliases.\n";
        rule("syn match @Token /%\\w\\+\\$\\?/");
        for (auto const& word : predefinedTokens())
            write("syn match {}Known /\\V{}\\m\\>/ contained containedin={}Token \" {}\n", prefix_,
                  patternOf(word.spelling), prefix_, word.meaning);
    }

    void writeComments() {
        text_ += "\n\" Comments, and those that kelda check reads.\n";
        rule("syn match @Comment /#.*$/ contains=@Allow,@Todo");
        rule("syn match @Allow /#\\s*\\zskelda: allow\\(-file\\)\\?\\>/ contained");
        rule("syn keyword @Todo TODO FIXME contained");
        rule("syn match @Continued /\\\\$/");
    }

    void writeLinks() {
        text_ += "\n";
        for (auto const& [group, known] :
             std::initializer_list<std::pair<std::string_view, std::string_view>>{
                 {"Keyword", "Statement"},
                 {"Type", "Type"},
                 {"Token", "Identifier"},
                 {"Known", "Constant"},
                 {"Comment", "Comment"},
                 {"Allow", "PreProc"},
                 {"Todo", "Todo"},
                 {"Continued", "Special"},
                 {"TypeContinued", "Special"},
                 {"LastContinued", "Special"}})
            write("hi def link {}{} {}\n", prefix_, group, known);
        if (family_ == FileFamily::preinit)
            write("hi def link {0}Attribute StorageClass\nhi def link {0}Last Error\n", prefix_);
        else
            write("hi def link {0}Flags StorageClass\nhi def link {0}Last Error\n"
                  "hi def link {0}Operator Operator\nhi def link {0}AgentName Title\n",
                  prefix_);
        write("\nlet b:current_syntax = 'kelda-{}'\n"
              "let &cpo = s:cpo\n"
              "unlet s:cpo\n",
              languageOf(family_));
    }

    FileFamily family_;
    std::string_view prefix_;
    std::string text_;
};

} // namespace

std::string vimSyntax(FileFamily family) {
    return Syntax(family).text();
}

} // namespace KeldaDatabase
