#include "platform/foundation/SystemLibrary.h"

#include <dlfcn.h>

namespace quillomat {

void* SystemLibrary::find(const char* function) const {
    void* const library = handle();
    return library != nullptr ? ::dlsym(library, function) : nullptr;
}

void* SystemLibrary::handle() const {
    void* library = handle_.load(std::memory_order_acquire);
    if (library == nullptr) {
        // Two threads at once open it twice, which gives the same.
        library = ::dlopen(fileName_, RTLD_NOW | RTLD_LOCAL);
        handle_.store(library, std::memory_order_release);
    }
    return library;
}

} // namespace quillomat
