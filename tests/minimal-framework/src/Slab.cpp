#include <MemSlab/Slab.h>

#include <map>
#include <mutex>
#include <string>

namespace MemSlab {

Slab& slab(std::string_view name) {
    static std::mutex mutex;
    // Never destroyed: memory of a slab may be given back by the last static variable.
    static auto& slabs = *new std::map<std::string, Slab>;
    std::scoped_lock const lock(mutex);
    return slabs[std::string(name)];
}

} // namespace MemSlab
