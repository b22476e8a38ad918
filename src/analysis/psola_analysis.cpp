#include "analysis/psola_analysis.h"

#include "analysis/pitch_marks_if.h"
#include "dsp/kkf.h"
#include "dsp/sample_math.h"
#include "dsp/simple_filters.h"
#include "platform/result_codes.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>
#include <stdexcept>

namespace sonorelle {

namespace {

constexpr float kAttackIirCoefficient = -0.9F; // pole 0.9, gain 0.1: what a period weighs
constexpr float kAttackFirCoefficient = -0.5F; // half the first difference: what rattles and hisses
constexpr float kSmallestIirAttack = 0.1F;     // filtered peaks below are no attacks (full scale is 1) ...
constexpr float kSmallestFirAttack = 0.01F;    // ... for each of the two
constexpr float kTransientLimit = 0.7F;        // attack strength above which a mark is a transient
constexpr float kSilentPeak = 1e-24F;          // a window below is not correlated
constexpr float kUntrackedVoicing = 12.0F;     // dB, where no tracker says otherwise
constexpr float kUntrackedSilence = 0.02F;     // a low-passed peak below counts as unvoiced without a tracker

// How far around the expected period the search goes, in periods.
constexpr float kVoicedSearch = 0.0625F;
constexpr float kUnvoicedSearch = 0.125F;

// What depends on the sample rate. Blocks grow where a period has more samples, so that the window covers the
// same times.
struct RateSizes {
    float rateBelow; // Hz
    std::int32_t blockFactor;
    std::int32_t tailAdvance;
    std::int32_t minPeriodUntracked;
    std::int32_t minPeriodTracked;
    std::int32_t maxLength;
    std::int32_t bufferSize;
    std::int32_t shortBlock; // for the special block sizes 0 and -1
};

constexpr std::array<RateSizes, 5> kRateSizes = {{
    //  below  B x  tail  untracked  tracked  maximum  buffer  short B
    {32000.0F, 1, 512, 64, 16, 4096, 16384, 256},
    {64000.0F, 1, 1024, 128, 32, 8192, 32768, 512},
    {128000.0F, 2, 2048, 256, 64, 16384, 65536, 1024},
    {256000.0F, 4, 4096, 512, 128, 32768, 131072, 2048},
    {INFINITY, 8, 8192, 1024, 256, 65536, 262144, 4096},
}};

const RateSizes& SizesFor(float sampleRate) {
    return *std::find_if(kRateSizes.begin(), kRateSizes.end() - 1,
                         [sampleRate](const RateSizes& sizes) { return sampleRate < sizes.rateBelow; });
}

constexpr std::int32_t kSmallestBlock = 64;
constexpr std::int32_t kLargestBlock = 65536;

} // namespace

CPSOLAAnalysis::CPSOLAAnalysis(CPitchMarksIf* output) : marks(output) {}
CPSOLAAnalysis::~CPSOLAAnalysis() = default;

std::int32_t CPSOLAAnalysis::Init(const MarkFinderSettings& settings) {
    const bool special = settings.blockSize == 0 || settings.blockSize == -1;
    const bool known = settings.blockSize >= kSmallestBlock && settings.blockSize <= kLargestBlock;
    if (marks == nullptr || !(special || known) || settings.channels < 1 || settings.bufferSize < 0 ||
        !(settings.sampleRate >= 1.0F && settings.sampleRate <= 1e6F)) {
        return kBadArgument;
    }
    SetSizes(settings);
    tracking = settings.tracking && !special &&
               CreatePitchTrack(tracker, static_cast<std::int32_t>(sampleRate), 1,
                                static_cast<std::int32_t>(PitchTrackMode::kFine)) == kOk;
    const RateSizes& sizes = SizesFor(sampleRate);
    if (!special) minPeriod = tracking ? sizes.minPeriodTracked : sizes.minPeriodUntracked;
    try {
        buffer.Reserve(bufferSize);
        trackBuffer.Reserve(tracking ? 2 * bufferSize : 1);
        trackBlock.assign(static_cast<std::size_t>(tracking ? CPTPreProcess::kBlockSize : 0), 0.0F);
        scratch.assign(4 * static_cast<std::size_t>(blockSize), 0.0F);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    if (const std::int32_t made = CreateCorrelators(); made != kOk) return made;
    if (const std::int32_t made = CreateFilters(); made != kOk) return made;
    ClearState();
    if (marks->GetCount() == 0) marks->Add(0, 0, 0, 0, 0);
    return kOk;
}

void CPSOLAAnalysis::SetSizes(const MarkFinderSettings& settings) {
    sampleRate = settings.sampleRate;
    channels = settings.channels;
    const RateSizes& sizes = SizesFor(sampleRate);
    tailAdvance = sizes.tailAdvance;
    maxLength = sizes.maxLength;
    const std::int32_t asked = settings.blockSize;
    blockSize = asked > 0 ? asked * sizes.blockFactor : sizes.shortBlock;
    windowLength = blockSize;
    half = windowLength / 2;
    quarter = windowLength / 4;
    if (asked > 0) {
        radius = asked >= 1024 ? quarter : asked >= 512 ? quarter / 4 : quarter / 2;
    } else {
        radius = blockSize / 2;
        minPeriod = asked == 0 ? blockSize : blockSize / 4;
        if (asked < 0) tailAdvance = blockSize / 2;
    }
    initialRadius = radius;
    defaultPeriod = maxLength / (2 * blockSize);
    // Finish fills the buffer up to the maximum length, and two windows must always find room.
    bufferSize = std::max(
        {settings.bufferSize > 0 ? settings.bufferSize : sizes.bufferSize, maxLength, 4 * blockSize});
}

std::int32_t CPSOLAAnalysis::CreateCorrelators() {
    if (!tracking) {
        const std::int32_t made = CreateKKF(correlators[0], 2 * blockSize);
        correlation = correlators[0].get();
        return made;
    }
    for (std::int32_t i = 0; i < std::ssize(correlators); ++i) { // from B / 4 to 4 x B
        const std::int32_t made =
            CreateKKF(correlators[static_cast<std::size_t>(i)], 4 * blockSize >> (4 - i));
        if (made != kOk) return made;
    }
    correlation = &CorrelatorFor(windowLength);
    return kOk;
}

std::int32_t CPSOLAAnalysis::CreateFilters() {
    if (const std::int32_t made = CreateIIR(attackIir, kAttackIirCoefficient); made != kOk) return made;
    return CreateFIR(attackFir, kAttackFirCoefficient);
}

void CPSOLAAnalysis::ClearState() {
    lastPeriod = half;
    lastMark = nextMark = lag = expectedLag = blockCounter = trackNeed = period = 0;
    buffer.Clear();
    trackBuffer.Clear();
    firAttack = {};
    iirAttack = {};
    expectedPeriod = static_cast<float>(defaultPeriod);
    energy = 0;
    previousVoicing = 0;
    result = {};
    transientHold1 = transientHold2 = false;
}

std::int32_t CPSOLAAnalysis::Reset() {
    ClearState();
    marks->KeepLast(0);
    marks->Add(0, 0, 0, 0, 0);
    return tracking ? tracker->Reset() : kOk;
}

float CPSOLAAnalysis::GetVoicingThreshold() const { return tracking ? tracker->GetThreshold() : 0.0F; }

void CPSOLAAnalysis::SetVoicingThreshold(float decibels) {
    if (tracking) tracker->SetThreshold(decibels);
}

std::int32_t CPSOLAAnalysis::Process(const float* const* channelBuffers, std::int32_t count) {
    if (count < 0) return kBadArgument;
    std::int32_t taken = 0;
    while (channelBuffers != nullptr && taken < count) {
        const std::int32_t portion = std::min(count - taken, GetFreeSpace());
        Append(channelBuffers, taken, portion);
        taken += portion;
        PlaceMarks();
    }
    if (channelBuffers == nullptr) PlaceMarks();
    return kOk;
}

// Adds up the channels, without scaling, behind both queues.
void CPSOLAAnalysis::Append(const float* const* channelBuffers, std::int32_t offset, std::int32_t count) {
    float* sum = buffer.Append(count);
    std::copy_n(channelBuffers[0] + offset, count, sum);
    for (std::int32_t c = 1; c < channels; ++c) {
        const float* channel = channelBuffers[c] + offset;
        for (std::int32_t i = 0; i < count; ++i) sum[i] += channel[i];
    }
    if (tracking) std::copy_n(sum, count, trackBuffer.Append(count));
}

void CPSOLAAnalysis::PlaceMarks() {
    while (buffer.Size() >= 2 * blockSize) {
        ++blockCounter;
        if (tracking) {
            FollowTracker();
        } else {
            result.salience = kUntrackedVoicing;
            energy = 0;
        }
        if (buffer.Size() < windowLength) {
            --blockCounter;
            return;
        }
        nextMark = lastMark + half;
        if (tracking) correlation = &CorrelatorFor(windowLength);
        lag = FindLag();
        expectedLag = lag;
        if (tracking && result.salience != 0) lag = SnapToWaveform(lag);
        nextMark -= lag;
        period = nextMark - lastMark;
        if (nextMark - marks->GetLastPosition() < minPeriod / 4 && ResolveTooClose()) continue;
        if (buffer.Size() < period) return;

        const float attack = MeasureAttack();
        energy = MeanSquare();
        DropPeriod();
        marks->AddWithPeriod(nextMark, result.salience, energy, attack, result.change,
                             static_cast<float>(half - expectedLag));
        transientHold2 = transientHold1;
        transientHold1 = attack > kTransientLimit;
    }
}

// Lets the tracker run ahead to half of what waits, and takes its word on how long the period should be.
void CPSOLAAnalysis::FollowTracker() {
    trackNeed = tracker->GetRequiredInput();
    while (buffer.Size() / 2 + trackNeed < trackBuffer.Size()) {
        previousVoicing = result.salience;
        // More than the tracker takes at once, which only rates above 350 kHz need, passes it by.
        if (trackNeed <= CPTPreProcess::kBlockSize) {
            std::copy_n(trackBuffer.Data(), trackNeed, trackBlock.data());
            tracker->Process(trackBlock.data(), trackNeed, result);
        }
        trackBuffer.Drop(trackNeed);
        trackNeed = tracker->GetRequiredInput();

        expectedPeriod = std::min(sampleRate / result.pitch, static_cast<float>(2 * blockSize));
        const std::int32_t rounded = static_cast<std::int32_t>(std::floor(expectedPeriod + 0.5F));
        if (expectedPeriod <= 0) expectedPeriod = -1;
        if (rounded > 0) ExpectPeriod(result.salience == 0 ? kUnvoicedSearch : kVoicedSearch);
    }
    // The window cannot shrink below two of the shortest periods, so a short period gets a long window.
    const auto expected = static_cast<std::int32_t>(expectedPeriod);
    if (expected > 0 && expected < 2 * minPeriod) ExpectPeriod(kVoicedSearch);
}

// Sets window and search to `expectedPeriod`; `searchShare`: half width of the search in periods.
void CPSOLAAnalysis::ExpectPeriod(float searchShare) {
    const auto expected = static_cast<std::int32_t>(expectedPeriod);
    // In this order: without tracking, two of the shortest periods may be longer than two small blocks.
    windowLength = std::min(std::max(2 * expected, 2 * minPeriod), 2 * blockSize);
    half = windowLength / 2;
    quarter = windowLength / 4;
    radius =
        std::min(std::max(static_cast<std::int32_t>(expectedPeriod * searchShare), minPeriod / 4), quarter);
    expectedLag = half - std::min(expected, half);
}

// The smallest correlator that a window fits into twice: they take windows from B / 8 to 2 x B.
CKKF& CPSOLAAnalysis::CorrelatorFor(std::int32_t length) {
    if (!tracking) return *correlators[0];
    std::int32_t index = 0;
    while (index < std::ssize(correlators) - 1 && length > 2 * blockSize >> (4 - index)) ++index;
    return *correlators[static_cast<std::size_t>(index)];
}

std::int32_t CPSOLAAnalysis::FindLag() {
    // What lies behind the end of the buffer counts as 0.
    const float* samples = buffer.Data();
    const std::int32_t length = std::min(windowLength, buffer.Size());
    if (LargestMagnitude(samples, length) < kSilentPeak) return 0;
    const std::int32_t later = std::min(half, buffer.Size());
    const std::int32_t laterLength = std::min(windowLength, buffer.Size() - later);
    return correlation->CorrelateAndFindPeak(samples, samples + later, length, laterLength, half - 1,
                                             expectedLag, radius);
}

// Looks half a period to either side of the mark for a sample whose square is a quarter stronger than the
// mark's own, and moves the mark there when it is near, or by 2 samples towards it when it is not, so that
// marks creep to the peaks of the waveform and do not jump between them.
std::int32_t CPSOLAAnalysis::SnapToWaveform(std::int32_t found) const {
    constexpr float kClearlyStronger = 1.25F;
    constexpr std::int32_t kCreep = 2; // samples
    const std::int32_t distance = half - found;
    if (distance <= 4 * minPeriod) return found;
    const std::int32_t reach = distance / 2;
    const float own = buffer.At(distance);
    float best = kClearlyStronger * (own * own);
    // A quirk that stays: when nothing is stronger, the lag itself is taken for an offset, so that a lag of 5
    // or more lengthens the period by 2 samples. Marks of saved work lie where this put them.
    std::int32_t offset = found;
    for (std::int32_t u = -reach; u < reach; ++u) {
        const float sample = buffer.At(std::max(distance + u, 1));
        if (sample * sample > best) {
            best = sample * sample;
            offset = u;
        }
    }
    std::int32_t snapped = found;
    if (offset < -4)
        snapped = found + kCreep;
    else if (offset < 5)
        snapped = half - std::max(distance + offset, 1);
    else
        snapped = found - kCreep;
    return -half < snapped && snapped < half ? snapped : found;
}

// A mark too close to the last stored one. With tracking it is passed over, and the walk goes on from there:
// true. Without, the period before is repeated, and the mark is placed.
bool CPSOLAAnalysis::ResolveTooClose() {
    if (tracking) {
        DropPeriod();
        return true;
    }
    period = lastPeriod;
    nextMark = lastMark + period;
    if (blockSize >= 1024) {
        windowLength = blockSize;
        half = windowLength / 2;
        quarter = windowLength / 4;
        radius = half;
        expectedLag = half - period;
    }
    return false;
}

// Makes the mark being placed the last one.
void CPSOLAAnalysis::DropPeriod() {
    buffer.Drop(period);
    lastMark = nextMark;
    lastPeriod = period;
}

// The attack strength of the period before the mark, 0 to below 1.
float CPSOLAAnalysis::MeasureAttack() {
    attackFir->Process(buffer.Data(), scratch.data(), period);
    firAttack.peak = LargestMagnitude(scratch.data(), period);
    const float rattle = AttackOf(firAttack, kSmallestFirAttack);
    attackIir->Process(buffer.Data(), scratch.data(), period);
    iirAttack.peak = LargestMagnitude(scratch.data(), period);
    const float weight = AttackOf(iirAttack, kSmallestIirAttack);
    if (!tracking && iirAttack.peak < kUntrackedSilence) result.salience = 0;
    return std::max(rattle, weight);
}

// How much stronger a peak is than the one before: tanh of the relative rise, times the ratio of the two.
// After a transient the two next marks cannot be any.
float CPSOLAAnalysis::AttackOf(Attack& attack, float smallestPeak) const {
    constexpr double kTiny = 1e-31; // keeps a rise from silence finite
    const float peak = attack.peak;
    const float previous = attack.previous;
    attack.previous = peak;
    if (peak <= previous || peak <= smallestPeak || transientHold1 || transientHold2) return 0;
    const auto a = static_cast<double>(peak);
    const auto q = static_cast<double>(previous);
    const double rise = ((a + kTiny) / (q + kTiny)) * (a - q) + kTiny;
    return static_cast<float>(std::tanh(rise / ((q + a) + kTiny)));
}

float CPSOLAAnalysis::MeanSquare() const {
    return SumOfSquares(buffer.Data(), period) / static_cast<float>(period);
}

std::int32_t CPSOLAAnalysis::AddTailMark() {
    lastMark += tailAdvance;
    marks->Add(lastMark, 0, 0, 0, 0);
    return kOk;
}

std::int32_t CPSOLAAnalysis::Finish() {
    const std::int32_t end = lastMark + buffer.Size();
    while (marks->GetLastPosition() < end) {
        const std::int32_t silence = maxLength - buffer.Size();
        if (silence < 1) break;
        std::fill_n(buffer.Append(silence), silence, 0.0F);
        PlaceMarks();
    }
    while (marks->GetCount() > 0 && marks->GetLastPosition() >= end) marks->RemoveLast();
    marks->AddWithPeriod(end, 0, 0, 0, 0, 0);
    return kOk;
}

} // namespace sonorelle
