#include "formatting/FileFormatting.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Text.h"
#include "database/language/Keywords.h"
#include "formatting/SameMeaning.h"
#include "formatting/SourceLines.h"

namespace KeldaTool {
namespace {

namespace fs = std::filesystem;
using KeldaDatabase::FileFamily;

[[noreturn]] void fail(std::string const& path, int error) {
    throw std::runtime_error(
        fmt::format("cannot read {}: {}", printable(path), std::strerror(error)));
}

// The line without blanks and comment; of a line that is kept as it is, its beginning.
std::string codeOf(SourceLine const& source) {
    if (source.parts.empty())
        return withoutBlanks(source.bytes.substr(0, source.bytes.find_first_of("#\n")));
    std::string line;
    for (auto const& part : source.parts)
        line += withoutBlanks(part.substr(0, part.find('#')));
    return line;
}

// Positive for a path line that only a profile has, negative for one that only a preinit file has.
int leaning(std::string_view line) {
    if (KeldaDatabase::keywordOf(line, FileFamily::preinit) != nullptr)
        return -1;
    auto const commas = std::ranges::count(line, ',');
    if (commas == 0)
        return 0;
    auto const last = line.substr(line.rfind(',') + 1);
    bool const isAttribute = std::ranges::any_of(
        KeldaDatabase::preinitAttributes(), [last](KeldaDatabase::Word const& attribute) {
            return last.size() == attribute.spelling.size() && beginsWith(last, attribute.spelling);
        });
    return commas == 1 || isAttribute ? -1 : 1;
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ != -1)
            close(number_);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

// A folder and others of its kind are passed over when a whole folder is read.
bool isReadByTheParser(fs::directory_entry const& entry) {
    auto const name = entry.path().filename().string();
    std::error_code ignored;
    bool const isFile = !entry.is_directory(ignored);
    bool const hasSemicolon = name.find(';') != std::string::npos;
    return isFile && !name.starts_with('.') && !name.ends_with('~') &&
           !(hasSemicolon && std::getenv("Q9_CHROOT") != nullptr);
}

} // namespace

FileFamily familyOf(std::string_view text) {
    int sum = 0;
    for (auto const& source : sourceLines(text, FileFamily::profile)) {
        auto const line = codeOf(source);
        if (KeldaDatabase::keywordOf(line, FileFamily::profile) != nullptr)
            return FileFamily::profile;
        if (source.obstacle.empty())
            sum += leaning(line);
    }
    return sum < 0 ? FileFamily::preinit : FileFamily::profile;
}

std::optional<FileFamily> familyOfFolder(std::string const& folder,
                                         std::vector<FamilyFolder> const& known) {
    std::error_code error;
    for (auto const& candidate : known)
        if (fs::equivalent(folder, candidate.path, error))
            return candidate.family;
    auto path = fs::weakly_canonical(folder, error);
    if (path.filename().empty())
        path = path.parent_path();
    if (path.filename() == "preinit")
        return FileFamily::preinit;
    if (path.filename() == "profiles" || path.filename() == "KeldaMountProfiles")
        return FileFamily::profile;
    return std::nullopt;
}

std::vector<std::string> filesOfFolder(std::string const& folder) {
    std::vector<std::string> files;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (fs::directory_iterator const end; !error && entry != end; entry.increment(error))
        if (isReadByTheParser(*entry))
            files.push_back(entry->path().string());
    if (error)
        fail(folder, error.value());
    std::ranges::sort(files);
    return files;
}

std::string textOfFile(std::string const& path) {
    // Opening a pipe must not wait for a writer.
    Descriptor const file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.number() == -1)
        fail(path, errno);
    struct stat status {};
    if (fstat(file.number(), &status) != 0)
        fail(path, errno);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error(fmt::format("{} is no regular file", printable(path)));
    std::string text;
    std::array<char, 65536> buffer{};
    for (;;) {
        auto const count = read(file.number(), buffer.data(), buffer.size());
        if (count == 0)
            return text;
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail(path, errno);
    }
}

ProvenLayout provenLayout(std::string_view text, FileFamily family, LayOut const& layOut) {
    ProvenLayout result{layOut(text, family), std::nullopt};
    if (result.layout.text != text)
        result.difference = differenceInMeaning(text, result.layout.text, family);
    return result;
}

} // namespace KeldaTool
