// Tokens of agent names, which a device that is compared has by their numbers, by their names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"

namespace KeldaDatabase {

/// The names of an agent's tokens, "%slot", in their order; without the "$" of one that takes the
/// rest.
std::vector<std::string> tokenNames(Device const& device, Agent const& agent);

/// A text with the names of tokens in the place of their numbers.
std::string withTokenNames(std::string_view text, std::vector<std::string> const& names);
/// The other way round; the case of letters does not count.
std::string withTokenNumbers(std::string_view text, std::vector<std::string> const& names);

} // namespace KeldaDatabase
