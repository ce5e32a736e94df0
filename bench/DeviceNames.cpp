#include "DeviceNames.h"

#include <algorithm>
#include <array>
#include <cctype>

#include <fmt/format.h>

namespace bench {

namespace {

constexpr std::array<std::string_view, 24> modules = {
    "Bgp", "Isis", "Ospf", "Lacp", "Lldp", "Mpls",  "Macsec",   "Platform",
    "Qos", "Acl",  "Aft",  "Vlan", "Stp",  "Igmp",  "Pim",      "Evpn",
    "Bfd", "Nat",  "Poe",  "Ptp",  "Flow", "Optic", "Sampling", "Keychain"};

constexpr std::array<std::string_view, 64> words = {"neighbors",
                                                    "peer-groups",
                                                    "afi-safis",
                                                    "graceful-restart",
                                                    "use-multiple-paths",
                                                    "route-selection-options",
                                                    "timers",
                                                    "transport",
                                                    "error-handling",
                                                    "counters",
                                                    "prefix-limit",
                                                    "apply-policy",
                                                    "link-bandwidth",
                                                    "queues",
                                                    "classifiers",
                                                    "schedulers",
                                                    "members",
                                                    "priority",
                                                    "authentication",
                                                    "hello-interval",
                                                    "adjacencies",
                                                    "levels",
                                                    "link-state",
                                                    "database",
                                                    "areas",
                                                    "virtual-links",
                                                    "segment-routing",
                                                    "label-blocks",
                                                    "signaling",
                                                    "sessions",
                                                    "reservations",
                                                    "attributes",
                                                    "bandwidth-measurement",
                                                    "entries",
                                                    "next-hops",
                                                    "next-hop-groups",
                                                    "summaries",
                                                    "hold-time",
                                                    "subinterfaces",
                                                    "unnumbered",
                                                    "statistics",
                                                    "thresholds",
                                                    "sensors",
                                                    "temperature",
                                                    "power-supply",
                                                    "properties",
                                                    "subcomponents",
                                                    "transceivers",
                                                    "channels",
                                                    "wavelengths",
                                                    "alarms",
                                                    "policy-definitions",
                                                    "statements",
                                                    "conditions",
                                                    "actions",
                                                    "community-sets",
                                                    "as-path-sets",
                                                    "prefix-sets",
                                                    "servers",
                                                    "server-groups",
                                                    "accounting",
                                                    "events",
                                                    "collectors",
                                                    "mac-table"};

constexpr std::array<std::string_view, 12> aliasNames = {
    "%groupName",  "%serverAddress", "%afiSafiName", "%protocolName",
    "%identifier", "%interfaceId",   "%policyName",  "%statementName",
    "%queueName",  "%levelNumber",   "%areaId",      "%neighborAddress"};

constexpr std::array<std::string_view, 8> aliasWords = {"main", "backup", "default", "primary",
                                                        "mgmt", "east",   "0",       "blue"};

constexpr std::array<std::string_view, 8> plainTrunks = {
    "system",
    "interfaces/interface/Management1",
    "network-instances/network-instance/default/protocols/protocol",
    "components/component/Chassis",
    "routing-policy/defined-sets",
    "%cellPath/system",
    "network-instances/network-instance/default/afts",
    "oam"};

std::uint64_t scramble(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9;
    value = (value ^ (value >> 27)) * 0x94d049bb133111eb;
    return value ^ (value >> 31);
}

template <std::size_t size>
std::string_view pick(std::array<std::string_view, size> const& from, std::uint64_t number) {
    return from[number % size];
}

// "use-multiple-paths" as "UseMultiplePaths".
std::string camelCase(std::string_view text) {
    std::string result;
    bool upper = true;
    for (char const c : text) {
        if (c != '-')
            result += upper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        upper = c == '-';
    }
    return result;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

std::uint64_t dice(std::uint64_t seed, std::string_view purpose, std::uint64_t a, std::uint64_t b) {
    auto state = scramble(seed);
    for (char const c : purpose)
        state = scramble(state ^ static_cast<unsigned char>(c));
    return scramble(scramble(state ^ a) ^ b);
}

std::string AgentNames::agentName() const {
    auto name = profile;
    for (auto const& token : tokens)
        name += "-" + token;
    return consuming ? name + "$" : name;
}

AgentNames DeviceNames::agent(std::size_t number, std::size_t plainPaths) const {
    AgentNames agent;
    agent.number = number;
    agent.plainPaths = plainPaths;
    agent.module = pick(modules, dice(seed_, "module", number));
    agent.profile = agent.module + std::to_string(number);
    addTokens(agent);
    agent.trunk += fmt::format("/{}-{}", lowerCase(agent.module), number);
    auto const aliases = dice(seed_, "aliases", number) % 7;
    auto const first = dice(seed_, "first alias", number);
    for (std::size_t i = 0; i < aliases; ++i)
        agent.aliases.emplace_back(pick(aliasNames, first + i));
    return agent;
}

// About half of all agents have no token; one in twenty has one that takes the rest.
void DeviceNames::addTokens(AgentNames& agent) const {
    auto const kind = dice(seed_, "tokens", agent.number) % 100;
    if (kind < 52) {
        agent.trunk = pick(plainTrunks, dice(seed_, "trunk", agent.number));
    } else if (kind < 66) {
        agent.tokens = {"%slot"};
        agent.trunk = "components/component/%slot";
    } else if (kind < 80) {
        agent.tokens = {"%port"};
        agent.trunk = "interfaces/interface/%port/subinterfaces/subinterface/0";
    } else if (kind < 86) {
        agent.tokens = {"%linecard", "%port"};
        agent.trunk = "interfaces/linecard/%linecard/interface/%port";
    } else {
        agent.tokens = {"%vrf"};
        agent.consuming = kind >= 95;
        agent.trunk = "network-instances/network-instance/%vrf/protocols/protocol";
    }
}

std::vector<std::string_view> DeviceNames::allTokens() {
    std::vector<std::string_view> tokens = {"%slot", "%port", "%linecard", "%vrf"};
    tokens.insert(tokens.end(), aliasNames.begin(), aliasNames.end());
    return tokens;
}

// Numbers past the vocabulary say how often it was used up, so that every directory of an agent
// has a name of its own.
std::string DeviceNames::word(AgentNames const& agent, std::size_t directory) const {
    auto const place = dice(seed_, "words", agent.number) % words.size() + directory;
    auto const round = directory / words.size();
    std::string const name(pick(words, place));
    return round == 0 ? name : fmt::format("{}-{}", name, round);
}

std::string DeviceNames::directory(AgentNames const& agent, std::size_t number) const {
    if (number == 0)
        return agent.trunk;
    // A parent in the latter half of what there is makes trees about as deep as real ones.
    auto const roll = dice(seed_, "parent", agent.number, number);
    auto const parent = number / 2 + roll % (number - number / 2);
    auto path = directory(agent, parent) + "/" + word(agent, number);
    bool const isList = 2 * number >= agent.plainPaths && (roll >> 32) % 3 == 0;
    if (isList && !agent.aliases.empty())
        path += "/" + agent.aliases[(roll >> 40) % agent.aliases.size()];
    return path;
}

PathNames DeviceNames::path(AgentNames const& agent, std::size_t number) const {
    auto const parent = number / 2;
    auto path = directory(agent, parent);
    if (number % 2 == 0)
        return {std::move(path), "Fen::Dir"};
    bool const isConfig = dice(seed_, "leaf", agent.number, number) % 2 == 0;
    return {path + (isConfig ? "/config" : "/state"), "Device::" + agent.module +
                                                          "::" + camelCase(word(agent, parent)) +
                                                          (isConfig ? "::Config" : "::State")};
}

std::string DeviceNames::aliasValue(AgentNames const& agent, std::size_t index) const {
    auto const roll = dice(seed_, "alias", agent.number, index);
    std::string const text(pick(aliasWords, roll >> 8));
    switch (roll % 5) {
    case 0:
        return "%cellId";
    case 1:
        return "%sysname," + text;
    case 2:
        return text + "," + (agent.tokens.empty() ? "%cellId" : agent.tokens.front());
    default:
        return text;
    }
}

} // namespace bench
