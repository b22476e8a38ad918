#include "cli/mix_file.h"

#include "app/audio_export.h"
#include "platform/result_codes.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr std::int32_t kSides = 2;
constexpr std::int32_t kNoCache = 0;

} // namespace

bool MixFile::Open(const std::string& path, float sampleRate) {
    limitedFrames = 0;
    return file.OpenWrite(path, kSides, sampleRate, kNoCache, kWav16) == kOk && file.IsOpen();
}

bool MixFile::Write(const float* left, const float* right, std::int32_t frames) {
    constexpr float kLimit = CAudioExport::kLimit;
    const auto count = static_cast<std::size_t>(std::max(frames, 0));
    for (std::vector<float>& side : sides) side.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        sides[0][i] = std::clamp(left[i], -kLimit, kLimit);
        sides[1][i] = std::clamp(right[i], -kLimit, kLimit);
        limitedFrames += sides[0][i] != left[i] || sides[1][i] != right[i] ? 1 : 0;
    }
    const float* const channels[kSides] = {sides[0].data(), sides[1].data()};
    return file.Write(channels, frames) == kOk;
}

bool MixFile::Close() { return file.Close() == kOk; }

} // namespace sonorelle
