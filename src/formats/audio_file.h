// One simple view of a sound file: open, seek, and read or write non-interleaved float channels.
//
// A file of up to `cacheLimit` frames is read whole into memory when it is opened, so that later reads touch
// no disk. A file can be opened for a part of its length; it then counts from 0 at that part's start.
//
// Sample values are f32, full scale at 1.0; 16-bit samples convert at 1/32768 and 32768, so that reading a
// file and writing it back is exact to the bit. Samples that are not finite are read as 0. No operation
// throws. The class has no lock: one thread at a time.
//
//     CkvoAudioFile audio;
//     if (audio.OpenRead(path, kAudioCacheFrames, -1, -1) == kOk) {
//         audio.Seek(0);
//         while ((count = audio.Read(channels, 1024)) > 0) { ... }
//     }

#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace sonorelle {

// Numbers that name container and sample type of a file to be written.
inline constexpr std::int32_t kWav16 = 0x10002;     // RIFF, 16-bit little-endian integer
inline constexpr std::int32_t kWavFloat = 0x10006;  // RIFF, 32-bit little-endian float
inline constexpr std::int32_t kAiff16 = 0x20002;    // AIFF, 16-bit little-endian integer
inline constexpr std::int32_t kAiffFloat = 0x20006; // AIFF, 32-bit float in the container's own byte order

// Ten minutes at 44100 Hz: the longest file that is held in memory whole.
inline constexpr std::int32_t kAudioCacheFrames = 26460000;

class CkvoAudioFile {
public:
    CkvoAudioFile();
    virtual ~CkvoAudioFile(); // closes
    CkvoAudioFile(const CkvoAudioFile&) = delete;
    CkvoAudioFile& operator=(const CkvoAudioFile&) = delete;

    // Opens `path` (UTF-8, or whatever bytes the file system holds). `first` and `end` (frames, `end`
    // exclusive; -1: no limit) choose a part. `end` counts when it lies within the file and behind `first`;
    // `first` when it lies within the file and before `end`, so that it does not count without an end. The
    // position is then the start of the whole file: a part is entered with Seek(0).
    //
    // Gives 0, or kCannotOpen when a file is open already (which stays open) or this one cannot be read. A
    // failed open keeps the path so that the caller can show it. Read are WAV, AIFF, AU, CAF, RF64 and W64
    // with samples that are not compressed. A file that was cut off is as long as what it holds, whatever its
    // header says.
    virtual std::int32_t OpenRead(std::string path, std::int32_t cacheLimit, std::int32_t first,
                                  std::int32_t end);

    // Starts a new file in one of the formats above, rate in Hz, truncated. It takes its name at Close; until
    // then an old file of that name stays as it was. Gives 0 or kCannotOpen. A number that is no format opens
    // nothing and still gives 0.
    virtual std::int32_t OpenWrite(std::string path, std::int32_t channels, float sampleRate,
                                   std::int32_t cacheLimit, std::int32_t format);

    // Gives 0, or kCannotWrite when a file that was being written is not whole on the disk: it is then not
    // there at all, and an old one of its name is untouched.
    virtual std::int32_t Close();

    // Closes without leaving a file that was being written: an old one of its name is untouched.
    virtual void Discard();

    // Goes to `frame` of the part in use and gives the position in frames of the whole file; any value is
    // safe.
    //
    // A quirk that stays: without a cache the disk's position becomes `frame` itself, as if the part began at
    // 0. A part that is not in memory is thus read from the wrong place after a seek; parts are only used in
    // memory.
    virtual std::int32_t Seek(std::int32_t frame);
    virtual std::int32_t Tell();            // frames from the start of the part in use
    virtual std::int32_t GetLength() const; // frames of the part in use

    // Reads `frames` frames into one float array a channel and gives how many: fewer at the end, 0 from there
    // on, when the position lies outside the file, and when no file is open for reading. With fewer than 1
    // asked for, gives `frames` itself. Allocates nothing; with a cache it is a plain copy.
    virtual std::int32_t Read(float* const* channels, std::int32_t frames);

    // Appends `frames` frames from one float array a channel; 16-bit samples are rounded and clipped. Gives
    // 0, or -1 when that failed, when the data would exceed 2^31 - 1 bytes, and when no file is open for
    // writing.
    virtual std::int32_t Write(const float* const* channels, std::int32_t frames);

    virtual std::int32_t GetNumChannels() const; // 0 when closed
    virtual std::int32_t GetCacheLimit() const;  // frames, as given
    virtual float GetSampleRate() const;         // Hz, 0 when closed
    virtual std::string GetPath() const;
    virtual bool IsOpen() const;
    virtual std::int64_t
    GetModificationTime() const;    // seconds since the start of 1970, 0 when there is no such file
    virtual bool HasLimits() const; // opened for a part only

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace sonorelle
