#include "cli/live_playing.h"

#include "app/application.h"
#include "cli/mix_file.h"
#include "cli/session.h"
#include "cli/session_player.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr double kProgressSteps = 100;

// Keys that are held choose what is sung; for the time of this object.
class LiveInputMode {
public:
    LiveInputMode(CommandLineSession& lentSession, const PlayingSettings& playing)
        : session(lentSession), settings(playing) {
        session.With([this](CkvovirelaineApp& app) { Enter(app); });
    }
    ~LiveInputMode() {
        session.With([this](CkvovirelaineApp& app) { Leave(app); });
    }
    LiveInputMode(const LiveInputMode&) = delete;
    LiveInputMode& operator=(const LiveInputMode&) = delete;

private:
    bool IsTrigger() const { return settings.live == LiveInput::kTrigger; }

    void Enter(CkvovirelaineApp& app) {
        wasTriggered = app.IsTriggeredBySnapshots();
        if (IsTrigger() != wasTriggered) PressMode(app, IsTrigger());
        if (!settings.live || IsTrigger()) return;
        CkvovirelaineChoirSettings& choir = app.ChoirPanel();
        const float transpose = app.GetTranspose();
        choir.SetInterpretation(settings.live == LiveInput::kPitches ? 1 : 0);
        choir.SetRecording(settings.record);
        choir.PressLive(true);
        undoSteps = 1;
        if (app.GetTranspose() != transpose) { // the panels tell of no octaves
            app.SetTranspose(transpose);
            ++undoSteps;
        }
    }

    // What was recorded becomes the voices with the end of the recording, and no style may make them anew.
    void Leave(CkvovirelaineApp& app) {
        if (settings.record) {
            const float transpose = app.GetTranspose();
            app.ChoirPanel().SetRecording(false);
            app.ChoirPanel().PressEdit(true);
            app.SetTranspose(transpose);
        } else {
            for (; undoSteps > 0; --undoSteps) app.Undo();
        }
        if (IsTrigger() != wasTriggered) PressMode(app, wasTriggered);
    }

    static void PressMode(CkvovirelaineApp& app, bool trigger) {
        if (trigger) {
            app.PlaybackPanel().PressMidi();
        } else {
            app.PlaybackPanel().PressTime();
        }
    }

    CommandLineSession& session;
    const PlayingSettings& settings;
    bool wasTriggered = false;
    int undoSteps = 0;
};

class Playing {
public:
    Playing(CommandLineSession& lentSession, const PlayingSettings& playing,
            const std::function<bool(double share)>& lentProgress)
        : session(lentSession), settings(playing), progress(lentProgress),
          player(lentSession, playing.blocks.value_or(SessionPlayer::kUsualFrames)) {
        player.SetKeys(settings.keys);
    }

    PlayedSound Into(const std::string& path) {
        PlayedSound sound;
        if (!mix.Open(path, session.Host().GetSampleRate())) return {kCannotWrite, 0};
        {
            const LiveInputMode mode(session, settings);
            const bool played = settings.live == LiveInput::kTrigger ? PlayKeys() : PlayRegion();
            session.Host().Stop();
            session.PassTransport();
            if (!played) return {writeFailed ? kCannotWrite : CAudioExport::kCancelled, 0};
        }
        sound.limitedFrames = mix.GetLimitedFrames();
        sound.result = mix.Close() ? kOk : kCannotWrite;
        return sound;
    }

private:
    // A host that starts too far behind the recording's length is taken to have left it, also when the melody
    // is stretched; it is then sent a little ahead, and what it plays on the way is silence.
    bool PlayRegion() {
        std::int32_t playStart = 0;
        double latest = 0;
        session.With([&](CkvovirelaineApp& app) {
            playStart = app.GetPlayStart();
            latest = app.GetMasterPlaybackStart() + app.GetMelodyEnd();
        });
        const double begin = player.HostSampleOf(playStart);
        const double start = std::min(begin, std::floor(latest));
        total = player.RegionFrames();
        session.Host().Play(start);
        return player.Run(static_cast<std::int64_t>(begin - start), nullptr) && Run(total);
    }

    // To the last key, and on until it is quiet: at the longest a whole melody.
    bool PlayKeys() {
        std::int64_t longest = 0;
        session.With([&](CkvovirelaineApp& app) {
            constexpr double kFadeSamples = 1024; // of a stop
            const double stretch =
                app.IsSyncingTempo() ? static_cast<double>(app.GetMelodyTempo() / app.GetHostTempo()) : 1;
            longest = static_cast<std::int64_t>((app.GetMelodyEnd() + kFadeSamples) * std::max(stretch, 1.0));
        });
        const auto keyed = static_cast<std::int64_t>(std::min(player.LastKeySample(), kFarthestKey)) + 1;
        total = keyed;
        session.Host().Play(0);
        if (!Run(keyed)) return false;
        constexpr std::int64_t kStep = 8192; // whatever the blocks: the file's length does not depend on them
        for (std::int64_t more = 0; more < longest && IsSounding(); more += kStep)
            if (!Run(kStep)) return false;
        return true;
    }

    bool IsSounding() {
        bool playing = false;
        session.With([&](CkvovirelaineApp& app) { playing = app.IsPlaying(); });
        return playing;
    }

    bool Run(std::int64_t frames) {
        return player.Run(frames, [this](const float* left, const float* right, std::int32_t count) {
            writeFailed = !mix.Write(left, right, count);
            done += count;
            const double share = std::min(static_cast<double>(done) / static_cast<double>(total), 1.0);
            const bool tell = share * kProgressSteps >= nextStep;
            if (tell) nextStep = std::floor(share * kProgressSteps) + 1;
            return !writeFailed && (!tell || !progress || progress(share));
        });
    }

    static constexpr double kFarthestKey = 4e9; // samples: longer than a sound file can be

    CommandLineSession& session;
    const PlayingSettings& settings;
    const std::function<bool(double share)>& progress;
    SessionPlayer player;
    MixFile mix;
    std::int64_t total = 1;
    std::int64_t done = 0;
    double nextStep = 0;
    bool writeFailed = false;
};

} // namespace

PlayedSound PlayIntoFile(CommandLineSession& session, const PlayingSettings& settings,
                         const std::string& path, const std::function<bool(double share)>& progress) {
    return Playing(session, settings, progress).Into(path);
}

} // namespace sonorelle
