#include "dsp/resample_base.h"

#include "dsp/resample_float.h"
#include "dsp/resample_int.h"
#include "platform/result_codes.h"

#include <new>
#include <stdexcept>

namespace sonorelle {

std::int32_t CreateResampler(std::unique_ptr<CResampleBase>& resampler, std::int32_t order,
                             std::int32_t blockSize, std::int32_t channels, std::int32_t type,
                             [[maybe_unused]] std::int32_t flag) {
    if (order < 1 || order > kMaxResampleOrder || blockSize < 1 || channels < 1) return kBadArgument;
    if (type != kResampleFloat && type != kResampleInt) return kBadArgument;
    try {
        if (type == kResampleFloat) {
            resampler = std::make_unique<CResampleFloat>(order, blockSize, channels);
        } else {
            resampler = std::make_unique<CResampleInt>(order, blockSize, channels);
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (const std::length_error&) {
        return kOutOfMemory;
    }
    return kOk;
}

} // namespace sonorelle
