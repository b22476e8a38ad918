#include "vst/plugin_library.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>

// LeakSanitizer's own, where the program has it.
extern "C" {
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace sonorelle::test {

std::string BuiltPlugIn() {
    // It stays loaded from here on, and so keeps what its toolkit has once for the process.
    static const void* const kept = dlopen(PlugInPath(), RTLD_NOW | RTLD_LOCAL);
    static_cast<void>(kept);
    return PlugInPath();
}

PlugInLibrary::PlugInLibrary(const std::string& path) : handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle == nullptr) {
        const char* const why = dlerror();
        throw std::runtime_error(why != nullptr ? why : path);
    }
}

VstEntry PlugInLibrary::Entry(const char* name) const {
    return reinterpret_cast<VstEntry>(dlsym(handle, name));
}

void PlugInLibrary::Unload() {
    if (handle != nullptr) dlclose(handle);
    handle = nullptr;
}

OwnPlugInFile::OwnPlugInFile() {
    std::filesystem::copy_file(BuiltPlugIn(), Path());
    if (__lsan_disable != nullptr) __lsan_disable();
}

OwnPlugInFile::~OwnPlugInFile() {
    if (__lsan_enable != nullptr) __lsan_enable();
}

bool OwnPlugInFile::IsInMemory() const {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(Path()) != std::string::npos) return true;
    return false;
}

} // namespace sonorelle::test
