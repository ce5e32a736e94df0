// The library's side of the comparison: a database-side flavour of the parser, built on the public
// headers alone, that reads every profile, records every fault and goes on.
#pragma once

#include <string>

#include <KeldaBase/MountFileInfo.h>

namespace bench {

// Tokens of agent names and %agentString stand for "*". The default groups are filed under the
// empty agent name.
class LenientLoad : public Kelda::MountFileInfo {
  public:
    LenientLoad(std::string const& preinitDir, std::string const& profileDir);
    ~LenientLoad() override;

    void doInit() override;
    int profileSearcher(FILE* file) override;
    Rook::String evaluateAliasValue(Rook::String const& token) override;

  private:
    void bindTokens(Rook::String const& agentName);
    void loadDefaultGroup(Rook::String const& name);
};

} // namespace bench
