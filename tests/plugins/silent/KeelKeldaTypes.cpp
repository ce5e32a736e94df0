// A library of the right name that does not know the cell.
extern "C" __attribute__((visibility("default"))) unsigned int cellIdInAnotherNamespace() {
    return 2;
}
