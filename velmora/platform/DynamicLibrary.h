#pragma once

#include "velmora/platform/Export.h"

#include <string>

namespace velmora {

/// A library loaded at run time, unloaded with the object. All its symbols are bound at load, and offered to
/// nobody else.
class VELMORA_EXPORT DynamicLibrary {
  public:
    /// Loads the library; the path is made absolute first, so that no search path counts; backslashes
    /// stand for slashes where only that name exists. On failure `getErrorString` tells why.
    explicit DynamicLibrary(const std::string& path);
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;
    ~DynamicLibrary();

    bool isLoaded() const { return handle != nullptr; }
    /// Reason why the library could not be loaded; empty if it is.
    const std::string& getErrorString() const { return errorString; }
    /// Absolute path of the library.
    const std::string& getPath() const { return absolutePath; }

    /// A function of the library as F, a function pointer type; null if there is none of that name.
    template <class F>
    F getFunction(const std::string& name) const {
        return reinterpret_cast<F>(getSymbol(name));
    }

  private:
    void* getSymbol(const std::string& name) const;

    std::string absolutePath;
    std::string errorString;
    void* handle = nullptr;
};

} // namespace velmora
