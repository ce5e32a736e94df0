// A file-load check built elsewhere: it knows the interface from its own declaration only. It
// refuses the files that its test names, and keeps a list of the calls it gets.
#include <functional>
#include <set>
#include <string>
#include <vector>

#define EXPORTED __attribute__((visibility("default")))

class EXPORTED FileLoadCheck {
  public:
    virtual int parse() = 0;
    virtual bool canLoad(std::string const& dir, std::string const& file) = 0;
    virtual std::string const& fileType() = 0;
    virtual bool parsed() = 0;
    virtual ~FileLoadCheck() = default;
};

namespace {

std::vector<std::string> calls;
std::set<std::string> refused;
std::set<std::string> unparsable;
std::function<void()> whenAsked = [] {};

class RefusingCheck : public FileLoadCheck {
  public:
    explicit RefusingCheck(std::string const& fileType) : fileType_(fileType) { note("made"); }
    ~RefusingCheck() override { note("destroyed"); }

    int parse() override {
        note("parse");
        parsed_ = !unparsable.contains(fileType_);
        return 17;
    }
    bool canLoad(std::string const& dir, std::string const& file) override {
        note("canLoad " + dir + " " + file);
        whenAsked();
        return !refused.contains(file);
    }
    std::string const& fileType() override {
        note("fileType");
        return fileType_;
    }
    bool parsed() override {
        note("parsed");
        return parsed_;
    }

  private:
    void note(std::string const& call) const { calls.push_back(fileType_ + ": " + call); }

    std::string fileType_;
    bool parsed_ = false;
};

FileLoadCheck* make(std::string const& fileType) {
    return new RefusingCheck(fileType);
}

} // namespace

extern "C" {

using Factory = FileLoadCheck* (*)(std::string const&);

EXPORTED Factory getFileLoadCheckFactory() {
    calls.push_back("getFileLoadCheckFactory");
    return &make;
}

EXPORTED std::vector<std::string>* callsOfThePlugin() {
    return &calls;
}
EXPORTED std::set<std::string>* refusedNames() {
    return &refused;
}
EXPORTED std::set<std::string>* unparsableTypes() {
    return &unparsable;
}
EXPORTED std::function<void()>* actionWhenAsked() {
    return &whenAsked;
}
}
