#include "AgentStory.h"

#include <map>
#include <optional>
#include <utility>

#include <KeldaBase/AgentMountFileInfo.h>
#include <KeldaBase/LoadObserver.h>
#include <KeldaUtil/MountFlags.h>

#include "MountCollector.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {
namespace {

// Writes down what the parser meets of the path. Aliases, group and condition are those in force.
class StoryObserver : public Kelda::LoadObserver {
  public:
    StoryObserver(AskedPath const& asked, PlaceReader& places)
        : collector(asked), asked_(asked), places_(places) {}

    void everyProfileKnows(Kelda::StringMap const& aliases) { everyProfile_ = aliases; }
    void agentNamesItself(std::string agentString) { agentString_ = std::move(agentString); }
    void searches(bool on) { searches_ = on; }
    void faultFound(Kelda::MfiException const& fault) {
        lastFault_ = fault.msg.view();
        settle();
        faults_.push_back(
            {files_.empty() ? StoryPlace() : places_.told(files_.back(), fault.line), lastFault_});
    }
    // The file that was opened last, of those that are not included.
    std::string const& topFile() const { return topFile_; }
    std::vector<StoryFault> takeFaults() { return std::move(faults_); }
    std::vector<PassedLine> takePassed() {
        settle();
        return std::move(passed_);
    }

    void fileOpened(Rook::String const& directory, Kelda::Places places) override {
        auto const name = std::string(places.back().file.view());
        files_.push_back(directory.empty() ? name : std::string(directory.view()) + "/" + name);
        if (files_.size() > 1)
            return;
        topFile_ = files_.back();
        definitions_.clear();
        group_ = std::nullopt;
        conditionLine_.reset();
    }
    void fileClosed(Kelda::Places /*places*/) override { files_.pop_back(); }

    void mountLine(Kelda::MountLine const& line, Kelda::Places places) override {
        settle();
        if (line.isRefused) {
            auto told = toldLine(line, places);
            told.path = expanded(line.writtenPath);
            if (asked_.matches(told.path))
                passed_.push_back({std::move(told), lastFault_});
        } else if (asked_.matches(line.path.view())) {
            collector.lineIsNext(toldLine(line, places));
        } else if (line.writtenPath.find('%') != std::string_view::npos &&
                   asked_.matches(wildcard(line.writtenPath))) {
            passed_.push_back({toldLine(line, places), ""});
        }
    }
    void recordChanged(Rook::String const& path, Kelda::MountArgs const* before,
                       Kelda::MountArgs const& after, Kelda::Places places) override {
        collector.changed(path, before, after, !places.empty());
    }
    void flagsInherited(Rook::String const& path, Rook::String const& parent,
                        Fen::MountTable::Flags before, Fen::MountTable::Flags after) override {
        collector.inherited(path, parent, before, after);
    }

    void tokenBound(Rook::String const& token, Rook::String const& value,
                    Kelda::Places places) override {
        define(token, {"", std::string(value.view()), StoryAlias::Origin::token, "", {}}, places);
    }
    void aliasDefined(Rook::String const& name, std::string_view expression,
                      Rook::String const& value, Kelda::Places places) override {
        define(name,
               {"",
                std::string(value.view()),
                StoryAlias::Origin::aliasLine,
                std::string(expression),
                {}},
               places);
    }
    void aliasUsed(Rook::String const& name, Rook::String const& value,
                   Kelda::Places /*places*/) override {
        // Only "%agentString" becomes an alias of a file without being told of.
        if (name == "%agentstring" && !definitions_.contains("%agentstring"))
            agentString_ = value.view();
    }

    void groupOpened(std::string_view name, unsigned char priority, Kelda::Places places) override {
        group_ = {std::string(name), priority, lineOf(places)};
        conditionLine_.reset();
    }
    void keywordLine(std::string_view keyword, std::string_view /*line*/,
                     Kelda::Places places) override {
        if (keyword.starts_with("Condition"))
            conditionLine_ = lineOf(places);
    }

    MountCollector collector;

  private:
    struct Line {
        std::string file;
        std::int32_t line = 0;
    };
    struct Definition {
        StoryAlias alias;
        Line line;
    };
    struct Group {
        std::string name;
        unsigned priority = 0;
        Line line;
    };

    Line lineOf(Kelda::Places places) const { return {files_.back(), places.back().line}; }

    void define(Rook::String const& name, StoryAlias alias, Kelda::Places places) {
        definitions_[lowerCase(name.view())] = {std::move(alias), lineOf(places)};
    }

    // A matching line of which no record was made is one that was refused.
    void settle() {
        if (auto line = collector.takeRefusedLine())
            passed_.push_back({std::move(*line), lastFault_});
    }

    StoryPlace placeOf(Kelda::Places places) {
        auto place = places_.told(files_.back(), places.back().line);
        for (auto i = places.size() - 1; i-- > 0;) {
            auto const by = places_.told(files_[i], places[i].line);
            place.from.push_back({by.file, by.line});
        }
        return place;
    }

    StoryLine toldLine(Kelda::MountLine const& line, Kelda::Places places) {
        StoryLine told;
        told.place = placeOf(places);
        told.path = line.path.view();
        told.flags = flagText(KeldaUtil::parseMountTableFlags(Rook::String(line.flags)));
        if (pathFields(told.place.text)) {
            told.writtenPath = line.writtenPath;
            for (auto const& token : tokensIn(line.writtenPath))
                told.aliases.push_back(aliasOf(token));
        }
        if (!line.isRefused && line.type.view() != line.writtenType)
            told.otherType = line.writtenType;
        tellGroup(told);
        told.isConditional = line.isConditional;
        if (line.isConditional && conditionLine_) {
            told.conditionPlace = places_.told(conditionLine_->file, conditionLine_->line);
            told.condition = told.conditionPlace.text;
        }
        return told;
    }

    void tellGroup(StoryLine& told) {
        if (!group_) {
            told.group = searches_ ? "" : "default";
            return;
        }
        told.group = group_->name;
        told.groupPriority = group_->priority;
        told.groupPlace = places_.told(group_->line.file, group_->line.line);
    }

    StoryAlias aliasOf(std::string const& token) {
        auto const name = lowerCase(token);
        StoryAlias alias{token, "", StoryAlias::Origin::undefined, "", {}};
        if (auto const found = definitions_.find(name); found != definitions_.end()) {
            alias = found->second.alias;
            alias.name = token;
            alias.place = places_.told(found->second.line.file, found->second.line.line);
        } else if (name == "%agentstring") {
            alias.value = agentString_;
            alias.origin = StoryAlias::Origin::agentString;
        } else if (auto const every = everyProfile_.find(Rook::String(name));
                   every != everyProfile_.end()) {
            alias.value = every->second.view();
            alias.origin = StoryAlias::Origin::everyProfile;
        }
        return alias;
    }

    // As the parser would have expanded a path that it refused.
    std::string expanded(std::string_view written) {
        std::string path(written);
        std::size_t at = 0;
        for (auto const& token : tokensIn(written)) {
            at = path.find(token, at);
            auto const value = aliasOf(token).value;
            path.replace(at, token.size(), value);
            at += value.size();
        }
        return path;
    }

    AskedPath const& asked_;
    PlaceReader& places_;
    Kelda::StringMap everyProfile_;
    std::string agentString_;
    bool searches_ = false;
    std::vector<std::string> files_; // the open ones
    std::string topFile_;
    std::map<std::string, Definition> definitions_; // by lower-case name
    std::optional<Group> group_;
    std::optional<Line> conditionLine_;
    std::string lastFault_;
    std::vector<PassedLine> passed_;
    std::vector<StoryFault> faults_;
};

// The parser of an agent, but for its going on after a fault.
class RecordingAgent : public Kelda::AgentMountFileInfo {
  public:
    RecordingAgent(std::string const& preinitDir, std::string const& profileDir,
                   StoryObserver& observer)
        : AgentMountFileInfo(false, preinitDir, profileDir, true, "DefaultMountGroup"),
          observer_(observer) {
        observer_.everyProfileKnows(predefinedAliases());
        loadObserverIs(&observer_);
    }
    ~RecordingAgent() override { loadObserverIs(nullptr); }

    void maybeThrow(Rook::String const& message) const override {
        MountFileInfo::maybeThrow(message);
        observer_.faultFound(exceptions_.back());
    }

    int profileSearcher(FILE* file) override {
        observer_.searches(true);
        auto const profiles = AgentMountFileInfo::profileSearcher(file);
        observer_.searches(false);
        if (profiles > 0)
            profiles_.push_back(observer_.topFile());
        return profiles;
    }

    AgentStory story(std::string const& agentString) {
        doInit();
        AgentStory story;
        story.foundMountProfile = foundMountProfile(Rook::String(agentString));
        story.noDefaultMountGroup = noDefaultMountGroup();
        story.agent = {{agentString},
                       activeMountInternal(),
                       observer_.collector.take(pathMountArgsMap_, rootFlags_)};
        story.passed = observer_.takePassed();
        story.profiles = std::move(profiles_);
        story.faults = observer_.takeFaults();
        return story;
    }

  private:
    StoryObserver& observer_;
    std::vector<std::string> profiles_;
};

} // namespace

AgentStory agentStory(std::string const& preinitDir, std::string const& profileDir,
                      std::string const& agentString, AskedPath const& asked, PlaceReader& places) {
    StoryObserver observer(asked, places);
    observer.agentNamesItself(agentString);
    RecordingAgent parser(preinitDir, profileDir, observer);
    parser.addAgent(Rook::String(agentString), "");
    return parser.story(agentString);
}

} // namespace KeldaDatabase
