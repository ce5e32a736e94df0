#include "FmtCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include "FileOutput.h"
#include "Output.h"
#include "Text.h"
#include "Values.h"
#include "devices/DeviceTree.h"
#include "formatting/UnifiedDiff.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::FileFamily;

constexpr char const* description =
    "Give preinit files and mount profiles their canonical layout.\n"
    "\n"
    "Columns of neighbouring path lines stand below each other, keywords are spelt as usual, and\n"
    "blanks that mean nothing go. Comments, their order and the order of lines stay. A FILE that\n"
    "is a folder means its files, and a device's folder those of its two folders. Without FILE,\n"
    "the files of the folders that options name are taken. '-' is standard input; what becomes of\n"
    "it goes to standard output.\n"
    "\n"
    "A file is only written once reading it before and after has been shown to give the same.\n"
    "Lines of which no other layout is sure to mean the same are kept as they are, and told.";

constexpr char const* footer =
    "Exit status:\n"
    "  0  The files have their layout now; with --check or --diff, they had it before.\n"
    "  1  With --check or --diff, files would change; a file could not be written, or was left\n"
    "     as it is because it would not mean the same.\n"
    "  2  The call was wrong, or a file or folder could not be read.\n"
    "\n"
    "Examples:\n"
    "  kelda fmt --preinit ./preinit --profiles ./profiles\n"
    "  kelda fmt --check ./device\n"
    "  kelda fmt --diff profiles/FanTray | patch -p0\n"
    "  kelda fmt - --family profile < buffer";

constexpr char const* standardInput = "-";

Report wrongCall(std::string const& what) {
    return {"", fmt::format("kelda fmt: {}\n", what), ExitStatus::wrongCall};
}

std::string keptText(std::string const& name, std::vector<KeptLine> const& kept) {
    std::string text;
    for (auto const& line : kept)
        text += fmt::format("{}:{}: kept as it is: {}\n", printable(name), line.line, line.reason);
    return text;
}

// Other lines than a file's own are for programs; a terminal must not obey them.
std::string shownDiff(std::string_view diff) {
    if (!outputIsTerminal())
        return std::string(diff);
    std::string text;
    while (!diff.empty()) {
        auto const end = std::min(diff.find('\n'), diff.size());
        text.append(printable(diff.substr(0, end))).append("\n");
        diff.remove_prefix(std::min(end + 1, diff.size()));
    }
    return text;
}

} // namespace

CLI::App& FmtCommand::addTo(CLI::App& program) {
    auto& command = *program.add_subcommand("fmt", description);
    options_ = &command;
    auto* const files = command.add_option("FILE", files_, "File or folder; '-' is standard input");
    mustNotBeEmpty(*files);
    auto* const check =
        command.add_flag("--check", check_, "Write nothing; list the files that would change");
    command.add_flag("--diff", diff_, "Write nothing; print what would change")->excludes(check);
    auto const take = [this](std::string const& name) {
        family_ = name == "preinit" ? FileFamily::preinit : FileFamily::profile;
    };
    auto* const family = command.add_option_function<std::string>(
        "--family", take, "What the files are, where neither folder nor text tells");
    mustBeOneOf(*family, {"preinit", "profile"});
    device_.addTo(command);
    command.footer(footer);
    return command;
}

// The folders that the options name.
std::vector<FamilyFolder> FmtCommand::folders() const {
    bool const root = options_->count("--root") > 0;
    std::vector<FamilyFolder> folders;
    if (root || options_->count("--preinit") > 0)
        folders.push_back({device_.preinitDir(), FileFamily::preinit});
    if (root || options_->count("--profiles") > 0)
        folders.push_back({device_.profileDir(), FileFamily::profile});
    return folders;
}

// Formats one file after the other, and puts together what there is to report.
class FmtCommand::Work {
  public:
    explicit Work(FmtCommand const& command) : command_(command), known_(command.folders()) {}

    Report run() {
        for (auto const& name : command_.files_)
            attempt([&] { takeNamed(name); });
        if (command_.files_.empty())
            for (auto const& folder : known_)
                attempt([&] { takeFolder(folder.path); });
        report_.messages += summary();
        return report_;
    }

  private:
    // What cannot be read is told; the others are still done.
    template <class Operation>
    void attempt(Operation const& operation) {
        try {
            operation();
        } catch (std::runtime_error const& error) {
            fail(error.what(), ExitStatus::wrongCall);
        }
    }

    void takeNamed(std::string const& name) {
        std::error_code ignored;
        if (!std::filesystem::is_directory(name, ignored))
            return takeFile(name);
        if (command_.family_ || familyOfFolder(name, known_))
            return takeFolder(name);
        takeDevice(name);
    }

    void takeDevice(std::string const& name) {
        DeviceFolders folders;
        try {
            folders = foldersOf(name);
        } catch (std::runtime_error const&) {
            throw std::runtime_error(fmt::format(
                "whether {} holds preinit files or profiles is not known; --family says so",
                printable(name)));
        }
        known_.push_back({folders.preinitDir, FileFamily::preinit});
        known_.push_back({folders.profileDir, FileFamily::profile});
        for (auto const& folder : {folders.preinitDir, folders.profileDir})
            if (std::filesystem::is_directory(folder))
                takeFolder(folder);
    }

    void takeFolder(std::string const& folder) {
        for (auto const& file : filesOfFolder(folder))
            attempt([&] { takeFile(file); });
    }

    void takeFile(std::string const& path) {
        if (!isFirst(path))
            return;
        auto const text = textOfFile(path);
        auto const [layout, difference] = provenLayout(text, familyOf(path, text));
        report_.messages += keptText(path, layout.kept);
        if (difference)
            fail(fmt::format("{} is left as it is, because it would not mean the same: {}",
                             printable(path), printable(*difference)),
                 ExitStatus::failure);
        else if (layout.text == text)
            ++unchanged_;
        else
            change(path, text, layout.text);
    }

    // The second change of a file that is named twice would not fit what the first one made of it.
    bool isFirst(std::string const& path) {
        std::error_code error;
        auto const file = std::filesystem::weakly_canonical(path, error);
        return error || taken_.insert(file).second;
    }

    FileFamily familyOf(std::string const& path, std::string const& text) const {
        if (command_.family_)
            return *command_.family_;
        auto const parent = std::filesystem::path(path).parent_path().string();
        auto const family = familyOfFolder(parent.empty() ? "." : parent, known_);
        return family ? *family : KeldaTool::familyOf(text);
    }

    void change(std::string const& path, std::string const& before, std::string const& after) {
        if (!command_.check_ && !command_.diff_ && !write(path, after))
            return;
        ++changed_;
        if (command_.check_)
            report_.results += printable(path) + "\n";
        if (command_.diff_)
            report_.results += shownDiff(unifiedDiff(printable(path), before, after));
        if (command_.check_ || command_.diff_)
            worsen(ExitStatus::failure);
    }

    bool write(std::string const& path, std::string const& text) {
        // A file in a folder of one's own could be replaced all the same.
        if (access(path.c_str(), W_OK) != 0) {
            fail(fmt::format("cannot write {}: {}", printable(path), std::strerror(errno)),
                 ExitStatus::failure);
            return false;
        }
        try {
            writeWholeFile(path, text);
        } catch (std::runtime_error const& error) {
            fail(error.what(), ExitStatus::failure);
            return false;
        }
        return true;
    }

    void fail(std::string const& what, ExitStatus status) {
        report_.messages += fmt::format("kelda fmt: {}\n", what);
        worsen(status);
    }
    void worsen(ExitStatus status) { report_.status = std::max(report_.status, status); }

    std::string summary() const {
        bool const writes = !command_.check_ && !command_.diff_;
        return fmt::format("{} {}, {} unchanged\n", counted(changed_, "file"),
                           writes ? "formatted" : "would be formatted", unchanged_);
    }

    FmtCommand const& command_;
    std::vector<FamilyFolder> known_;
    std::set<std::filesystem::path> taken_;
    Report report_;
    std::size_t changed_ = 0;
    std::size_t unchanged_ = 0;
};

Report FmtCommand::formatInput() const {
    auto const text = readStandardInput();
    auto const [layout, difference] = provenLayout(text, family_ ? *family_ : familyOf(text));
    Report report{layout.text, keptText("standard input", layout.kept), ExitStatus::success};
    if (difference) {
        report.results = check_ || diff_ ? "" : text;
        report.messages += fmt::format(
            "kelda fmt: standard input is left as it is, because it would not mean the same: {}\n",
            printable(*difference));
        report.status = ExitStatus::failure;
    } else if (check_ || diff_) {
        report.results = diff_ ? shownDiff(unifiedDiff("standard input", text, layout.text)) : "";
        report.status = layout.text == text ? ExitStatus::success : ExitStatus::failure;
        if (check_ && layout.text != text)
            report.results = "standard input\n";
    }
    return report;
}

Report FmtCommand::run(bool /*colour*/) const {
    bool const readsInput = std::ranges::find(files_, standardInput) != files_.end();
    if (readsInput && files_.size() > 1)
        return wrongCall("'-' and files do not go together");
    if (files_.empty() && folders().empty())
        return wrongCall("a file or a folder is missing");
    try {
        return readsInput ? formatInput() : Work(*this).run();
    } catch (std::runtime_error const& error) {
        return wrongCall(error.what());
    }
}

} // namespace KeldaTool
