/// The check that a directory scan asks before it reads a file. An optional plug-in library may
/// bring its own; without it every file may be read.
#pragma once

#include <memory>
#include <string>

#include <KeldaBase/Export.h>

/// What a check has to answer. One instance serves one file type: "KeldaMountProfiles" or
/// "preinit".
class KELDABASE_API FileLoadCheck {
  public:
    /// Reads whatever the check needs. The parser ignores the result and asks parsed() instead.
    virtual int parse() = 0;
    /// Whether `file` (a name without a folder) of the directory `dir` may be read.
    virtual bool canLoad(std::string const& dir, std::string const& file) = 0;
    /// The file type that the instance was made for.
    virtual std::string const& fileType() = 0;
    /// Whether parse() succeeded.
    virtual bool parsed() = 0;
    virtual ~FileLoadCheck() = default;
};

/// The built-in check: every file may be read. There is nothing to parse, so parse() gives -1 and
/// parsed() false.
class KELDABASE_API FileLoadCheckNoOp : public FileLoadCheck {
  public:
    explicit FileLoadCheckNoOp(std::string const& fileType);
    int parse() override;
    bool canLoad(std::string const& dir, std::string const& file) override;
    std::string const& fileType() override;
    bool parsed() override;

    /// The built-in factory: a new instance, which the caller owns.
    static FileLoadCheck* getNew(std::string const& fileType);

  private:
    std::string fileType_;
};

/// Owns one check of the kind that this process uses.
///
/// The first instance chooses the kind for the whole process: if "libPluginLoader.so" (or a library
/// loaded after this one) exports "getFileLoadCheckFactory", that function is called without
/// arguments and returns a FileLoadCheck::Factory or null; null or no such function chooses
/// FileLoadCheckNoOp. Threads may construct their first instances together.
class KELDABASE_API DynFileLoadCheck {
  public:
    /// Makes a check for a file type; the caller owns the result.
    using Factory = FileLoadCheck* (*)(std::string const& fileType);

    explicit DynFileLoadCheck(std::string const& fileType);
    ~DynFileLoadCheck();
    DynFileLoadCheck(DynFileLoadCheck const&) = delete;
    DynFileLoadCheck& operator=(DynFileLoadCheck const&) = delete;

    /// The operations of the check; see FileLoadCheck.
    int parse() { return check_->parse(); }
    bool canLoad(std::string const& dir, std::string const& file) {
        return check_->canLoad(dir, file);
    }
    std::string const& fileType() { return check_->fileType(); }
    bool parsed() { return check_->parsed(); }

    FileLoadCheck* get() const noexcept { return check_.get(); }
    FileLoadCheck* operator->() const noexcept { return check_.get(); }

  private:
    static void chooseFactory();

    static bool initialized_; // a factory was chosen
    static Factory getNewPtr_;

    std::unique_ptr<FileLoadCheck> check_;
};

namespace Kelda {
using ::DynFileLoadCheck;
using ::FileLoadCheck;
using ::FileLoadCheckNoOp;
} // namespace Kelda
