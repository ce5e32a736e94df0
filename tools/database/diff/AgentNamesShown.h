// Tokens of agent names, which a device that is compared has by their numbers, by their names.
#pragma once

#include <cstddef>
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

/// The number of the token of a profile's agent name that takes all that is left of an agent
/// string; 0 where none does.
std::size_t restToken(Profile const& profile);
/// Whether a text holds the token with this number. `count`: how many there are.
bool holdsToken(std::string_view text, std::size_t number, std::size_t count);

} // namespace KeldaDatabase
