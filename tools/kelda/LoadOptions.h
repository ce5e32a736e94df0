// The options that the commands share.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace KeldaTool {

inline constexpr char const* defaultPreinitDir = "/usr/lib64/preinit";
inline constexpr char const* defaultProfileDir = "/usr/lib64/KeldaMountProfiles";

enum class Format { table, json };

void addPreinitOption(CLI::App& command, std::string& directory);
void addProfilesOption(CLI::App& command, std::string& directory);
void addFormatOption(CLI::App& command, Format& format);

} // namespace KeldaTool
