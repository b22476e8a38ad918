// The mix of a played session as a 16-bit stereo WAV file. What exceeds the limit is cut off there, as in an
// export.

#pragma once

#include "formats/audio_file.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sonorelle {

class MixFile {
public:
    ~MixFile() { file.Discard(); } // an old file of the name is untouched unless Close gave true
    MixFile() = default;
    MixFile(const MixFile&) = delete;
    MixFile& operator=(const MixFile&) = delete;

    bool Open(const std::string& path, float sampleRate);
    bool Write(const float* left, const float* right, std::int32_t frames);
    bool Close();
    std::int64_t GetLimitedFrames() const { return limitedFrames; } // that were cut off

private:
    CkvoAudioFile file;
    std::vector<float> sides[2];
    std::int64_t limitedFrames = 0;
};

} // namespace sonorelle
