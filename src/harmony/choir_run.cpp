#include "harmony/choir_run.h"

#include "harmony/styles.h"

#include <algorithm>

namespace sonorelle {

using namespace ConsortierClassic;

void CChoirRun::Make() noexcept {
    const std::size_t count = voices.size();
    if (findChords) engine.FindChordPath(pitches.data(), chords.data(), static_cast<std::int32_t>(count));
    for (std::size_t i = 0; i < count; ++i)
        MakeNote(engine, settings, pitches[i], pitches[std::min(i + 1, count - 1)], chords[i],
                 voices[i].data());
}

void CChoirRun::MakeNote(CConsortier& engine, const ChoirSettings& settings, std::int32_t pitch,
                         std::int32_t next, const ChordRecord& chord, std::int32_t* row) {
    const std::int32_t arrangement = settings.arrangement;
    switch (settings.style) {
    case kStyleIntelligent:
        engine.GenerateVoices(pitch, row, chord);
        break;
    case kStyleParallel:
        engine.GenerateParallel(pitch, row, settings.manualIntervals.data());
        break;
    case kStyleBlock:
        engine.GenerateBlock(pitch, next, row, arrangement);
        break;
    case kStyleFauxbourdon:
        engine.GenerateFauxbourdon(pitch, row, arrangement);
        break;
    case kStyleOrganum:
        engine.GenerateOrganum(pitch, row, arrangement);
        break;
    default: // from a document; the voices stay
        break;
    }
}

} // namespace sonorelle
