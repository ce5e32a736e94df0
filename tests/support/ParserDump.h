// A lenient parser that tells everything it knows, section by section, as text.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

#include <KeldaUtil/MountFlags.h>

#include "LenientParser.h"

namespace support {

// Section name to text; two equal dumps mean two parsers in the same state.
using Dump = std::map<std::string, std::string>;

class DumpableParser : public LenientParser {
  public:
    using LenientParser::LenientParser;

    Dump dump() const {
        Dump dump;
        dumpPreinits(dump);
        dumpProfiles(dump);
        dumpKeywords(dump);
        dumpOpenFile(dump);
        return dump;
    }

    auto const& configInfos() const { return pathConfigInfoMap_; }
    void noDefaultMountGroupIs(bool on) { noDefaultMountGroup_ = on; }

  private:
    static std::string text(Rook::String const& value) { return std::string(value.view()); }
    static std::string text(bool value) { return value ? "true" : "false"; }
    static std::string text(Kelda::PreinitAttr value) {
        return std::to_string(static_cast<unsigned>(value));
    }
    static std::string text(Kelda::ConfigInfo const& info) {
        return text(info.isConfig) + "/" + text(info.isExplicit);
    }
    static std::string text(Kelda::MountArgs const& args) {
        return text(args.type) + " " + text(KeldaUtil::mountTableFlagsToString(args.flags)) +
               (args.isExplicit ? " explicit" : " intermediate");
    }
    static std::string text(Kelda::FileContext const& file) {
        return text(file.file) + ":" + std::to_string(file.line);
    }
    static std::string text(Kelda::MfiException const& fault) {
        return text(fault.file) + ":" + std::to_string(fault.line) + ":" + text(fault.msg);
    }
    // The elements in their order, each in brackets.
    template <class List>
    requires(
        requires(List const& list) { list.begin(); } &&
        !requires { typename List::mapped_type; }) static std::string text(List const& list) {
        std::string all;
        for (auto const& element : list)
            all += "[" + text(element) + "]";
        return all;
    }
    // The entries in key order.
    template <class Map>
    requires requires { typename Map::mapped_type; }
    static std::string text(Map const& map) {
        std::map<std::string, std::string> sorted;
        for (auto const& [key, value] : map)
            sorted[text(key)] = text(value);
        std::string all;
        for (auto const& [key, value] : sorted)
            all += key + " = " + value + "\n";
        return all;
    }

    void dumpPreinits(Dump& dump) const {
        dump["types"] = text(pathTypeMap_);
        dump["attributes"] = text(pathAttrMap_);
        dump["config"] = text(pathConfigInfoMap_);
        dump["default preinits"] = text(defaultPreinitsLoaded_);
        dump["extra profiles"] = text(extraProfileDir_);
    }
    void dumpProfiles(Dump& dump) const {
        dump["mounts"] = text(pathMountArgsMap_);
        dump["intermediates"] = text(intermediatePaths_);
        dump["groups"] = text(mountGroupPathsMap_);
        dump["files"] = text(profileFilePathsMap());
        dump["includes"] = text(profileFileIncludesMap_);
        dump["agents"] = text(agentStringProfileFileMap_);
        dump["titles"] = text(titleTemplates_);
        dump["faults"] = text(exceptions_);
    }
    void dumpKeywords(Dump& dump) const {
        dump["root flags"] = text(rootFlags_);
        dump["connection flags"] = text(connectionFlags_);
        dump["sub-agents"] = text(subAgents_);
        dump["active"] = text(activeMountSeen_);
        dump["match active name"] = text(matchActiveNameSeen_);
        dump["no default group"] = text(noDefaultMountGroup_);
        dump["found profile"] = text(foundMountProfile_);
        dump["condition seen"] = text(conditionSeen_);
        dump["initialized"] = text(isInitialized_);
    }
    void dumpOpenFile(Dump& dump) const {
        dump["open files"] = text(currentFiles_);
        dump["aliases"] = text(perFileAliases_);
        dump["predefined"] = text(predefinedAliases_);
        dump["group"] = text(currentMountGroup_);
        dump["conditional"] = text(inConditionalGroup_);
        dump["agent key"] = text(agentKey_);
        dump["included"] = text(inInclude_);
    }
};

} // namespace support
