#include "cli/arrangement_sound.h"

#include "cli/arrangement_report.h"

#include <cstdint>
#include <limits>

namespace sonorelle {

bool FitsIntoSoundFile(const UsedSettings& settings) {
    constexpr double kBytesPerFrame = 4; // two channels of 16 bits
    const double frames =
        (static_cast<double>(settings.regionEnd) - static_cast<double>(settings.regionStart)) /
        static_cast<double>(settings.speed);
    return frames * kBytesPerFrame < static_cast<double>(std::numeric_limits<std::int32_t>::max());
}

} // namespace sonorelle
