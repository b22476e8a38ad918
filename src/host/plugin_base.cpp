#include "host/plugin_base.h"

namespace sonorelle {

namespace {

// Nothing runs at load or unload: both are there before any code and need no end.
constinit std::mutex instanceLock;
constinit std::int32_t instanceCount = 0; // under instanceLock

} // namespace

CkvoPlugInBase::CkvoPlugInBase(CkvoHost* pluginHost) : host(pluginHost) {
    const std::lock_guard guard(instanceLock);
    ++instanceCount;
}

CkvoPlugInBase::~CkvoPlugInBase() {
    const std::lock_guard guard(instanceLock);
    --instanceCount;
}

std::int32_t CkvoPlugInBase::InstanceCount() {
    const std::lock_guard guard(instanceLock);
    return instanceCount;
}

std::mutex& CkvoPlugInBase::InstanceLock() { return instanceLock; }

} // namespace sonorelle
