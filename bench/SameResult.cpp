#include "SameResult.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace bench {

namespace {

std::string differentFaults(Kelda::MountFileInfo const& library, PlainLoader const& plain) {
    if (auto const fault = library.firstException())
        return fmt::format("the library reports {}:{}: {}", fault->file, fault->line, fault->msg);
    return plain.faults().empty() ? "" : "the plain loader reports " + plain.faults().front();
}

std::string differentTypes(Kelda::MountFileInfo const& library, PlainLoader const& plain) {
    if (library.pathTypeMap().size() != plain.types().size())
        return fmt::format("{} types against {}", library.pathTypeMap().size(),
                           plain.types().size());
    for (auto const& [path, type] : library.pathTypeMap()) {
        auto const found = plain.types().find(std::string(path.view()));
        if (found == plain.types().end() || type != found->second)
            return fmt::format("the type of {}", path);
    }
    return "";
}

std::string differentRecords(Kelda::MountFileInfo const& library, PlainLoader const& plain) {
    auto const& records = library.pathMountArgsMap();
    if (records.size() != plain.records().size())
        return fmt::format("{} paths against {}", records.size(), plain.records().size());
    auto other = plain.records().begin();
    for (auto const& [path, args] : records) {
        if (path != other->first)
            return fmt::format("path {} against {}", path, other->first);
        if (args.flags.bits() != other->second.flags)
            return fmt::format("flags {:#x} against {:#x} of {}", args.flags.bits(),
                               other->second.flags, path);
        if (args.type != other->second.type || args.isExplicit != other->second.isExplicit)
            return fmt::format("the record of {}", path);
        ++other;
    }
    return "";
}

template <class Texts>
std::vector<std::string_view> sorted(Texts const& texts) {
    std::vector<std::string_view> views(texts.begin(), texts.end());
    std::sort(views.begin(), views.end());
    return views;
}

std::string differentLists(char const* what, Kelda::StringListMap const& library,
                           PlainLoader::Lists const& plain) {
    if (library.size() != plain.size())
        return fmt::format("{} {} against {}", library.size(), what, plain.size());
    for (auto const& [key, paths] : library) {
        auto const found = plain.find(std::string(key.view()));
        if (found == plain.end())
            return fmt::format("{} {} is missing", what, key);
        if (sorted(paths) != sorted(found->second))
            return fmt::format("the paths of {} {}", what, key);
    }
    return "";
}

} // namespace

std::string difference(Kelda::MountFileInfo const& library, PlainLoader const& plain) {
    for (auto const& found :
         {differentFaults(library, plain), differentTypes(library, plain),
          differentRecords(library, plain),
          differentLists("groups", library.mountGroupPathsMap(), plain.groups()),
          differentLists("files", library.profileFilePathsMap(), plain.files())})
        if (!found.empty())
            return found;
    return "";
}

} // namespace bench
