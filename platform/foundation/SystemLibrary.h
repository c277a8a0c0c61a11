// Libraries of the system that few runs need: opened when the first of their functions is called.
//
// Linked, HEIF's and the web's libraries and the forty that they bring along cost every start of the program 8 ms.
#pragma once

#include <atomic>

namespace quillomat {

class SystemLibrary {
public:
    /// Nothing is opened yet. `fileName` is a literal such as "libz.so.1".
    explicit constexpr SystemLibrary(const char* fileName) : fileName_(fileName) {}

    /// Opens it. Once open, it is for the rest of the run.
    [[nodiscard]] bool isThere() const { return handle() != nullptr; }
    /// Null where the library or the function is not there.
    [[nodiscard]] void* find(const char* function) const;

private:
    [[nodiscard]] void* handle() const;

    const char* fileName_;
    mutable std::atomic<void*> handle_{nullptr};
};

/// One function of such a library; to be called only where the library is there.
template <typename Function> class SystemFunction {
public:
    constexpr SystemFunction(const SystemLibrary& library, const char* name) : library_(library), name_(name) {}

    template <typename... Arguments> decltype(auto) operator()(Arguments... arguments) const {
        return get()(arguments...);
    }
    [[nodiscard]] Function* get() const {
        static_assert(sizeof(Function*) == sizeof(void*));
        return reinterpret_cast<Function*>(library_.find(name_));
    }

private:
    const SystemLibrary& library_;
    const char* name_;
};

} // namespace quillomat
