// Prints the source of the manual page kelda-rules(7), for the build.
#include <cstdio>

#include "database/findings/RulesManual.h"

int main() {
    auto const page = KeldaDatabase::rulesManual();
    bool const written = std::fwrite(page.data(), 1, page.size(), stdout) == page.size();
    return written && std::fflush(stdout) == 0 ? 0 : 1;
}
