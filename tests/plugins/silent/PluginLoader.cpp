// A plug-in library that offers nothing the library looks for.
extern "C" __attribute__((visibility("default"))) void* getSomethingElse() {
    return nullptr;
}
