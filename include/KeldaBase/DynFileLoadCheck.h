/// @file
/// The check that a directory scan asks before it reads a file. An optional plug-in library may
/// bring its own; without it every file may be read.
#pragma once

#include <memory>
#include <string>

#include <KeldaBase/Export.h>

/// What a check has to answer. One instance serves one file type: "KeldaMountProfiles" or
/// "preinit". Kelda::FileLoadCheck is the same class.
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
    /// Whoever owns a check destroys it through this class.
    virtual ~FileLoadCheck() = default;
};

/// The built-in check: every file may be read. Kelda::FileLoadCheckNoOp is the same class.
class KELDABASE_API FileLoadCheckNoOp : public FileLoadCheck {
  public:
    /// Takes any file type.
    explicit FileLoadCheckNoOp(std::string const& fileType);
    /// -1: there is nothing to parse.
    int parse() override;
    /// True.
    bool canLoad(std::string const& dir, std::string const& file) override;
    /// As given to the constructor.
    std::string const& fileType() override;
    /// False.
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
/// FileLoadCheckNoOp. Threads may construct their first instances together. Kelda::DynFileLoadCheck
/// is the same class.
class KELDABASE_API DynFileLoadCheck {
  public:
    /// Makes a check for a file type; the caller owns the result. Null counts as failure.
    using Factory = FileLoadCheck* (*)(std::string const& fileType);

    /// Makes the check; where the factory fails, a FileLoadCheckNoOp. It is not parsed yet.
    explicit DynFileLoadCheck(std::string const& fileType);
    /// Destroys the check.
    ~DynFileLoadCheck();
    DynFileLoadCheck(DynFileLoadCheck const&) = delete;
    DynFileLoadCheck& operator=(DynFileLoadCheck const&) = delete;

    /// FileLoadCheck::parse of the check.
    int parse() { return check_->parse(); }
    /// FileLoadCheck::canLoad of the check.
    bool canLoad(std::string const& dir, std::string const& file) {
        return check_->canLoad(dir, file);
    }
    /// FileLoadCheck::fileType of the check.
    std::string const& fileType() { return check_->fileType(); }
    /// FileLoadCheck::parsed of the check.
    bool parsed() { return check_->parsed(); }

    /// The check, never null; this object owns it.
    FileLoadCheck* get() const noexcept { return check_.get(); }
    /// The same.
    FileLoadCheck* operator->() const noexcept { return check_.get(); }

  private:
    KELDABASE_LOCAL static void chooseFactory();

    KELDABASE_LOCAL static bool initialized_; // a factory was chosen
    KELDABASE_LOCAL static Factory getNewPtr_;

    std::unique_ptr<FileLoadCheck> check_;
};

namespace Kelda {
using ::DynFileLoadCheck;
using ::FileLoadCheck;
using ::FileLoadCheckNoOp;
} // namespace Kelda
