// The cache file of an analysis: marks and notes of one recording, beside it.
//
//   offset          size   field (all big endian)
//   0               4      magic: "kvo" and a zero byte
//   4               8      modification time of the audio file when the cache was written, seconds since 1970
//   12              4      M, number of marks
//   16              4      N, number of notes
//   20              24 M   marks, six words each
//   20 + 24 M       28 N   notes, seven words each
//
// What is read from such a file is trusted by everything behind it, so it is looked at word for word first.

#pragma once

#include "analysis/records.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sonorelle {

class CRegularFile;

struct MelodyCacheHeader {
    static constexpr std::array<char, 4> kMagic = {'k', 'v', 'o', '\0'};
    static constexpr std::int64_t kSize = 20; // bytes

    std::array<char, 4> magic = kMagic;
    std::int64_t timeStamp = 0; // seconds since 1970
    std::uint32_t markCount = 0;
    std::uint32_t noteCount = 0;
};

struct MelodyCacheContent {
    std::vector<PitchMarkRecord> marks;
    std::vector<NoteRecord> notes;
};

// False when the file is too short for a header.
bool ReadMelodyCacheHeader(const CRegularFile& file, MelodyCacheHeader& header);

// Whether the magic is right, there is a mark, and the file is just as long as the counts say.
bool IsMelodyCache(const MelodyCacheHeader& header, std::int64_t fileSize);

// Whether a recording of `length` frames can have so many marks and notes. Asked before room is made for
// them: a file with holes may be far longer than its disk.
bool FitsRecording(const MelodyCacheHeader& header, std::int32_t length);

// Reads what lies behind a header that IsMelodyCache holds for. False when the file does not give it all. May
// throw std::bad_alloc.
bool ReadMelodyCacheContent(const CRegularFile& file, const MelodyCacheHeader& header,
                            MelodyCacheContent& content);

// Whether marks and notes can be those of a recording of `length` frames: marks rise strictly from 0 and lie
// within it, all numbers are finite, every note lies within it and its frames are marks.
bool IsPlausible(const MelodyCacheContent& content, std::int32_t length);

// Writes a cache, replacing an old one whole; the counts come from the arrays. False when that failed; an old
// one is then untouched.
bool WriteMelodyCache(const std::string& path, std::int64_t timeStamp, std::span<const PitchMarkRecord> marks,
                      std::span<const NoteRecord> notes);

} // namespace sonorelle
