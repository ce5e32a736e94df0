// The program kelda: picks a command, lets it work, writes what it reports.
#include <exception>
#include <string>

#include "CommandLine.h"
#include "Output.h"

int main(int argc, char** argv) {
    using namespace KeldaTool;
    prepareStandardStreams();
    try {
        return static_cast<int>(writeReport(runCommandLine(argc, argv, colourIsWelcome())));
    } catch (std::exception const& error) {
        writeMessage(std::string("kelda: ") + error.what() + "\n");
        return static_cast<int>(ExitStatus::failure);
    }
}
