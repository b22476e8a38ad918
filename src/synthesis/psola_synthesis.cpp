// Setting up, moving about and the two buffers. The walk from grain to grain is in psola_walk.cpp, the grains
// are in psola_grains.cpp and psola_attacks.cpp.

#include "synthesis/psola_synthesis.h"

#include "synthesis/sample_counts.h"
#include "synthesis/sinc_interpolation.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace sonorelle {

namespace {

// Of the sinc interpolator: the ripple of the windowed sinc must not lift a full-scale signal above it.
constexpr float kResampleHeadroom = 0.99F;

// Parts of the output that a block may take: the rest is for the grain in flight and for kept attacks.
constexpr std::int32_t kBlocksInOutput = 4;

constexpr std::int32_t kLongestBlock = 1 << 24; // samples; the output of one fills a gigabyte

std::int32_t OutputCapacityFor(std::int32_t block) {
    return std::max(CPSOLASynthesis::kUsualCapacity, kBlocksInOutput * block);
}

float HoldFactor(float factor) {
    return std::clamp(factor, CPSOLASynthesis::kSmallestFactor, CPSOLASynthesis::kLargestFactor);
}

std::shared_ptr<const GrainTables> OwnTables() {
    auto tables = GrainTables::Create();
    if (tables == nullptr) throw std::bad_alloc();
    return tables;
}

} // namespace

CPSOLASynthesis::CPSOLASynthesis(const CPitchMarksIf& pitchMarks, std::int32_t samples,
                                 std::int32_t channelCount, std::shared_ptr<const GrainTables> grainTables)
    : marks(pitchMarks), tables(grainTables != nullptr ? std::move(grainTables) : OwnTables()),
      input(std::clamp(channelCount, 1, 2), kUsualCapacity),
      output(std::clamp(channelCount, 1, 2), OutputCapacityFor(std::clamp(samples, 0, kLongestBlock))),
      channels(std::clamp(channelCount, 1, 2)), blockSize(std::clamp(samples, 0, kLongestBlock)) {
    static_assert(SincInterpolation::kFullStep == 32768); // the first value of sincStep
}

std::int32_t CPSOLASynthesis::SetPosition(std::int32_t position) {
    const std::int32_t mark = marks.FindNearest(0, position);
    markPos = 0;
    if (position < 0) {
        inputEnd = 0;
        readPosition = static_cast<double>(position);
    } else {
        readPosition = static_cast<double>(marks.GetPosition(mark));
        inputEnd = TruncateToI32(readPosition - outPeriod);
    }
    inputFill = 0;
    inPeriod = 0;
    prevMarkPos = 0;
    markIndex = mark;
    prevMarkIndex = 0;
    inTransient = false;
    repeatCount = 1;
    return TruncateToI32(readPosition);
}

void CPSOLASynthesis::Reset() {
    inputFill = 0;
    inputEnd = 0;
    outputEnd = 0;
    outputMark = 0;
    outPeriod = 0;
    inPeriod = 0;
    prevMarkPos = 0;
    markPos = 0;
    markIndex = 0;
    prevMarkIndex = 0;
    readPosition = 0;
    repeatCount = 1;
    inTransient = false;
    SetTimeFactor(1.0F);
    SetPitchFactor(1.0F);
}

void CPSOLASynthesis::ShiftMarkIndices(std::int32_t delta) {
    prevMarkIndex = HoldToI32(std::int64_t{prevMarkIndex} + delta);
    markIndex = HoldToI32(std::int64_t{markIndex} + delta);
}

std::int32_t CPSOLASynthesis::GetRequiredInput(std::int32_t samples) {
    blockSize = std::clamp(samples, 0, output.GetCapacity() / kBlocksInOutput);
    return CalcRequiredInput();
}

void CPSOLASynthesis::SetPitchFactor(float factor) {
    if (std::isnan(factor)) return;
    pitchFactor = HoldFactor(factor);
    invPitchFactor = 1.0F / pitchFactor;
    constexpr auto kOversampling = static_cast<float>(GrainTables::kSincOversampling);
    const float entries = std::min(kOversampling / pitchFactor, kOversampling);
    sincStep = NearestSamples(entries * static_cast<float>(SincInterpolation::kEntry));
    if (invPitchFactor > 1.0F) {
        readSpan = invPitchFactor;
        resampleGain = kResampleHeadroom;
    } else {
        readSpan = 1.0F;
        resampleGain = invPitchFactor * kResampleHeadroom;
    }
    invReadSpan = 1.0F / readSpan;
}

void CPSOLASynthesis::SetFormantPreservation(bool on) { resampleGrains = !on; }

void CPSOLASynthesis::SetTimeFactor(float factor) {
    if (std::isnan(factor)) return;
    timeFactor = HoldFactor(factor);
    invTimeFactor = 1.0F / timeFactor;
    timeSpan = std::max(invTimeFactor, 1.0F);
}

void CPSOLASynthesis::SetTransientHandling(bool on) { transientHandling = on; }

void CPSOLASynthesis::SetTransientSearchLength(std::int32_t samples) {
    transientSearch = std::max(samples, 0);
}

void CPSOLASynthesis::SetTransientThreshold(float strength) { transientThreshold = strength; }

float CPSOLASynthesis::GetCurrentPeriod() const {
    const std::int32_t from = HoldToI32(std::int64_t{markIndex} - 1);
    const std::int32_t mark = marks.FindNearest(from, TruncateToI32(readPosition));
    return marks.GetVoicing(mark) > 0.0F ? static_cast<float>(marks.GetPeriod(mark)) : -1.0F;
}

float CPSOLASynthesis::GetMarkEnergy() const { return marks.GetEnergy(markIndex); }

float CPSOLASynthesis::GetMarkPitchChange() const { return std::fabs(marks.GetPitchChange(markIndex)); }

// A frozen voice needs no less input than a moving one: timeSpan stays.
void CPSOLASynthesis::SetFreeze(bool on) {
    if (on) {
        invTimeFactor = 0;
    } else {
        SetTimeFactor(timeFactor);
    }
}

void CPSOLASynthesis::SetReadPosition(double position) {
    if (!std::isfinite(position)) return;
    readPosition = static_cast<double>(static_cast<float>(outputEnd) * invTimeFactor) + position;
}

std::int32_t CPSOLASynthesis::InputIndex(std::int32_t position) const {
    return HoldToI32(std::int64_t{position} - inputEnd + inputFill);
}

void CPSOLASynthesis::Append(const float* const* in, std::int32_t count) {
    count = std::min(count, INT32_MAX - inputFill);
    if (count < 1) return;
    if (count > input.GetCapacity() - inputFill) input.Reserve(inputFill + count);
    for (std::int32_t channel = 0; channel < channels; ++channel)
        std::copy_n(in[channel], count, input.Channel(channel) + inputFill);
    inputFill += count;
    inputEnd = HoldToI32(std::int64_t{inputEnd} + count);
}

void CPSOLASynthesis::DiscardInput(std::int64_t n) noexcept {
    if (n < 1) return;
    const auto dropped = static_cast<std::int32_t>(std::min<std::int64_t>(n, inputFill));
    input.Drop(dropped, inputFill);
    inputFill -= dropped;
}

void CPSOLASynthesis::HandOut(float* const* out) noexcept {
    for (std::int32_t channel = 0; channel < channels; ++channel)
        std::copy_n(output.Channel(channel), blockSize, out[channel]);
    output.Drop(blockSize, outputEnd);
    outputEnd -= blockSize;
    outputMark -= blockSize;
}

} // namespace sonorelle
