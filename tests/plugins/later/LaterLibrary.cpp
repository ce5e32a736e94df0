// A library that programs load behind the parser's: it offers what the plug-ins would.
#include <string>

#include <KeldaBase/DynFileLoadCheck.h>

namespace {

class LaterCheck : public FileLoadCheck {
  public:
    explicit LaterCheck(std::string const& fileType) : fileType_("later " + fileType) {}
    int parse() override { return 0; }
    bool canLoad(std::string const&, std::string const& file) override { return file != "refused"; }
    std::string const& fileType() override { return fileType_; }
    bool parsed() override { return true; }

  private:
    std::string fileType_;
};

FileLoadCheck* make(std::string const& fileType) {
    return new LaterCheck(fileType);
}

} // namespace

extern "C" {

KELDABASE_API DynFileLoadCheck::Factory getFileLoadCheckFactory() {
    return &make;
}
KELDABASE_API unsigned int cellIdInCNamespace() {
    return 2;
}
}
