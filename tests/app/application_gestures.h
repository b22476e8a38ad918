// What a user's hand does in the pitch view of a session, and whether the view shows what the driver has.
//
//     LoadedSession session;
//     ViewHand hand(*session.app);
//     hand.Cut(2, 0.5);                       // note 2 in its middle
//     EXPECT_TRUE(ViewShowsTheDriver(*session.app));
#pragma once

#include "app/application.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace sonorelle::test {

// All that the view shows of notes and chords is what the driver answers, moved by the transposition.
inline testing::AssertionResult ViewShowsTheDriver(CkvovirelaineApp& app) {
    const CkvoPitchView& view = app.View();
    CChoirDriver& driver = app.Driver();
    if (view.GetVoiceCount() != driver.VoiceCount() || view.GetNoteCount() != driver.GetNoteCount())
        return testing::AssertionFailure()
               << view.GetVoiceCount() << " voices of " << view.GetNoteCount() << " notes are shown, "
               << driver.VoiceCount() << " of " << driver.GetNoteCount() << " are there";
    for (std::int32_t note = 0; note < view.GetNoteCount(); ++note) {
        const auto chord = driver.GetChord(note);
        for (std::int32_t voice = 0; voice < view.GetVoiceCount(); ++voice) {
            const PitchViewNote& shown = *view.GetNote(note, voice);
            float deviation = 0;
            float gain = 0;
            const std::int32_t pitch = driver.GetVoice(note, voice, deviation, gain, false);
            const bool same =
                static_cast<std::int32_t>(shown.start) == driver.GetNoteStart(note) &&
                static_cast<std::int32_t>(shown.length) == driver.GetNoteLength(note) &&
                view.GetNotePitch(note, voice) == static_cast<float>(pitch) && shown.gain == gain &&
                shown.offset == deviation && shown.chordType == TypeOf(chord) &&
                (shown.chordRoot - chord.root - static_cast<std::int32_t>(view.GetTransposeShift())) % 12 ==
                    0;
            if (!same)
                return testing::AssertionFailure() << "note " << note << ", voice " << voice << " shows "
                                                   << view.GetNotePitch(note, voice) << ", not " << pitch;
        }
    }
    return testing::AssertionSuccess();
}

class ViewHand {
public:
    explicit ViewHand(CkvovirelaineApp& application) : app(application), view(application.View()) {
        view.SetSize(2000, 900);
        view.ResetView();
    }

    PointerEvent On(std::int32_t note, std::int32_t voice, std::uint32_t modifiers = 0,
                    double share = 0.5) const {
        const PitchViewNote& shown = *view.GetNote(note, voice);
        const PixelRect rect = view.GetAxes().NoteRect(shown.start, shown.length, shown.pitch, shown.height);
        return {view.GetAxes().XFromSample(double{shown.start} + share * double{shown.length}),
                rect.y + rect.height / 2, PointerButton::kLeft, modifiers, 0};
    }
    PointerEvent AtPitch(PointerEvent from, std::int32_t pitch) const {
        from.y = view.GetAxes().YFromPitch(pitch + double{view.GetTransposeShift()});
        return from;
    }
    PointerEvent OnChordOf(std::int32_t note) const {
        const PixelRect row = view.GetAxes().layout.ChordRow();
        PointerEvent event = On(note, 0);
        event.y = row.y + row.height / 2;
        return event;
    }

    void Click(const PointerEvent& event) {
        view.Press(event);
        view.Release(event);
    }
    void Cut(std::int32_t note, double share) {
        app.SetCutMode(true);
        Click(On(note, 0, 0, share));
        app.SetCutMode(false);
    }
    void Join(std::int32_t one, std::int32_t other) {
        app.SetCutMode(true);
        Click(On(one, 0, PointerEvent::kAlt));
        Click(On(other, 0, PointerEvent::kAlt));
        app.SetCutMode(false);
    }
    void DragTo(std::int32_t note, std::int32_t voice, std::int32_t pitch, std::uint32_t modifiers = 0) {
        const PointerEvent from = On(note, voice, modifiers);
        view.Press(from);
        view.Drag(AtPitch(from, pitch));
        view.Release(AtPitch(from, pitch));
    }
    void SwitchNote(std::int32_t note, std::int32_t voice) {
        PointerEvent event = On(note, voice);
        event.button = PointerButton::kRight;
        view.RightClick(event);
        view.ChooseMenuEntry(CkvoPitchView::kToggleNote);
    }

private:
    CkvovirelaineApp& app;
    CkvoPitchView& view;
};

// Voices that nowhere share a pitch, so that a click means one of them; in Edit.
inline void SpreadVoicesForEditing(CkvovirelaineApp& app) {
    app.ChoirPanel().PressEdit(true);
    for (std::int32_t note = 0; note < app.Driver().GetNoteCount(); ++note)
        for (std::int32_t voice = 0; voice < CkvovirelaineApp::kVoices; ++voice)
            app.Driver().SetVoicePitch(note, voice, 60 + note - 4 * voice);
    app.RefreshFromStore();
    app.PushUndo();
}

} // namespace sonorelle::test
