// The options that say which device a command looks at.
#pragma once

#include <memory>
#include <string>

#include "database/DatabaseMountFileInfo.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace KeldaTool {

class DeviceOptions {
  public:
    /// Adds --preinit, --profiles and --root.
    void addTo(CLI::App& command);

    /// The folders: as given, or the default ones below the root.
    std::string preinitDir() const;
    std::string profileDir() const;

    /// A parser of everything in these folders; nothing is read yet. It shows its progress on
    /// standard error, if that is a terminal, once reading takes longer than a second.
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser() const;
    /// The same for other folders than those of the options.
    static std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo>
    parserOf(std::string const& preinitDir, std::string const& profileDir);

  private:
    std::string preinitDir_;
    std::string profileDir_;
    std::string root_;
    CLI::Option const* preinitOption_ = nullptr; ///< the command's
    CLI::Option const* profilesOption_ = nullptr;
};

} // namespace KeldaTool
