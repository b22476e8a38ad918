#include "host/library_pin.h"

#include <dlfcn.h>

namespace sonorelle {

namespace {

// Any address of this library.
const char kHere = 0;

void* OpenAgain() {
    Dl_info info;
    if (dladdr(&kHere, &info) == 0 || info.dli_fname == nullptr) return nullptr;
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
}

} // namespace

CLibraryPin::CLibraryPin() : library(OpenAgain()) {}

CLibraryPin::~CLibraryPin() {
    if (library != nullptr) dlclose(library);
}

} // namespace sonorelle
