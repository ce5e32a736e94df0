/// @file
/// What an agent asks: the published entity that owns an agent-side parser, and the values and
/// collections in which it publishes what the parser knows.
///
/// Values have equality by their attributes, a truth test (false when every attribute is empty) and
/// a string form, as <Fen/Attribute.h> explains:
///
///     Kelda::ConfigPathInfo(path: "sys/config/banner", type: "Config::Banner")
///
/// Collections have one element per path. They iterate with begin() and end() and tell their
/// size(), as <Fen/Collection.h> explains. Adding an element whose path is known replaces the one
/// that was there; removing a path that is not there is no error.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include <Fen/Attribute.h>
#include <Fen/Collection.h>
#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

#include <KeldaBase/Export.h>

namespace Kelda {

class MountFileInfo;

// ------------------------------------------------------------------------------------------------
// Values
// ------------------------------------------------------------------------------------------------

/// One mount path with its type and flags. Shared: it is handed out by Rook::Ptr. Comparing two
/// objects compares their attributes, comparing two Rook::Ptr which objects they are.
class KELDABASE_API MountPathInfo : public Rook::Node, public Fen::AttributeValue<MountPathInfo> {
  public:
    /// What string forms begin with.
    static constexpr std::string_view typeName = "Kelda::MountPathInfo";
    /// The attributes in their order, for Fen::AttributeValue.
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<MountPathInfo>;
        return std::array{Attribute{"path", &MountPathInfo::path_},
                          Attribute{"type", &MountPathInfo::type_},
                          Attribute{"flags", &MountPathInfo::flags_}};
    }

    /// All attributes are empty.
    MountPathInfo();
    /// The value with these attributes; `flags` as KeldaUtil::mountTableFlagsToString writes them.
    MountPathInfo(Rook::String const& path, Rook::String const& type, Rook::String const& flags);
    /// Called by the last Rook::Ptr.
    ~MountPathInfo() override;

    /// The path, relative to the database's root: without a "/" at its front.
    Rook::String const& path() const noexcept { return path_; }
    /// The type name of the entity at the path.
    Rook::String const& type() const noexcept { return type_; }
    /// The mount flags, one letter each, in the order of their bits.
    Rook::String const& flags() const noexcept { return flags_; }

  private:
    Rook::String path_;
    Rook::String type_;
    Rook::String flags_;
};

/// One config path with its type.
class KELDABASE_API ConfigPathInfo : public Fen::AttributeValue<ConfigPathInfo> {
  public:
    /// What string forms begin with.
    static constexpr std::string_view typeName = "Kelda::ConfigPathInfo";
    /// The attributes in their order, for Fen::AttributeValue.
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<ConfigPathInfo>;
        return std::array{Attribute{"path", &ConfigPathInfo::path_},
                          Attribute{"type", &ConfigPathInfo::type_}};
    }

    /// All attributes are empty.
    ConfigPathInfo() noexcept = default;
    /// The value with this string form; throws Fen::AttributeFormatException for any other text.
    explicit ConfigPathInfo(std::string_view strep);
    /// The value with these attributes.
    ConfigPathInfo(Rook::String const& path, Rook::String const& type);

    /// The path as a preinit file declares it.
    Rook::String const& path() const noexcept { return path_; }
    /// The type name of the entity at the path.
    Rook::String const& type() const noexcept { return type_; }

  private:
    Rook::String path_;
    Rook::String type_;
};

/// One path of the preinit files with its type and attribute.
class KELDABASE_API PreinitPathInfo : public Fen::AttributeValue<PreinitPathInfo> {
  public:
    /// What string forms begin with.
    static constexpr std::string_view typeName = "Kelda::PreinitPathInfo";
    /// The attributes in their order, for Fen::AttributeValue.
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<PreinitPathInfo>;
        return std::array{Attribute{"path", &PreinitPathInfo::path_},
                          Attribute{"type", &PreinitPathInfo::type_},
                          Attribute{"attr", &PreinitPathInfo::attr_}};
    }

    /// All attributes are empty.
    PreinitPathInfo() noexcept = default;
    /// The value with this string form; throws Fen::AttributeFormatException for any other text.
    explicit PreinitPathInfo(std::string_view strep);
    /// The value with these attributes.
    PreinitPathInfo(Rook::String const& path, Rook::String const& type, Rook::String const& attr);

    /// The path with its tokens, as a preinit file declares it.
    Rook::String const& path() const noexcept { return path_; }
    /// The type name of the entity at the path.
    Rook::String const& type() const noexcept { return type_; }
    /// The attribute: "", "createOnMount" or "createOnStandby".
    Rook::String const& attr() const noexcept { return attr_; }

  private:
    Rook::String path_;
    Rook::String type_;
    Rook::String attr_;
};

/// A new MountPathInfo.
KELDABASE_API Rook::Ptr<MountPathInfo>
mountPathInfoFactory(Rook::String const& path, Rook::String const& type, Rook::String const& flags);

// ------------------------------------------------------------------------------------------------
// Collections
// ------------------------------------------------------------------------------------------------

/// Mount paths in ascending order of their paths. Its elements are Rook::Ptr<MountPathInfo>.
class KELDABASE_API MountPathInfoCol
    : public Fen::OrderedCollection<Rook::Ptr<MountPathInfo>, &MountPathInfo::path> {
  public:
    MountPathInfoCol();           ///< without elements
    ~MountPathInfoCol() override; ///< called by the last Rook::Ptr

    /// Adds or replaces; null throws Fen::NullArgumentException and changes nothing.
    void mountPathDataIs(Rook::Ptr<MountPathInfo> const& info);
    /// Removes an element and returns it; null when there was none.
    Rook::Ptr<MountPathInfo> mountPathDataDel(Rook::String const& path);
    /// Removes every element.
    void mountPathDataDelAll();
    /// The element of a path; null when there is none.
    Rook::Ptr<MountPathInfo> mountPathData(Rook::String const& path) const;
};

/// Config paths in no particular order.
class KELDABASE_API ConfigPathInfoCol
    : public Fen::HashedCollection<ConfigPathInfo, &ConfigPathInfo::path> {
  public:
    ConfigPathInfoCol();           ///< without elements
    ~ConfigPathInfoCol() override; ///< called by the last Rook::Ptr

    /// Adds or replaces.
    void configPathDataIs(ConfigPathInfo const& info);
    /// Removes an element, if there is one.
    void configPathDataDel(Rook::String const& path);
    /// Removes every element.
    void configPathDataDelAll();
    /// The element of a path; a false value when there is none.
    ConfigPathInfo configPathData(Rook::String const& path) const;
};

/// Preinit paths in ascending order of their paths.
class KELDABASE_API PreinitPathInfoCol
    : public Fen::OrderedCollection<PreinitPathInfo, &PreinitPathInfo::path> {
  public:
    PreinitPathInfoCol();           ///< without elements
    ~PreinitPathInfoCol() override; ///< called by the last Rook::Ptr

    /// Adds or replaces.
    void preinitPathDataIs(PreinitPathInfo const& info);
    /// Removes an element, if there is one.
    void preinitPathDataDel(Rook::String const& path);
    /// Removes every element.
    void preinitPathDataDelAll();
    /// The element of a path; a false value when there is none.
    PreinitPathInfo preinitPathData(Rook::String const& path) const;
};

/// A new collection without elements.
KELDABASE_API Rook::Ptr<MountPathInfoCol> mountPathInfoColFactory();
/// A new collection without elements.
KELDABASE_API Rook::Ptr<ConfigPathInfoCol> configPathInfoColFactory();
/// A new collection without elements.
KELDABASE_API Rook::Ptr<PreinitPathInfoCol> preinitPathInfoColFactory();

// ------------------------------------------------------------------------------------------------
// The entity
// ------------------------------------------------------------------------------------------------

/// Owns the parser of one agent process and publishes its answers.
///
///     auto const wrap =
///         Kelda::agentMountFileInfoWrapFactory(false, "FanTray-2", "", "", "", true);
///     auto const mounts = wrap->getMountPathInfoAll("FanTray-2");
///     for (auto const& mount : *mounts)
///         use(mount->path(), mount->type(), mount->flags());
///
/// (The loop needs `mounts`: a collection lives as long as somebody holds a Rook::Ptr to it.)
///
/// A new entity has a parser, to which its agent string was added, but nothing is read: the first
/// operation that asks for paths makes the parser load everything. Faults in files, and questions
/// about what is not there, leave that operation as Fen::AgentException with the parser's text, and
/// the entity as it was.
///
/// Operations trace themselves at level 5 of the component "MountFileInfoWrap".
///
/// Threads: one thread at a time uses an entity. The collections it returns may be shared: any
/// number of threads may read one that nobody changes.
class KELDABASE_API AgentMountFileInfoWrap : public Rook::Node {
  public:
    /// Use agentMountFileInfoWrapFactory; it explains the arguments.
    AgentMountFileInfoWrap(bool dontMergeFlags, Rook::String const& agentString,
                           Rook::String const& overrideAgentString, Rook::String const& preinitDir,
                           Rook::String const& profileDir, bool loadMountProfile);
    /// As handleDestruction; called by the last Rook::Ptr.
    ~AgentMountFileInfoWrap() override;

    /// Makes the parser, over the directories preinitDir() and profileDir() (the default ones where
    /// they are empty) and with the default mount-group file "DefaultMountGroup", and adds the
    /// agent string to it. Does nothing while initialized(); otherwise a parser that was given with
    /// mountFileInfoPtrIs meanwhile is destroyed.
    void doInit();
    /// Destroys the parser; the collections stay. Afterwards doInit makes a new parser; any other
    /// operation that needs one is a programming error until then (an assertion).
    void handleDestruction();

    /// Adds a further agent string, as AgentMountFileInfo::addAgent does.
    void addAgent(Rook::String const& agentStringVal, Rook::String const& overrideAgentStringVal);
    /// Pins what was loaded, as AgentMountFileInfo::disableUnDoInit does.
    void disableUnDoInit();

    /// The type and flags of one path. A "/" at the end of `path` is dropped; one at its front is a
    /// programming error (an assertion). Throws Fen::AgentException when nothing mounts the path.
    Rook::Ptr<MountPathInfo> getMountPathInfo(Rook::String const& path);
    /// Every path that an agent gets from its profiles, and every path recorded at run time, in a
    /// new collection; none for an agent string that was never added.
    Rook::Ptr<MountPathInfoCol> getMountPathInfoAll(Rook::String const& agentName);
    /// Every path of one profile file, or of all that begin alike when the name ends in "*", with
    /// `withIncludes` also those of the files they include, in a new collection. Throws
    /// Fen::AgentException when no such file was loaded.
    Rook::Ptr<MountPathInfoCol> getMountPathInfoFile(Rook::String const& profileFileName,
                                                     bool withIncludes);
    /// Every path of one mount group in a new collection. The name is the agent name of the
    /// profile, "::" and the group's name, which is empty for paths before any group:
    /// "FanTray::default". Throws Fen::AgentException when there is no such group.
    Rook::Ptr<MountPathInfoCol> getMountPathInfoGroup(Rook::String const& mountGroupName);

    /// Every path that a "CONFIG:" line of a preinit file declares. The collection is the entity's
    /// own, which is filled when it is asked for while it has no element.
    Rook::Ptr<ConfigPathInfoCol> getConfigPathInfo();
    /// Every path of the preinit files. The collection is the entity's own, which is filled when it
    /// is asked for while it has no element.
    Rook::Ptr<PreinitPathInfoCol> getPreinitPathInfo();

    /// Whether a profile file of this name contributed a path.
    bool fileIsLoaded(Rook::String const& fileName);
    /// Whether the process is no agent in its container but, in all likelihood, a test: true until
    /// calledFromContainerIs(true).
    bool isLikelyTest();

    /// The entity's own collection, as it is; an empty one is made when there is none.
    Rook::Ptr<ConfigPathInfoCol> configPathColIs();
    /// The entity's own collection, as it is; an empty one is made when there is none.
    Rook::Ptr<PreinitPathInfoCol> preinitPathColIs();
    /// Takes the collection out of the entity: the caller has it, the next request makes a new one.
    /// Null when there is none.
    Rook::Ptr<ConfigPathInfoCol> configPathColDel();
    /// Takes the collection out of the entity, as configPathColDel does.
    Rook::Ptr<PreinitPathInfoCol> preinitPathColDel();

    /// Gives the entity another parser, which it will destroy as its own. The old one is not
    /// destroyed; it is the caller's.
    void mountFileInfoPtrIs(MountFileInfo* mountFileInfo);
    /// The parser, for questions that are not published here; null after handleDestruction.
    MountFileInfo* mountFileInfoPtr() const noexcept { return mountFileInfo_; }

    /// Says whether the process is an agent in its container; see isLikelyTest.
    void calledFromContainerIs(bool calledFromContainer) noexcept {
        calledFromContainer_ = calledFromContainer;
    }

    /// @name Attributes
    /// As they were given, not as doInit completes them; agentMountFileInfoWrapFactory explains
    /// them.
    /// @{

    /// Whether paths above the agent's are left out.
    bool dontMergeFlags() const noexcept { return dontMergeFlags_; }
    /// Whether profiles are read.
    bool loadMountProfile() const noexcept { return loadMountProfile_; }
    /// What calledFromContainerIs said last; false at first.
    bool calledFromContainer() const noexcept { return calledFromContainer_; }
    /// Whether doInit ran, and handleDestruction not since.
    bool initialized() const noexcept { return initialized_; }
    /// The agent string of the construction; addAgent adds others to the parser only.
    Rook::String const& agentString() const noexcept { return agentString_; }
    /// Its override; may be empty.
    Rook::String const& overrideAgentString() const noexcept { return overrideAgentString_; }
    /// The directory of preinit files; may be empty.
    Rook::String const& preinitDir() const noexcept { return preinitDir_; }
    /// The directory of mount profiles; may be empty.
    Rook::String const& profileDir() const noexcept { return profileDir_; }
    /// The entity's own collection, filled or not; null after configPathColDel.
    Rook::Ptr<ConfigPathInfoCol> const& configPathCol() const noexcept { return configPathCol_; }
    /// The entity's own collection, filled or not; null after preinitPathColDel.
    Rook::Ptr<PreinitPathInfoCol> const& preinitPathCol() const noexcept { return preinitPathCol_; }

    /// @}

  private:
    KELDABASE_LOCAL MountFileInfo& parser() const;
    KELDABASE_LOCAL Rook::Ptr<MountPathInfo> publish(Rook::String const& path);
    KELDABASE_LOCAL Rook::Ptr<MountPathInfoCol> publishAll(std::span<Rook::String const> paths);

    bool const dontMergeFlags_;
    bool const loadMountProfile_;
    bool calledFromContainer_ = false;
    bool initialized_ = false;
    Rook::String const agentString_;
    Rook::String const overrideAgentString_;
    Rook::String const preinitDir_;
    Rook::String const profileDir_;
    Rook::Ptr<ConfigPathInfoCol> configPathCol_;
    Rook::Ptr<PreinitPathInfoCol> preinitPathCol_;
    MountFileInfo* mountFileInfo_ = nullptr; // owned
};

/// A new entity, initialised. `agentString` names the agent, such as "FanTray-2";
/// `overrideAgentString`, if not empty, is what "%agentString" stands for in its profiles. Empty
/// directories stand for "/usr/lib64/preinit" and "/usr/lib64/KeldaMountProfiles".
/// `loadMountProfile` false: no profile is read. `dontMergeFlags` true: paths above the agent's are
/// not mounted for their sake.
KELDABASE_API Rook::Ptr<AgentMountFileInfoWrap> agentMountFileInfoWrapFactory(
    bool dontMergeFlags, Rook::String const& agentString, Rook::String const& overrideAgentString,
    Rook::String const& preinitDir, Rook::String const& profileDir, bool loadMountProfile);

/// The same from a list of the six arguments in their string forms (Fen::valueToStrep), in their
/// order: `false`, `"FanTray-2"`, `""`, `""`, `""`, `true`. Throws Fen::AttributeFormatException
/// for any other list.
KELDABASE_API Rook::Ptr<AgentMountFileInfoWrap>
agentMountFileInfoWrapFactory(std::span<Rook::String const> constructorArguments);

} // namespace Kelda
