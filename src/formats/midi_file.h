// Writes Standard MIDI Files; nothing here reads them. Events have their times in milliseconds and become
// ticks while they are written, each at the tempo that the events before it have set.
//
//     CkvoMidiTrack track;
//     track.AddEvent(std::make_shared<CkvoMidiFileTempoEvent>(120.0F));
//     track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(0, kMidiNoteOn, 0, 69, 100));
//     track.AddEvent(std::make_shared<CkvoMidiFileNoteEvent>(500, kMidiNoteOff, 0, 69, 0));
//     CkvoMidiFile file;
//     file.AddTrack(track);
//     const std::int32_t result = file.Write(path, 0, 384, 120.0F);
//
// One thread at a time.

#pragma once

#include "formats/midi_event.h"
#include "formats/midi_track.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

class CkvoMidiFile {
public:
    CkvoMidiFile() = default;
    virtual ~CkvoMidiFile() = default;
    CkvoMidiFile(const CkvoMidiFile&) = delete;
    CkvoMidiFile& operator=(const CkvoMidiFile&) = delete;

    // Appends a copy of the track: what is added to the caller's own afterwards is not in the file.
    void AddTrack(const CkvoMidiTrack& track);

    // Writes all tracks to `fileName`. `division` is in ticks per quarter note; `bpm` is the tempo as far as
    // the events set none. `format` is 0 with a single track.
    //
    // Gives 0, or kCannotWrite when the file cannot be opened or did not reach the disk whole: an old file of
    // that name is then untouched, and none is left where none was. A channel above 15 is complained of on
    // standard error and written as it is.
    //
    // Two quirks that stay, since files made before would come out different:
    // - Each distance between events is truncated to whole ticks on its own, so that a later event can lie up
    // to one
    //   tick per event before it too early.
    // - Format 1 puts a tempo event between the header and the first track, outside any chunk, where readers
    // do not
    //   expect one. Nothing here writes format 1.
    std::int32_t Write(const std::string& fileName, std::int32_t format, std::int32_t division,
                       float bpm) const noexcept;

private:
    std::vector<CkvoMidiTrack> tracks_;
};

} // namespace sonorelle
