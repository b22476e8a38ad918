#include "cli/session_player.h"

#include "app/application.h"
#include "cli/session.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

namespace sonorelle {

namespace {

// A list of events in the form that hosts give them.
class EventList {
public:
    explicit EventList(std::vector<VstMidiEvent>& lent)
        : memory(std::make_unique<std::byte[]>(sizeof(VstEvents) + lent.size() * sizeof(VstEvent*))),
          list(new (memory.get()) VstEvents) {
        list->numEvents = static_cast<std::int32_t>(lent.size());
        VstEvent** const slots = EventSlots(*list);
        for (std::size_t i = 0; i < lent.size(); ++i) slots[i] = reinterpret_cast<VstEvent*>(&lent[i]);
    }
    const VstEvents* Get() const { return list; }

private:
    std::unique_ptr<std::byte[]> memory;
    VstEvents* list;
};

VstMidiEvent EventOf(const std::uint8_t (&bytes)[3], std::int32_t deltaFrames) {
    VstMidiEvent event;
    event.deltaFrames = deltaFrames;
    std::copy(std::begin(bytes), std::end(bytes), std::begin(event.midiData));
    return event;
}

// Samples of the recording that pass with one of the host.
double RatioOf(const CkvovirelaineApp& app) {
    if (!app.IsSyncingTempo()) return 1;
    return static_cast<double>(app.GetHostTempo()) / static_cast<double>(app.GetMelodyTempo());
}

} // namespace

SessionPlayer::SessionPlayer(CommandLineSession& lentSession, std::int32_t framesPerBlock)
    : session(lentSession), blockFrames(std::clamp(framesPerBlock, 1, kMostFrames)),
      samples(static_cast<std::size_t>(CvirelainePlugIn::kOutputs) * static_cast<std::size_t>(blockFrames)) {
    for (std::int32_t output = 0; output < CvirelainePlugIn::kOutputs; ++output)
        outputs.push_back(samples.data() + static_cast<std::ptrdiff_t>(output) * blockFrames);
}

void SessionPlayer::SetKeys(std::vector<MidiFileMessage> messages) {
    const auto rate = static_cast<double>(session.Host().GetSampleRate());
    keys.clear();
    for (const MidiFileMessage& message : messages)
        keys.push_back({std::round(message.seconds * rate), {message.status, message.data1, message.data2}});
    nextKey = 0;
}

void SessionPlayer::AddKey(std::uint8_t status, std::uint8_t key, std::uint8_t velocity) {
    immediate.push_back({0, {status, key, velocity}});
}

double SessionPlayer::LastKeySample() const { return keys.empty() ? 0 : keys.back().sample; }

bool SessionPlayer::Run(std::int64_t frames, const Sink& sink) {
    CommandLineHost& host = session.Host();
    for (std::int64_t done = 0; done < frames;) {
        const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(frames - done, blockFrames));
        SendKeys(count);
        session.PlugIn().Process(nullptr, outputs.data(), count);
        host.Advance(count);
        done += count;
        PollInTime(count);
        if (sink && !sink(outputs[0], outputs[1], count)) return false;
    }
    session.PlugIn().PollApplication();
    return true;
}

void SessionPlayer::SkipKeysBefore(double sample) {
    while (nextKey < keys.size() && keys[nextKey].sample < sample) ++nextKey;
}

void SessionPlayer::SendKeys(std::int32_t frames) {
    std::vector<VstMidiEvent> events;
    for (const Key& key : immediate) events.push_back(EventOf(key.bytes, 0));
    immediate.clear();
    const CommandLineHost& host = session.Host();
    if (host.IsPlaying()) {
        SkipKeysBefore(host.GetPosition());
        for (; nextKey < keys.size() && keys[nextKey].sample < host.GetPosition() + frames; ++nextKey)
            events.push_back(EventOf(keys[nextKey].bytes,
                                     static_cast<std::int32_t>(keys[nextKey].sample - host.GetPosition())));
    }
    if (!events.empty()) session.PlugIn().ProcessEvents(EventList(events).Get());
}

void SessionPlayer::PollInTime(std::int32_t frames) {
    unpolled += frames / static_cast<double>(session.Host().GetSampleRate());
    if (unpolled < CkvovirelaineApp::kPollSeconds) return;
    unpolled = 0;
    session.PlugIn().PollApplication();
}

// The position in the melody is truncated to whole samples, so that the sample before might just miss it.
double SessionPlayer::HostSampleOf(std::int32_t frame) {
    double sample = 0;
    session.With([&](CkvovirelaineApp& app) {
        const double begin = app.GetMasterPlaybackStart();
        const double ratio = RatioOf(app);
        sample = std::ceil(begin + frame / ratio);
        if ((sample - begin) * ratio < frame) sample += 1;
    });
    return sample;
}

std::int64_t SessionPlayer::RegionFrames() {
    double frames = 0;
    session.With([&](CkvovirelaineApp& app) {
        frames = std::ceil((static_cast<double>(app.GetPlayEnd()) - app.GetPlayStart()) / RatioOf(app));
    });
    return static_cast<std::int64_t>(frames);
}

} // namespace sonorelle
