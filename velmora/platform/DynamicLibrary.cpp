#include "velmora/platform/DynamicLibrary.h"

#include <filesystem>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace velmora {

#if defined(_WIN32)

DynamicLibrary::DynamicLibrary(const std::string& path) {
    const auto absolute = std::filesystem::absolute(path);
    absolutePath = absolute.string();
    handle = LoadLibraryW(absolute.wstring().c_str());
    if (!handle)
        errorString = std::system_category().message(static_cast<int>(GetLastError()));
}

DynamicLibrary::~DynamicLibrary() {
    if (handle)
        FreeLibrary(static_cast<HMODULE>(handle));
}

void* DynamicLibrary::getSymbol(const std::string& name) const {
    if (!handle)
        return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name.c_str()));
}

#else

DynamicLibrary::DynamicLibrary(const std::string& path) {
    std::error_code error;
    absolutePath = std::filesystem::absolute(path, error).string();
    handle = dlopen(absolutePath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle)
        return;
    const char* reason = dlerror();
    errorString = reason ? reason : "unknown reason";
}

DynamicLibrary::~DynamicLibrary() {
    if (handle)
        dlclose(handle);
}

void* DynamicLibrary::getSymbol(const std::string& name) const {
    return handle ? dlsym(handle, name.c_str()) : nullptr;
}

#endif

} // namespace velmora
