// The options that the commands share.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace KeldaTool {

enum class Format { table, json };

void addPreinitOption(CLI::App& command, std::string& directory);
void addProfilesOption(CLI::App& command, std::string& directory);
void addFormatOption(CLI::App& command, Format& format);

} // namespace KeldaTool
