// A library that tells the cell its test sets, 2 at first, and counts how often it is asked.
#include <atomic>

#define EXPORTED __attribute__((visibility("default")))

namespace {

std::atomic<unsigned int> cell = 2;
std::atomic<int> asked = 0;

} // namespace

extern "C" {

EXPORTED unsigned int cellIdInCNamespace() {
    ++asked;
    return cell;
}

EXPORTED std::atomic<unsigned int>* cellToTell() {
    return &cell;
}
EXPORTED std::atomic<int>* timesAskedForTheCell() {
    return &asked;
}
}
