/// @file
/// The values that Kelda::MountFileInfo takes and returns.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <Fen/MountTable.h>
#include <MemSlab/Slab.h>
#include <Rook/String.h>

#include <KeldaBase/Export.h>

/// The library: the parser of preinit files and mount profiles, and what publishes its answers.
namespace Kelda {

/// One line or path: at most 1023 characters, which is the longest line that the two file languages
/// know, and a closing NUL.
using LineBuffer = std::array<char, 1024>;

/// An open file and the number of the line being handled, 0 before the first.
struct FileContext {
    Rook::String file;     ///< name without its directory; an extra preinit file as it was named
    std::int32_t line = 0; ///< of a continued line, the number of its first piece

    /// Whether all members are equal.
    friend bool operator==(FileContext const&, FileContext const&) = default;
};

/// A fault and where it was found.
struct MfiException {
    Rook::String file;      ///< as FileContext has it; "" when no file was open
    Rook::String msg;       ///< what is wrong, one text
    std::int32_t line = -1; ///< -1 when no file was open

    /// Whether all members are equal.
    friend bool operator==(MfiException const&, MfiException const&) = default;
};

/// The record of one mount path.
struct MountArgs {
    Rook::String type;            ///< type name of the entity at the path
    Fen::MountTable::Flags flags; ///< those of all lines that name the path, merged
    /// True when the path itself was named, false when it only exists above a named one.
    bool isExplicit = false;

    /// Whether all members are equal.
    friend bool operator==(MountArgs const&, MountArgs const&) = default;
};

/// When a preinit path comes into being.
enum class PreinitAttr : std::uint32_t {
    none,            ///< at start-up
    createOnMount,   ///< when an agent mounts it; such a path may hold any tokens
    createOnStandby, ///< on the standby side
    invalid          ///< an attribute that could not be read
};

/// Whether a path is a config path. In use are (true, true) for a path that a preinit file declares
/// with "CONFIG:", (true, false) for a child of one and (false, false) for a path declared not to
/// be one.
struct ConfigInfo {
    bool isConfig = false;   ///< a config path or a child of one
    bool isExplicit = false; ///< declared by a "CONFIG:" line itself

    /// Whether all members are equal.
    friend bool operator==(ConfigInfo const&, ConfigInfo const&) = default;
};

/// How the name of a profile matches an agent string.
struct AgentNameMatch {
    static constexpr std::uint32_t noMatch = 0;    ///< name is empty
    static constexpr std::uint32_t exactMatch = 1; ///< name is the whole name of the profile
    static constexpr std::uint32_t tokenMatch = 2; ///< name is what stands before the first "-%"

    Rook::String name;            ///< what the mount groups of the profile are filed under
    std::uint32_t kind = noMatch; ///< one of the three above

    /// Whether all members are equal.
    friend bool operator==(AgentNameMatch const&, AgentNameMatch const&) = default;
};

/// The slab named "mountFileInfo", from which the parsers' containers draw.
KELDABASE_API MemSlab::Slab& mountFileInfoSlab();

/// The allocator of the parsers' containers.
template <class T>
struct Allocator : MemSlab::Allocator<T> {
    /// How a container gets the allocator of its nodes.
    template <class U>
    struct rebind {
        using other = Allocator<U>; ///< draws on the same slab
    };
    /// Draws on mountFileInfoSlab().
    Allocator() : MemSlab::Allocator<T>(mountFileInfoSlab()) {}
    /// Draws on the slab of `other`.
    template <class U>
    Allocator(Allocator<U> const& other) noexcept : MemSlab::Allocator<T>(other) {}
};

/// Hashes a string. Not noexcept on purpose: the standard library then keeps the hash in each node
/// of a container, and need not look at a node's string to pass it by.
struct StringHash {
    /// Rook::String::hash.
    std::size_t operator()(Rook::String const& text) const {
        return std::hash<Rook::String>()(text);
    }
};

using StringList = std::vector<Rook::String, Allocator<Rook::String>>; ///< strings in their order
/// Values by string, in no particular order.
template <class Value>
using StringKeyed = std::unordered_map<Rook::String, Value, StringHash, std::equal_to<>,
                                       Allocator<std::pair<Rook::String const, Value>>>;
using StringMap = StringKeyed<Rook::String>;   ///< strings by string
using StringListMap = StringKeyed<StringList>; ///< lists by string
/// Strings in byte order, each once.
using OrderedStringSet = std::set<Rook::String, std::less<>, Allocator<Rook::String>>;
/// Strings in no particular order, each once.
using UnorderedStringSet = std::unordered_set<Rook::String, std::hash<Rook::String>,
                                              std::equal_to<Rook::String>, Allocator<Rook::String>>;
/// Every mount path with its record, in path order.
using MountArgsMap = std::map<Rook::String, MountArgs, std::less<>,
                              Allocator<std::pair<Rook::String const, MountArgs>>>;

/// What `value` holds; throws Fen::BadOptionalAccess when it holds nothing.
KELDABASE_API Rook::String const& valueOf(std::optional<Rook::String> const& value);

} // namespace Kelda
