#include "harmony/consortier.h"

#include "harmony/table_styles.h"
#include "platform/result_codes.h"

// The free functions carry the names of the operations, so they are called by their full names here.
namespace sonorelle::ConsortierClassic {

std::int32_t CConsortier::SetSnapToScale(std::int32_t flag) {
    key.SetSnapToScale(flag != 0);
    return kOk;
}

std::int32_t CConsortier::SetMapScale(std::int32_t flag) {
    key.SetMapScale(flag != 0);
    return kOk;
}

ChordRecord CConsortier::RecogniseChord(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return ConsortierClassic::RecogniseChord(a, b, c, d);
}

void CConsortier::ChordToPitches(const ChordRecord& chord, std::int32_t (&out)[4]) {
    ConsortierClassic::ChordToPitches(chord, out);
}

void CConsortier::FormatChordName(std::span<char> buffer, std::int32_t root, std::int32_t type,
                                  bool useFlats) {
    ConsortierClassic::FormatChordName(buffer, root, type, useFlats);
}

bool CConsortier::IsDiatonicChord(const ChordRecord& chord) const {
    return ConsortierClassic::IsDiatonicChord(key, chord);
}

std::int32_t CConsortier::ChordsForPitch(std::int32_t pitch, ChordRecord* out, std::int32_t n) const {
    return ConsortierClassic::ChordsForPitch(key, pitch, out, n);
}

std::int32_t CConsortier::AllDiatonicChords(ChordRecord* out) const {
    return ConsortierClassic::AllDiatonicChords(key, out);
}

void CConsortier::LegacyChord(ChordRecord& out, const std::int32_t* entry) const {
    out = ConsortierClassic::LegacyChord(key, entry[0]);
}

std::int32_t CConsortier::GenerateParallel(std::int32_t pitch, std::int32_t* row,
                                           const std::int32_t* intervals) const {
    return ConsortierClassic::GenerateParallel(key, pitch, row, intervals);
}

std::int32_t CConsortier::GenerateBlock(std::int32_t pitch, std::int32_t next, std::int32_t* row,
                                        std::int32_t arrangement) {
    return ConsortierClassic::GenerateBlock(key, random, pitch, next, row, arrangement);
}

std::int32_t CConsortier::GenerateFauxbourdon(std::int32_t pitch, std::int32_t* row,
                                              std::int32_t arrangement) const {
    return ConsortierClassic::GenerateFauxbourdon(key, pitch, row, arrangement);
}

std::int32_t CConsortier::GenerateOrganum(std::int32_t pitch, std::int32_t* row,
                                          std::int32_t arrangement) const {
    return ConsortierClassic::GenerateOrganum(key, pitch, row, arrangement);
}

std::int32_t CConsortier::Reset() {
    voiceLeader.Reset();
    return kOk;
}

std::int32_t CConsortier::GenerateVoices(std::int32_t pitch, std::int32_t* row, const ChordRecord& chord) {
    return voiceLeader.GenerateVoices(key, pitch, row, chord);
}

std::int32_t CConsortier::FindChordPath(const std::int32_t* pitches, ChordRecord* chords,
                                        std::int32_t n) const {
    return ConsortierClassic::FindChordPath(key, pitches, chords, n);
}

} // namespace sonorelle::ConsortierClassic
