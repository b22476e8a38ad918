// Where a VST 2 host comes in. Everything else of the library is hidden.

#include "host/vst_bridge.h"
#include "host/vst_window.h"

#include <memory>

using sonorelle::AEffect;
using sonorelle::AudioMasterCallback;

namespace {

AEffect* MakeEffect(AudioMasterCallback audioMaster) noexcept try {
    if (audioMaster == nullptr) return nullptr;
    if (audioMaster(nullptr, sonorelle::kMasterVersion, 0, 0, nullptr, 0) == 0) return nullptr;
    auto effect = std::make_unique<sonorelle::CsonorelleVST>(audioMaster, sonorelle::MakePlugInToolkit(),
                                                             sonorelle::MakePlugInWindow);
    return effect.release()->GetAEffect();
} catch (...) {
    return nullptr;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] AEffect* VSTPluginMain(AudioMasterCallback audioMaster) {
    return MakeEffect(audioMaster);
}

// Under the name of the interface's first years as well. The compiler does not take a `main` of this kind.
[[gnu::visibility("default")]] AEffect*
VSTPluginMainUnderItsOldName(AudioMasterCallback audioMaster) asm("main");
AEffect* VSTPluginMainUnderItsOldName(AudioMasterCallback audioMaster) { return MakeEffect(audioMaster); }
}
