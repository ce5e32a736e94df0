#include "PathTree.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <fmt/format.h>

#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// The same for names that differ only in the case of letters, so that they meet in the table.
std::uint32_t hashOf(std::uint32_t parent, std::string_view name) {
    constexpr std::uint64_t lowerCaseBits = 0x2020202020202020U;
    constexpr std::uint64_t factor = 0x9e3779b97f4a7c15U;
    auto hash = (std::uint64_t{parent} + 1) * factor + name.size();
    while (!name.empty()) {
        std::uint64_t word = 0;
        auto const taken = std::min(name.size(), sizeof word);
        std::memcpy(&word, name.data(), taken);
        hash = (hash ^ (word | lowerCaseBits)) * factor;
        hash ^= hash >> 29U;
        name.remove_prefix(taken);
    }
    hash *= factor;
    return static_cast<std::uint32_t>(hash >> 32U);
}

std::size_t commonPrefix(std::string_view a, std::string_view b) {
    auto const shorter = std::min(a.size(), b.size());
    std::size_t at = 0;
    for (std::uint64_t x = 0, y = 0; at + sizeof x <= shorter; at += sizeof x) {
        std::memcpy(&x, a.data() + at, sizeof x);
        std::memcpy(&y, b.data() + at, sizeof y);
        if (x != y)
            break;
    }
    while (at < shorter && a[at] == b[at])
        ++at;
    return at;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool differInCaseOnly(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

// So many lines ahead of use, memory is asked for: nearly each line's path lies elsewhere.
constexpr std::size_t ahead = 8;

} // namespace

// Nodes by path. Paths are told apart by their shared buffers, which are not looked into.
class PathTree::KnownPaths {
  public:
    struct Entry {
        char const* buffer = nullptr;
        std::uint32_t node = none;
    };

    explicit KnownPaths(std::size_t paths) : entries_(std::bit_ceil(paths * 3 / 2 + 1)) {}

    // That of the path, or where it belongs.
    Entry& operator[](Rook::String const& path) {
        auto const mask = entries_.size() - 1;
        auto at = slotOf(path);
        while (entries_[at].buffer != nullptr && entries_[at].buffer != path.c_str())
            at = (at + 1) & mask;
        return entries_[at];
    }
    void prefetch(Rook::String const& path) const {
        __builtin_prefetch(&entries_[slotOf(path)]);
        __builtin_prefetch(path.c_str());
    }

  private:
    std::size_t slotOf(Rook::String const& path) const {
        auto const buffer = reinterpret_cast<std::uintptr_t>(path.c_str());
        return buffer * 0x9e3779b97f4a7c15U >> 24U & (entries_.size() - 1);
    }

    std::vector<Entry> entries_;
};

namespace {

// "*" stands for any text, also for none.
bool matches(std::string_view pattern, std::string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    auto star = std::string_view::npos;
    std::size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace

PathTree::PathTree(Device const& device) {
    nodes_.push_back({"", 0, false, false, none, none});
    auto const lines = device.preinits.size() + device.mounts.size();
    nodes_.reserve(lines);
    slots_.resize(std::bit_ceil(lines + 16));
    KnownPaths known(lines);
    insertDeclarations(device.preinits, known);
    insertMounts(device.mounts, known);
    widenMounts(device);
    findPatterns();
    findAccesses(device);
}

void PathTree::insertDeclarations(std::vector<PreinitDeclaration> const& lines, KnownPaths& known) {
    declarations_.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i + ahead < lines.size())
            known.prefetch(lines[i + ahead].path);
        auto const& path = lines[i].path;
        declarations_.push_back(insert(path.view(), true));
        if (path.find("%") == Rook::String::npos)
            known[path] = {path.c_str(), declarations_.back()};
    }
}

void PathTree::insertMounts(std::vector<Mount> const& lines, KnownPaths& known) {
    levels_.clear();
    mounts_.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i + ahead < lines.size())
            known.prefetch(lines[i + ahead].path);
        mounts_.push_back(none);
        if (!isMounted(lines[i]))
            continue;
        auto& entry = known[lines[i].path];
        if (entry.buffer == nullptr)
            entry = {lines[i].path.c_str(), insert(lines[i].path.view(), false)};
        mounts_.back() = entry.node;
    }
}

// Lines that follow one another mostly share the beginnings of their paths.
PathTree::NodeId PathTree::insert(std::string_view path, bool hasTokens) {
    auto const same = commonPrefix(previous_, path);
    while (!levels_.empty() && (levels_.back().end > same || (levels_.back().end < path.size() &&
                                                              path[levels_.back().end] != '/')))
        levels_.pop_back();
    previous_ = path;
    auto node = levels_.empty() ? NodeId{0} : levels_.back().node;
    auto begin = levels_.empty() ? std::size_t{0} : levels_.back().end + 1;
    while (begin <= path.size()) {
        auto const end = std::min(path.find('/', begin), path.size());
        node = childOf(node, nameOfSegment(path.substr(begin, end - begin), hasTokens));
        levels_.push_back({end, node});
        begin = end + 1;
    }
    return node;
}

std::string_view PathTree::nameOfSegment(std::string_view segment, bool hasTokens) {
    if (!hasTokens || segment.find('%') == std::string_view::npos)
        return segment;
    scratch_ = wildcard(segment);
    return scratch_ == "*" ? std::string_view("*") : std::string_view(scratch_);
}

PathTree::NodeId PathTree::childOf(NodeId parent, std::string_view name) {
    auto const hash = hashOf(parent, name);
    auto const mask = slots_.size() - 1;
    auto alike = none;
    auto at = hash & mask;
    for (; slots_[at].node != none; at = (at + 1) & mask) {
        if (slots_[at].hash != hash)
            continue;
        auto const& node = nodes_[slots_[at].node];
        if (node.parent != parent || node.length != name.size())
            continue;
        if (node.text() == name)
            return slots_[at].node;
        if (alike == none && differInCaseOnly(node.text(), name))
            alike = slots_[at].node;
    }
    auto const node = add(parent, name);
    slots_[at] = {hash, node};
    if (alike != none)
        casePairs_.push_back({alike, node});
    if (nodes_.size() * 3 > slots_.size() * 2)
        grow();
    return node;
}

PathTree::NodeId PathTree::find(NodeId parent, std::string_view name) const {
    auto const hash = hashOf(parent, name);
    auto const mask = slots_.size() - 1;
    for (auto at = hash & mask; slots_[at].node != none; at = (at + 1) & mask) {
        auto const& node = nodes_[slots_[at].node];
        if (slots_[at].hash == hash && node.parent == parent && node.text() == name)
            return slots_[at].node;
    }
    return none;
}

PathTree::NodeId PathTree::add(NodeId parent, std::string_view name) {
    auto const id = static_cast<NodeId>(nodes_.size());
    if (name.data() == scratch_.data())
        name = names_.emplace_back(name);
    nodes_.push_back(
        {name.data(), static_cast<std::uint16_t>(name.size()), false, false, parent, none});
    nodes_[parent].hasChildren = true;
    if (name == "*") {
        nodes_[parent].anyChild = id;
    } else if (name.find('*') != std::string_view::npos) {
        addPartial(parent, id);
    }
    return id;
}

void PathTree::addPartial(NodeId parent, NodeId node) {
    nodes_[parent].hasPartialChildren = true;
    auto& partial = partialChildren_[parent];
    auto const name = nodes_[node].text();
    auto const prefix = name.substr(0, name.find('*'));
    partial.byPrefix[prefix].push_back(node);
    auto& lengths = partial.prefixLengths;
    if (std::find(lengths.begin(), lengths.end(), prefix.size()) == lengths.end())
        lengths.push_back(prefix.size());
}

void PathTree::grow() {
    std::vector<Slot> larger(slots_.size() * 2);
    auto const mask = larger.size() - 1;
    for (auto const& slot : slots_) {
        if (slot.node == none)
            continue;
        auto at = slot.hash & mask;
        while (larger[at].node != none)
            at = (at + 1) & mask;
        larger[at] = slot;
    }
    slots_ = std::move(larger);
}

// A value with a "/" in it takes more than one name in the path. Such mounts get a second node,
// with a "*" in the place of the value.
void PathTree::widenMounts(Device const& device) {
    levels_.clear();
    for (auto const& alias : device.aliases) {
        if (alias.value.find("/") == Rook::String::npos || alias.profile == none)
            continue;
        auto const& range = device.profiles[alias.profile].mounts;
        for (auto i = range.begin; i < range.end; ++i) {
            auto const path = device.mounts[i].path.view();
            auto const at = path.find(alias.value.view());
            if (at == std::string_view::npos || mounts_[i] == none)
                continue;
            auto const& text = names_.emplace_back(
                fmt::format("{}*{}", path.substr(0, at), path.substr(at + alias.value.size())));
            widened_[i] = insert(text, false);
        }
    }
}

void PathTree::findPatterns() {
    patternsBegin_.reserve(nodes_.size() + 1);
    patternsBegin_.assign(2, 0); // the root has none
    for (NodeId node = 1; node < nodes_.size(); ++node) {
        auto const parent = nodes_[node].parent;
        findPatternsIn(parent, node);
        for (auto i = patternsBegin_[parent]; i < patternsBegin_[parent + 1]; ++i) {
            auto const directory = patterns_[i];
            if (auto const same = find(directory, nodes_[node].text()); same != none)
                patterns_.push_back(same);
            findPatternsIn(directory, node);
        }
        patternsBegin_.push_back(static_cast<std::uint32_t>(patterns_.size()));
    }
}

// Adds the children of the directory that match the node's name, but not those of the same name.
void PathTree::findPatternsIn(NodeId directory, NodeId node) {
    auto const name = nodes_[node].text();
    if (auto const any = nodes_[directory].anyChild; any != none && name != "*")
        patterns_.push_back(any);
    if (!nodes_[directory].hasPartialChildren)
        return;
    auto const& partial = partialChildren_.at(directory);
    for (auto const length : partial.prefixLengths) {
        auto const found = partial.byPrefix.find(name.substr(0, length));
        if (found == partial.byPrefix.end())
            continue;
        for (auto const child : found->second)
            if (nodes_[child].text() != name && matches(nodes_[child].text(), name))
                patterns_.push_back(child);
    }
}

std::uint8_t PathTree::accessOf(Mount const& mount) {
    constexpr std::uint32_t readFlag = 0x1;
    constexpr std::uint32_t writeFlag = 0x2;
    auto const bits = mount.flags.bits();
    return static_cast<std::uint8_t>(mounts | ((bits & readFlag) != 0 ? reads : 0) |
                                     ((bits & writeFlag) != 0 ? writes : 0));
}

void PathTree::findAccesses(Device const& device) {
    std::vector<std::uint8_t> own(nodes_.size());
    for (std::size_t i = 0; i < mounts_.size(); ++i)
        if (mounts_[i] != none)
            own[mounts_[i]] |= accessOf(device.mounts[i]);
    for (auto const& [mount, node] : widened_)
        own[node] |= accessOf(device.mounts[mount]);
    accesses_ = own;
    for (NodeId node = 1; node < nodes_.size(); ++node)
        if (own[node] != 0)
            for (auto const pattern : patternsOf(node))
                accesses_[pattern] |= own[node];
}

std::string PathTree::pathOf(NodeId node) const {
    std::vector<std::string_view> names;
    for (; node != 0; node = nodes_[node].parent)
        names.push_back(nodes_[node].text());
    std::string path;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (name != names.rbegin())
            path += '/';
        path += *name;
    }
    return path;
}

} // namespace KeldaDatabase
