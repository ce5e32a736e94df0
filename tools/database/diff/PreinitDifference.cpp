#include "PreinitDifference.h"

#include <map>
#include <string>

#include <KeldaBase/MountFileInfo.h>

#include "database/findings/Spelling.h"
#include "database/paths/PathDeclarations.h"

namespace KeldaDatabase {
namespace {

struct Declared {
    std::string path; ///< as the last line has it
    std::string type;
    std::string attribute;
    bool isConfig = false;
    PreinitDeclaration const* typeLine = nullptr;
    PreinitDeclaration const* firstLine = nullptr; ///< gives the attribute
    PreinitDeclaration const* lastLine = nullptr;  ///< gives the type, unless it is given elsewhere
    PreinitDeclaration const* configLine = nullptr;
};

using DeclaredPaths = std::map<std::string, Declared>;

// The path with "*" for each token whose name tells nothing.
std::string keyOf(std::string const& path) {
    std::string key;
    std::size_t at = 0;
    for (auto const& token : tokensIn(path)) {
        auto const begin = path.find('%', at);
        key.append(path, at, begin - at);
        auto const name = lowerCase(token);
        key.append(name == "%cellid" || name == "%peercellid" ? name : std::string(1, '*'));
        at = begin + token.size();
    }
    return key.append(path, at);
}

DeclaredPaths declaredBy(DeviceSide& side) {
    DeclaredPaths paths;
    for (auto const& line : side.device().preinits) {
        std::string const path(line.path.view());
        auto& declared = paths[keyOf(path)];
        declared.path = path;
        declared.lastLine = &line;
        if (declared.firstLine == nullptr) {
            declared.firstLine = &line;
            declared.attribute = attributeText(line.attr);
            auto const key = Kelda::MountFileInfo::wildcardPath(line.path);
            declared.type = side.typeOf(key).view();
            declared.typeLine = side.typeGiver(key);
        }
        if (line.isConfig && !declared.isConfig) {
            declared.isConfig = true;
            declared.configLine = &line;
        }
    }
    return paths;
}

class Comparison {
  public:
    Comparison(Causes& causes, std::vector<FoundChange>& found) : causes_(causes), found_(found) {}

    void added(Declared const& now) {
        add(ChangeKind::preinitAdded, ChangeClass::harmless, now, "", now.type,
            causes_.ofPreinit(nullptr, now.lastLine));
    }
    void removed(Declared const& old) {
        add(ChangeKind::preinitRemoved, ChangeClass::risky, old, old.type, "",
            causes_.ofPreinit(old.lastLine, nullptr));
    }
    void both(Declared const& old, Declared const& now) {
        if (old.type != now.type)
            add(ChangeKind::preinitTypeChanged, ChangeClass::dangerous, now, old.type, now.type,
                causes_.ofPreinit(old.typeLine, now.typeLine));
        if (old.attribute != now.attribute)
            add(ChangeKind::preinitAttributeChanged, ChangeClass::risky, now, old.attribute,
                now.attribute, causes_.ofPreinit(old.firstLine, now.firstLine));
        if (old.isConfig != now.isConfig)
            add(ChangeKind::preinitConfigChanged, ChangeClass::risky, now, answer(old.isConfig),
                answer(now.isConfig),
                causes_.ofPreinit(old.isConfig ? old.configLine : old.firstLine,
                                  now.isConfig ? now.configLine : now.firstLine));
    }

  private:
    static std::string answer(bool isConfig) { return isConfig ? "yes" : "no"; }

    void add(ChangeKind kind, ChangeClass severity, Declared const& declared, std::string before,
             std::string after, Cause cause) {
        FoundChange change;
        change.kind = kind;
        change.severity = severity;
        change.cause = std::move(cause);
        change.before = std::move(before);
        change.after = std::move(after);
        change.path = declared.path;
        change.type = declared.type;
        found_.push_back(std::move(change));
    }

    Causes& causes_;
    std::vector<FoundChange>& found_;
};

} // namespace

void addPreinitChanges(DeviceSide& before, DeviceSide& after, Causes& causes,
                       std::vector<FoundChange>& found) {
    auto const old = declaredBy(before);
    auto const now = declaredBy(after);
    Comparison comparison(causes, found);
    for (auto const& [key, declared] : old)
        if (auto const same = now.find(key); same != now.end())
            comparison.both(declared, same->second);
        else
            comparison.removed(declared);
    for (auto const& [key, declared] : now)
        if (!old.contains(key))
            comparison.added(declared);
}

} // namespace KeldaDatabase
