#include "synthesis/grain_tables.h"

#include "dsp/kaiser_sinc.h"

#include <cmath>
#include <new>
#include <numbers>

namespace sonorelle {

static_assert(GrainTables::kSincOversampling == kSamplesPerCrossing);

namespace {

float RiseAt(std::int32_t i) {
    constexpr double kStep = std::numbers::pi / 2 / (GrainTables::kFadeLength - 1);
    const double sine = std::sin(i * kStep);
    return static_cast<float>(sine * sine * sine);
}

} // namespace

GrainTables::GrainTables() {
    for (std::int32_t i = 0; i < kSincLength; ++i) {
        const double value =
            KaiserSinc(i, kSincLength, static_cast<double>(kSincCutoff), static_cast<double>(kKaiserBeta));
        sinc[static_cast<std::size_t>(i)] = static_cast<float>(value);
    }
    for (std::size_t i = 1; i < sinc.size(); ++i) sincDelta[i - 1] = sinc[i] - sinc[i - 1];
    sincDelta.back() = 0;
    for (std::int32_t i = 0; i < kFadeLength; ++i) fade[static_cast<std::size_t>(i)] = RiseAt(i);
}

std::shared_ptr<const GrainTables> GrainTables::Create() noexcept {
    try {
        return std::make_shared<const GrainTables>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace sonorelle
