// The making of all voices of a melody, on copies: so the sound goes on in the old voices while the new ones
// are found, which takes many blocks of audio in the intelligent style.
//
//     CChoirRun run;
//     { guard; driver.BeginRun(run); }   // copies what it needs
//     run.Make();                        // the long part, without a lock
//     { guard; driver.FinishRun(run); }  // the new voices, all at once
//
// Threads: each object belongs to one. Make allocates when chords are to be found; nothing throws.

#pragma once

#include "harmony/choir_settings.h"
#include "harmony/consortier.h"

#include <array>
#include <cstdint>
#include <vector>

namespace sonorelle {

class CChoirRun {
public:
    using VoiceRow = std::array<std::int32_t, ConsortierClassic::kVoiceSlots>;

    void Make() noexcept;

    // The voices of a note in the style of `settings`; `next` is the melody pitch behind it. A style that
    // does not exist leaves them. Fit for the audio thread.
    static void MakeNote(ConsortierClassic::CConsortier& engine, const ChoirSettings& settings,
                         std::int32_t pitch, std::int32_t next, const ConsortierClassic::ChordRecord& chord,
                         std::int32_t* row);

private:
    friend class CChoirDriver;

    ConsortierClassic::CConsortier engine;
    ChoirSettings settings;
    bool findChords = false;
    std::uint32_t version = 0; // of the arrangement that was copied
    std::vector<std::int32_t> pitches;
    std::vector<ConsortierClassic::ChordRecord> chords;
    std::vector<VoiceRow> voices;
};

} // namespace sonorelle
