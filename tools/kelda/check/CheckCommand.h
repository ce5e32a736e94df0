// kelda check: everything that is wrong in the files of a device, or of many.
#pragma once

#include <string>
#include <vector>

#include "Command.h"
#include "DeviceOptions.h"
#include "check/CheckResult.h"
#include "check/CheckSelection.h"
#include "devices/DeviceBatch.h"

namespace KeldaTool {

class CheckCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;
    /// Under a JSON format, the document that says so.
    std::string wrongCallResults(std::vector<std::string> const& words,
                                 std::string const& what) const override;

  private:
    struct Input;
    Input input() const;
    Report checkDevice(bool colour) const;
    Report checkEach(bool colour) const;
    CheckResult resultOfDevice(std::string const& device) const;
    Report reportOf(CheckResult const& result, bool colour) const;
    CheckResult resultOf(KeldaDatabase::DatabaseMountFileInfo& parser, Input const& input) const;
    KeldaDatabase::Severity severityOf(KeldaDatabase::Finding const& finding) const;
    void leaveOutIfQuiet(CheckResult& result) const;
    Report keep(CheckResult const& result) const;
    Report failure(std::string const& what) const;

    DeviceOptions device_;
    BatchOptions batch_;
    std::vector<std::string> files_;
    std::string format_ = "text";
    CheckSelection selection_;
    std::string baseline_;
    std::string writeBaseline_;
    std::string stdinFilename_;
    bool warningsAreErrors_ = false;
    bool verbose_ = false;
    bool quiet_ = false;
};

} // namespace KeldaTool
