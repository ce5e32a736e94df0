// What a writer may have meant.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Rules.h"
#include "database/Device.h"

namespace KeldaDatabase {

class NearPaths;

/// Hints for the faults of one device, which must not change meanwhile.
class Hints {
  public:
    explicit Hints(Device const& device);
    ~Hints();
    Hints(Hints const&) = delete;
    Hints& operator=(Hints const&) = delete;

    /// What may be meant where a fault was found, in a few words: the name of what is known and
    /// nearly spelt alike, or what the language asks for. Empty when nothing comes to mind. May
    /// hold names from files, and with them any bytes.
    std::string of(RuleId rule, Fault const& fault);

  private:
    std::string ofPath(std::string_view message);
    NearPaths& paths();

    Device const& device_;
    std::unique_ptr<NearPaths> paths_; // made when it is first needed
};

/// The same for a single fault. Where there are many, Hints saves looking through the device each
/// time.
std::string hintFor(Device const& device, RuleId rule, Fault const& fault);

/// What the message of a fault tells by itself, without a look at what the device declares.
std::string hintFor(Device const& device, RuleId rule, Kelda::MfiException const& fault);

/// The keyword of the profile language that a line without blanks nearly begins with; empty when
/// none is near.
std::string_view nearestKeyword(std::string_view line);

} // namespace KeldaDatabase
