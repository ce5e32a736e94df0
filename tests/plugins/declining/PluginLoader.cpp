// A plug-in that has no file-load check to offer: it gives a null factory, and counts how often it
// is asked.
#include <string>

#define EXPORTED __attribute__((visibility("default")))

class FileLoadCheck;

namespace {

int timesAsked = 0;

} // namespace

extern "C" {

using Factory = FileLoadCheck* (*)(std::string const&);

EXPORTED Factory getFileLoadCheckFactory() {
    ++timesAsked;
    return nullptr;
}

EXPORTED int* timesAskedForTheFactory() {
    return &timesAsked;
}
}
