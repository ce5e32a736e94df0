#include "PathDeclarations.h"

#include <map>
#include <unordered_set>

#include <KeldaBase/MountFileInfo.h>

namespace KeldaDatabase {
namespace {

constexpr char const* directoryType = "Fen::Dir";

// Goes through the declarations as the parser did, as far as they lie at or below the path.
class Declarations {
  public:
    Declarations(AskedPath const& asked) : asked_(asked) {}

    void handle(PreinitDeclaration const& line) {
        auto const path = Kelda::MountFileInfo::wildcardPath(line.path);
        if (asked_.matches(path)) {
            found_[path].lines.push_back(&line);
            typed_.insert(path);
            return;
        }
        auto const ancestor = asked_.ancestorIn(path);
        if (ancestor.empty())
            return;
        typed_.insert(path);
        if (line.attr != Kelda::PreinitAttr::createOnMount)
            giveToAncestors(path, ancestor, line);
    }

    struct Found {
        std::vector<PreinitDeclaration const*> lines;
        PreinitDeclaration const* below = nullptr;
    };
    std::map<Rook::String, Found> const& found() const { return found_; }

  private:
    // Nearest first, up to one that has a type. What is above the path does not matter here.
    void giveToAncestors(std::string_view path, std::string_view top,
                         PreinitDeclaration const& line) {
        while (path.size() > top.size()) {
            path = path.substr(0, path.rfind('/'));
            if (!typed_.insert(path).second)
                return;
        }
        found_[path].below = &line;
    }

    AskedPath const& asked_;
    std::unordered_set<Rook::String> typed_;
    std::map<Rook::String, Found> found_;
};

StoryDeclaration told(PreinitDeclaration const& line, PlaceReader& places) {
    return {places.told(line.place), std::string(line.path.view()), std::string(line.type.view()),
            attributeText(line.attr), line.isConfig};
}

} // namespace

std::string attributeText(Kelda::PreinitAttr attr) {
    switch (attr) {
    case Kelda::PreinitAttr::createOnMount:
        return "createOnMount";
    case Kelda::PreinitAttr::createOnStandby:
        return "createOnStandby";
    default:
        return {};
    }
}

std::vector<DeclaredPath> declarationsOf(Device const& device, AskedPath const& asked,
                                         PlaceReader& places) {
    Declarations declarations(asked);
    for (auto const& line : device.preinits)
        declarations.handle(line);
    std::vector<DeclaredPath> paths;
    for (auto const& [path, found] : declarations.found()) {
        DeclaredPath declared{std::string(path.view()), directoryType, false, {}, {}};
        for (auto const* const line : found.lines) {
            declared.lines.push_back(told(*line, places));
            declared.type = declared.lines.back().type;
            declared.isConfig = declared.isConfig || line->isConfig;
        }
        if (found.lines.empty())
            declared.directoryBecauseOf = told(*found.below, places);
        paths.push_back(std::move(declared));
    }
    return paths;
}

} // namespace KeldaDatabase
