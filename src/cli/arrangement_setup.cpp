// The order matters. Tempo comes first: the harmony's panels hand on whatever tempo they show. The harmony is
// run once, with all its panels set, so that a randomised arrangement comes out the same however many of them
// differ.

#include "cli/arrangement_setup.h"

#include "app/application.h"
#include "app/choir_style_rows.h"
#include "cli/session.h"
#include "harmony/pitch_class.h"
#include "harmony/styles.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

using namespace ConsortierClassic;

bool WantsSameHarmony(const ArrangementSettings& a, const ArrangementSettings& b) {
    return a.style == b.style && a.arrangement == b.arrangement && a.root == b.root && a.scale == b.scale &&
           a.harmonyScale == b.harmonyScale && a.snap == b.snap && a.voiceRange == b.voiceRange &&
           a.spread == b.spread && a.intervals == b.intervals && a.transpose == b.transpose;
}

void SetTempo(CommandLineSession& session, const ArrangementSettings& settings) {
    session.SetTempo(static_cast<double>(settings.tempo));
    session.With([&](CkvovirelaineApp& app) {
        const float melodyTempo = settings.tempo / settings.sound.speed;
        if (app.GetMelodyTempo() != melodyTempo) app.SetMelodyTempo(melodyTempo);
    });
}

void SetHarmony(CkvovirelaineApp& app, const ArrangementSettings& settings) {
    CkvovirelaineChoirSettings& choir = app.ChoirPanel();
    CkvovirelaineMelodyProperties& melody = app.MelodyPanel();
    const StyleRow row = StyleRowOfDriver(settings.style, settings.arrangement);
    choir.SetMode(ModeOfRow(row.row)); // also away from notes edited by hand, and from keys played live
    choir.SetDriverStyle(settings.style, settings.arrangement);
    if (settings.root) melody.SetRoot(*settings.root);
    if (settings.scale) melody.SetScale(*settings.scale);
    choir.SetScale(settings.harmonyScale.value_or(melody.GetScale()));
    choir.SetRoot(PitchClass(melody.GetRoot() + settings.transpose));
    choir.SetVoiceArrangement(settings.voiceRange);
    choir.SetVoiceRange(settings.spread);
    for (std::size_t voice = 0; voice < settings.intervals.size(); ++voice)
        choir.SetInterval(static_cast<std::int32_t>(voice),
                          ListPositionOfInterval(settings.intervals[voice]));
    choir.SetSnapToScale(!settings.snap);
    choir.ToggleSnap();                                       // which has the chords found anew
    app.SetTranspose(static_cast<float>(settings.transpose)); // the roots tell of no octaves
}

std::int32_t FrameAt(double seconds, const CkvovirelaineApp& app) {
    const auto rate = static_cast<double>(app.AudioFile()->GetSampleRate());
    return std::clamp(TruncateToI32(seconds * rate), 0, app.GetMelodyEnd());
}

// What sounds when: the region, and whether the melody goes by the host's tempo.
void SetPlayback(CkvovirelaineApp& app, const ArrangementSettings& settings) {
    CkvovirelainePlaybackSettings& panel = app.PlaybackPanel();
    if (settings.region)
        panel.SetRegion(FrameAt(settings.region->startSeconds, app),
                        settings.region->endSeconds ? FrameAt(*settings.region->endSeconds, app)
                                                    : app.GetMelodyEnd());
    panel.SetSyncTempo(settings.sound.speed != 1);
    app.OnPlaybackChanged();
}

void SetTuning(CkvovirelaineApp& app, float hertz) {
    app.TuningPanel().SetFrequency(hertz);
    app.OnTuningChanged();
}

void SetStrips(CkvovirelaineApp& app, const VoiceStrips& strips) {
    const VoiceSettingsOfAll voices = SettingsOfStrips(strips);
    for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
        app.VoicePanel().SetSettings(voice, voices[static_cast<std::size_t>(voice)]);
    app.PushVoiceSettings();
}

// As somebody would have written it: the way through the voices' own units costs the last digits.
float Rounded(float value) {
    constexpr float kTenThousandths = 10000;
    return std::round(value * kTenThousandths) / kTenThousandths;
}

SoundSettings PresentSound(CommandLineSession& session, CkvovirelaineApp& app) {
    SoundSettings sound;
    sound.preset = session.PlugIn().GetProgram();
    const CVoicePresetBank& presets = session.PlugIn().Presets();
    for (std::int32_t preset = 0; preset < kPresetCount; ++preset)
        sound.presets[static_cast<std::size_t>(preset)] = StripsOfSettings(presets.GetVoices(preset));
    sound.voices = PresentStrips(app);
    sound.tuning = app.TuningPanel().GetFrequency();
    sound.speed = SpeedOf(app);
    return sound;
}

} // namespace

VoiceStrips PresentStrips(CkvovirelaineApp& app) {
    VoiceSettingsOfAll voices;
    for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
        voices[static_cast<std::size_t>(voice)] = app.VoicePanel().GetSettings(voice);
    VoiceStrips strips = StripsOfSettings(voices);
    for (VoiceStrip& strip : strips)
        for (const StripControl& control : StripControls())
            strip.*control.value = Rounded(strip.*control.value);
    return strips;
}

// One after the other, so that a value which was not asked for keeps its last bit.
void ChangeStrips(CkvovirelaineApp& app, const VoiceStrips& present, const VoiceStrips& wanted) {
    const VoiceSettingsOfAll before = SettingsOfStrips(present);
    const VoiceSettingsOfAll after = SettingsOfStrips(wanted);
    for (std::size_t v = 0; v < wanted.size(); ++v) {
        const auto voice = static_cast<std::int32_t>(v);
        VoiceSettings settings = app.VoicePanel().GetSettings(voice);
        for (const VoiceControlInfo& control : kVoiceControls)
            if (before[v].*control.stored != after[v].*control.stored)
                settings.*control.stored = after[v].*control.stored;
        settings.mute = after[v].mute;
        settings.solo = after[v].solo;
        app.VoicePanel().SetSettings(voice, settings);
    }
    app.PushVoiceSettings();
}

float SpeedOf(const CkvovirelaineApp& app) {
    return app.IsSyncingTempo() ? Rounded(app.GetHostTempo() / app.GetMelodyTempo()) : 1;
}

ArrangementSettings PresentSettings(CommandLineSession& session) {
    ArrangementSettings settings;
    session.With([&](CkvovirelaineApp& app) {
        const CChoirDriver& driver = app.Driver();
        settings.style = driver.GetStyle();
        settings.arrangement = driver.GetArrangement();
        settings.root = driver.GetRoot();
        settings.scale = driver.GetMelodyScale();
        settings.harmonyScale = driver.GetHarmonyScale();
        settings.snap = driver.GetSnapToScale();
        settings.voiceRange = app.ChoirPanel().GetVoiceArrangement();
        settings.spread = app.ChoirPanel().GetVoiceRange();
        for (std::int32_t voice = 0; voice < kPresetVoices; ++voice)
            settings.intervals[static_cast<std::size_t>(voice)] =
                IntervalAtListPosition(app.ChoirPanel().GetInterval(voice));
        settings.transpose = TruncateToI32(app.GetTranspose());
        settings.tempo = app.GetHostTempo();
        settings.sound = PresentSound(session, app);
    });
    return settings;
}

void SetUpArrangement(CommandLineSession& session, const ArrangementSettings& settings) {
    SetTempo(session, settings);
    session.PlugIn().SetProgram(settings.sound.preset);
    session.With([&](CkvovirelaineApp& app) {
        SetHarmony(app, settings);
        if (settings.region || settings.sound.speed != 1) SetPlayback(app, settings);
        if (settings.sound.tuning) SetTuning(app, *settings.sound.tuning);
        SetStrips(app, settings.sound.voices);
    });
}

void ChangeSettings(CommandLineSession& session, const ArrangementSettings& present,
                    const ArrangementSettings& wanted) {
    const bool otherSpeed = wanted.sound.speed != present.sound.speed;
    if (wanted.tempo != present.tempo || otherSpeed) SetTempo(session, wanted);
    if (wanted.sound.preset != present.sound.preset) session.PlugIn().SetProgram(wanted.sound.preset);
    session.With([&](CkvovirelaineApp& app) {
        if (!WantsSameHarmony(wanted, present)) SetHarmony(app, wanted);
        if (wanted.region || otherSpeed) SetPlayback(app, wanted);
        if (wanted.sound.tuning != present.sound.tuning) SetTuning(app, *wanted.sound.tuning);
        if (wanted.sound.voices != present.sound.voices)
            ChangeStrips(app, present.sound.voices, wanted.sound.voices);
    });
}

} // namespace sonorelle
