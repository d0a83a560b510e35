#include "velmora/platform/DynamicLibrary.h"

#include "velmora/platform/FileSystem.h"

#include <filesystem>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace velmora {

namespace {

const char* const noPath = "the name of the library gives no path";

} // namespace

#if defined(_WIN32)

DynamicLibrary::DynamicLibrary(const std::string& path) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(existingName(path), error);
    absolutePath = absolute.string();
    if (path.empty() || error) {
        errorString = noPath;
        return;
    }
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
    absolutePath = std::filesystem::absolute(existingName(path), error).string();
    if (path.empty() || error) { // an empty name would stand for the program itself
        errorString = noPath;
        return;
    }
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
