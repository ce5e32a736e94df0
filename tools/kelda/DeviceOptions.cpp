#include "DeviceOptions.h"

#include <CLI/CLI.hpp>

#include "LoadOptions.h"
#include "Progress.h"
#include "Values.h"

namespace KeldaTool {

void DeviceOptions::addTo(CLI::App& command) {
    addPreinitOption(command, preinitDir_);
    addProfilesOption(command, profileDir_);
    preinitOption_ = command.get_option("--preinit");
    profilesOption_ = command.get_option("--profiles");
    auto* const root = command.add_option(
        "--root", root_, "Device image, below which the default folders are looked for");
    root->type_name("DIR");
    mustNotBeEmpty(*root);
}

std::string DeviceOptions::preinitDir() const {
    return preinitOption_->count() == 0 ? root_ + preinitDir_ : preinitDir_;
}

std::string DeviceOptions::profileDir() const {
    return profilesOption_->count() == 0 ? root_ + profileDir_ : profileDir_;
}

std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> DeviceOptions::parser() const {
    return parserOf(preinitDir(), profileDir());
}

std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo>
DeviceOptions::parserOf(std::string const& preinitDir, std::string const& profileDir) {
    auto parser = std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(preinitDir, profileDir);
    parser->progressIs(progressOnTerminal("files read"));
    return parser;
}

} // namespace KeldaTool
