// A pitch view with three notes and a listener who writes down what it reports.

#pragma once

#include "app/pitch_view.h"

#include <array>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace sonorelle {

struct HeardViewEvent {
    std::int32_t code = kNoViewEvent;
    PitchViewEventData data{};

    bool operator==(const HeardViewEvent&) const = default;
};

// Ten seconds at 44.1 kHz on 694 x 261 pixels: 659 pixels of notes, so that a pixel is 669 samples, and 201
// pixels for the 20 semitones from 52 to 72. Notes of a second begin at 1, 3 and 5 seconds; the lead sings
// 60, 62 and 64 there, the others 3, 6 and 9 semitones less.
class PitchViewStage {
public:
    static constexpr std::int32_t kRate = 44100;
    static constexpr std::int32_t kEnd = 10 * kRate;
    static constexpr std::int32_t kNotes = 3;

    PitchViewStage() {
        view.SetPitchGrid(1);
        view.Resize(CkvoPitchView::kVoices, kNotes);
        view.SetSampleRate(kRate);
        view.SetTotal(0, kEnd);
        view.SetPlayRegion(0, kEnd);
        for (std::int32_t note = 0; note < kNotes; ++note) {
            for (std::int32_t voice = 0; voice < CkvoPitchView::kVoices; ++voice) {
                SetPitch(note, voice, PitchOf(note, voice));
            }
        }
        view.SetCallback([this](CkvoPitchView& sender) {
            HeardViewEvent event;
            event.code = sender.GetEvent(event.data);
            heard.push_back(event);
            if (reaction) reaction(event);
        });
        view.TakeDamage();
    }

    static float PitchOf(std::int32_t note, std::int32_t voice) {
        return static_cast<float>(60 + 2 * note - 3 * voice);
    }
    static float StartOf(std::int32_t note) { return static_cast<float>((1 + 2 * note) * kRate); }

    void SetPitch(std::int32_t note, std::int32_t voice, float pitch, float offset = 0, float gain = 1) {
        view.SetNote(note, voice, StartOf(note), pitch, offset, gain, kRate, 1, note);
    }

    // In the middle of a note, as it stands.
    PointerEvent OnNote(std::int32_t note, std::int32_t voice, std::uint32_t modifiers = 0) const {
        const PitchViewNote& record = *view.GetNote(note, voice);
        const PixelRect rect =
            view.GetAxes().NoteRect(record.start, record.length, record.pitch, record.height);
        return At(rect.x + rect.width / 2, rect.y + rect.height / 2, modifiers);
    }
    // At the height that drags a note to `pitch`.
    std::int32_t YOfDragTo(float pitch) const {
        return view.GetAxes().YFromPitch(static_cast<double>(pitch));
    }
    static PointerEvent At(std::int32_t x, std::int32_t y, std::uint32_t modifiers = 0) {
        return {x, y, PointerButton::kLeft, modifiers, 0};
    }
    static PointerEvent Turn(std::int32_t x, std::int32_t y, std::int32_t wheel,
                             std::uint32_t modifiers = 0) {
        return {x, y, PointerButton::kNone, modifiers, wheel};
    }

    void Click(const PointerEvent& event) {
        view.Press(event);
        view.Release(event);
    }
    void DragFromTo(const PointerEvent& from, const PointerEvent& to) {
        view.Press(from);
        view.Drag(to);
        view.Release(to);
    }
    // A drag of a note straight up or down.
    void DragNoteTo(std::int32_t note, std::int32_t voice, float pitch, std::uint32_t modifiers = 0) {
        const PointerEvent from = OnNote(note, voice, modifiers);
        DragFromTo(from, At(from.x, YOfDragTo(pitch), modifiers));
    }

    std::vector<HeardViewEvent> Heard() { return std::exchange(heard, {}); }

    CkvoPitchView view;
    std::vector<HeardViewEvent> heard;
    std::function<void(const HeardViewEvent&)> reaction;
};

} // namespace sonorelle
