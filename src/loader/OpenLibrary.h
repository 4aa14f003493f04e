#pragma once

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

// Null, and dlerror() says why, when the library cannot be loaded. The libraries are in a folder
// beside the program, or where both were installed to.
inline void *openLibrary(const char *library)
{
    std::error_code error;
    const auto programs = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto built = programs / "lib" / library;
    const auto installed = programs / OSTRELLE_INSTALLED_LIBRARIES / library;
    return ::dlopen((std::filesystem::exists(built, error) ? built : installed).c_str(), RTLD_LAZY);
}
