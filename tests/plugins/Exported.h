// What a plug-in offers to its test, beside what it offers to the library.
#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

// The object that the plug-in's function `name` returns a pointer to. The plug-in is the very one
// that the library uses, since both open it by its name.
template <class Object>
Object& exportedBy(char const* plugin, char const* name) {
    void* const handle = dlopen(plugin, RTLD_NOW);
    void* const symbol = handle == nullptr ? nullptr : dlsym(handle, name);
    if (symbol == nullptr)
        throw std::runtime_error(std::string(plugin) + " offers no " + name);
    return *reinterpret_cast<Object* (*)()>(symbol)();
}
