// The life of the plug-in and of its applications.

#include "host/plugin_core.h"

#include "app/application.h"
#include "app/toolkit.h"
#include "host/interface_scope.h"

#include <cmath>
#include <utility>

namespace sonorelle {

CvirelainePlugIn::CvirelainePlugIn(CkvoHost* pluginHost, CkvoToolkit& plugInToolkit,
                                   const PlugInOptions& plugInOptions)
    : CkvoPlugInBase(pluginHost), toolkit(plugInToolkit), options(plugInOptions),
      store(CSnapshotStore::kVersion, CSnapshotStore::kUndoLimit, CkvovirelaineSnapshots::kMostSnapshots) {
    midiRecords.reserve(CkvoMidiEventContainer::kReservedEvents);
    const InterfaceScope scope(*this);
    BecomeEmpty();
}

// A load on another thread ends first, as cancelled, and so does whoever waits for it: they find nothing to
// do.
CvirelainePlugIn::~CvirelainePlugIn() {
    alive->store(false, std::memory_order_relaxed);
    const bool isWithinCall = HoldsGuiLock(); // an error; waiting for that call would be one for ever
    while (!guiLock.TryEnterCriticalSection()) {
        CancelLoad();
        std::this_thread::yield();
    }
    {
        const InterfaceScope scope(*this, std::adopt_lock);
        TearDown(nullptr);
        ForgetTimer(); // whatever thread this is: it must not fire any more
    }
    while (!isWithinCall && callsUnderWay.load(std::memory_order_acquire) > 0) std::this_thread::yield();
}

void CvirelainePlugIn::CancelLoad() {
    const SpinGuard guard(fileLock);
    if (application && !isLoaded) application->CancelAnalysis();
}

// What the host says, else whoever stands in for one.
float CvirelainePlugIn::HostSampleRate() const {
    const float rate = host != nullptr ? host->GetSampleRate() : 0.0F;
    if (std::isfinite(rate) && rate > 0) return rate;
    return givenSampleRate.load(std::memory_order_relaxed);
}

void CvirelainePlugIn::MakeApplication(CkvoAudioFile* audio) {
    ApplicationWiring wiring{toolkit, audioLock, audio, store};
    wiring.useCache = options.useCache;
    auto made = std::make_unique<CkvovirelaineApp>(wiring);
    made->SetPresets(&presets);
    cutMode.store(false, std::memory_order_relaxed);
    // Positions of the host in a document count in its rate: known before the first block, they need no
    // rescaling there.
    if (const float rate = HostSampleRate(); rate > 0) made->SetSampleRate(rate);
    const SpinGuard guard(fileLock);
    application = std::move(made);
}

// A session is saved into the program that is current: the application has to know which one that is. Its
// values are those of the document in a moment.
void CvirelainePlugIn::MakeRestoring() {
    MakeApplication(&audioFile);
    if (GetProgram() != kDefaultPreset) application->ApplyPreset(GetProgram());
}

// Under FileLock only the pointer goes; what it holds is freed while blocks already pass silence.
void CvirelainePlugIn::DestroyApplication() {
    DisarmPoll();
    if (application && faces && toolkit.IsInterfaceThread()) faces(nullptr);
    std::unique_ptr<CkvovirelaineApp> gone;
    {
        const SpinGuard guard(fileLock);
        isLoaded = false;
        gone = std::move(application);
    }
    gone.reset();
    panelsNeedRebuild.store(true, std::memory_order_relaxed);
    const SpinGuard guard(audioLock);
    store.ClearAll(); // its elements were the application's memory
}

// Nothing is loaded afterwards, and there is no application.
void CvirelainePlugIn::TearDown(Document keep) {
    {
        const SpinGuard guard(fileLock);
        isLoaded = false;
        keptDocument.swap(keep);
    }
    refusedState.reset();
    DestroyApplication();
    audioFile.Close();
}

// The start-up screen.
void CvirelainePlugIn::BecomeEmpty() {
    DestroyApplication();
    audioFile.Close();
    MakeApplication(nullptr);
    application->Run();
    ActivateToolbar(false);
    toolkit.RequestRedraw();
}

void CvirelainePlugIn::CreateEmptyApplication() {
    const auto stillThere = alive;
    {
        const CallScope call(*this);
        const InterfaceScope scope(*this);
        if (loading || !IsAlive()) return;
        TearDown(nullptr);
        BecomeEmpty();
    }
    if (stillThere->load(std::memory_order_relaxed)) TellUser();
}

void CvirelainePlugIn::WithApplication(const std::function<void(CkvovirelaineApp&)>& work) {
    {
        const InterfaceScope scope(*this);
        if (application) work(*application);
    }
    TellUser();
}

} // namespace sonorelle
