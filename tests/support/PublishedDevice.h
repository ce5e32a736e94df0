// A small device with something of everything that the published entity tells of, and what it
// publishes as text, one element a line.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <KeldaBase/AgentMountFileInfoWrap.h>
#include <KeldaUtil/MountFlags.h>

#include "Device.h"

namespace support {

using Wrap = Rook::Ptr<Kelda::AgentMountFileInfoWrap>;

class PublishedDevice : public Device {
  public:
    PublishedDevice() {
        preinit("Base", basePreinit);
        profile("Fan", fanProfile);
        profile("FanBudget", "agentName: Fan-%slot\nd/e/f,Leaf,r\na/b,T,w\n");
        profile("Shared", "a/b,T,r\na/c,T,r\n");
        profile("Up", "agentName: Up\nactiveMount\nd/e/f,Leaf,w\n");
        profile("DefaultMountGroup", "sys/clock,Sys::Clock,r\n");
        profile("DefaultMountGroupPerAgent", "each/%agentString,Each,r\n");
    }

    Wrap wrap(std::string_view agentString = "Fan-3", std::string_view overrideString = "") const {
        return Kelda::agentMountFileInfoWrapFactory(false, agentString, overrideString,
                                                    preinitDir(), profileDir(), true);
    }

    static constexpr char basePreinit[] = "a/b,T\n"
                                          "a/c,T\n"
                                          "d/e,Fen::Dir\n"
                                          "d/e/f,Leaf,createOnStandby\n"
                                          "CONFIG:conf/x,Config::X\n"
                                          "CONFIG:conf/y,Config::Y,createOnStandby\n"
                                          "sys/clock,Sys::Clock\n"
                                          "cell/%cellId/state,Cell::State\n"
                                          "slot/%slot,Slot,createOnMount\n"
                                          "each/%agentString,Each,createOnMount\n";
    static constexpr char fanProfile[] = "agentName: Fan-%slot\n"
                                         "Include: Shared\n"
                                         "MountGroup: g,5\n"
                                         "slot/%slot,Slot,rw\n"
                                         "conf/x,Config::X,wi\n";
};

// --- what is published ---

inline std::string textOf(Kelda::MountPathInfo const& info) {
    return std::string(info.path().view()) + " " + info.type().c_str() + " " + info.flags().c_str();
}
inline std::string textOf(Rook::Ptr<Kelda::MountPathInfo> const& info) {
    return info == nullptr ? "(null)" : textOf(*info);
}
inline std::string textOf(Kelda::ConfigPathInfo const& info) {
    return std::string(info.path().view()) + " " + info.type().c_str();
}
inline std::string textOf(Kelda::PreinitPathInfo const& info) {
    return std::string(info.path().view()) + " " + info.type().c_str() + " " + info.attr().c_str();
}

// The elements of a collection in its own order.
template <class Collection>
std::vector<std::string> elementsOf(Rook::Ptr<Collection> const& collection) {
    std::vector<std::string> lines;
    for (auto const& element : *collection)
        lines.push_back(textOf(element));
    return lines;
}

// --- what a parser answers ---

inline std::string mountLine(Kelda::MountFileInfo& parser, Rook::String const& path) {
    auto const info = parser.mountInfo(path);
    return std::string(path.view()) + " " + info.type.c_str() + " " +
           KeldaUtil::mountTableFlagsToString(info.flags).c_str();
}

// One line for each path, in path order.
template <class Paths>
std::vector<std::string> mountLines(Kelda::MountFileInfo& parser, Paths const& paths) {
    std::vector<std::string> lines;
    for (auto const& path : std::set<Rook::String>(paths.begin(), paths.end()))
        lines.push_back(mountLine(parser, path));
    return lines;
}

// Every config path, in path order.
inline std::vector<std::string> configLines(Kelda::MountFileInfo& parser) {
    std::vector<std::string> lines;
    for (auto const& [path, info] : parser.pathConfigInfoMap())
        if (info.isConfig && info.isExplicit)
            lines.push_back(std::string(path.view()) + " " +
                            parser.getType(Kelda::MountFileInfo::wildcardPath(path)).c_str());
    std::sort(lines.begin(), lines.end());
    return lines;
}

// Every path of the preinit files, in path order.
inline std::vector<std::string> preinitLines(Kelda::MountFileInfo& parser) {
    auto const raw = parser.rawPreinitPaths();
    std::vector<std::string> lines;
    for (auto const& path : std::set<Rook::String>(raw.begin(), raw.end()))
        lines.push_back(std::string(path.view()) + " " +
                        parser.getType(Kelda::MountFileInfo::wildcardPath(path)).c_str() + " " +
                        parser.getPreinitAttr(path).c_str());
    return lines;
}

} // namespace support
