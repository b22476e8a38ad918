// Marks of a given pitch for a stretch of a finished recording: the same search, told how long the period is.

#include "analysis/pitch_marks.h"
#include "analysis/psola_analysis.h"
#include "dsp/kkf.h"
#include "platform/result_codes.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <tuple>
#include <utility>

namespace sonorelle {

namespace {

constexpr float kGivenVoicing = 12.0F;          // dB: whoever gives a pitch hears a voice
constexpr float kWideSearch = 0.5F;             // half width of the search in periods
constexpr double kSemitonesPerNeper = 17.31234; // 12 / ln 2

} // namespace

std::int32_t CPSOLAAnalysis::ReanalyseRange(const float* const* channelBuffers, std::int32_t count,
                                            std::int32_t markIndex, float pitch) {
    if (channelBuffers == nullptr || count < 1 || markIndex < 0 || markIndex >= marks->GetCount() ||
        !std::isfinite(pitch)) {
        return kBadArgument;
    }
    CPitchMarks found;
    SampleQueue stretch;
    try {
        if (const std::int32_t made = found.Allocate(blockSize); made != kOk) return made;
        stretch.Reserve(count);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    float* sum = stretch.Append(count);
    std::fill_n(sum, count, 0.0F);
    for (std::int32_t c = 0; c < channels; ++c) {
        for (std::int32_t i = 0; i < count; ++i) sum[i] += channelBuffers[c][i];
    }

    // The walk goes over the stretch in place of what waits in the buffer, which is as before afterwards.
    auto state = std::tie(windowLength, half, quarter, radius, lag, expectedLag, lastMark, nextMark, period,
                          lastPeriod, expectedPeriod, correlation);
    const auto before = std::make_tuple(windowLength, half, quarter, radius, lag, expectedLag, lastMark,
                                        nextMark, period, lastPeriod, expectedPeriod, correlation);
    std::swap(buffer, stretch);
    const double hertz = 440.0 * std::exp((static_cast<double>(pitch) - 69.0) / kSemitonesPerNeper);
    expectedPeriod = static_cast<float>(std::min(static_cast<double>(sampleRate) / hertz, 2.0 * blockSize));
    PlaceMarksAtPeriod(markIndex, count, found);
    std::swap(buffer, stretch);
    state = before;

    if (found.GetCount() > 0) SpliceMarks(markIndex, found);
    return kOk;
}

void CPSOLAAnalysis::PlaceMarksAtPeriod(std::int32_t fromMark, std::int32_t count, CPitchMarks& found) {
    lastMark = marks->GetPosition(fromMark);
    const std::int32_t end = lastMark + count;
    ExpectPeriod(kWideSearch);
    lastPeriod = half;
    std::int32_t nearest = fromMark;
    while (buffer.Size() > 0) {
        correlation = &CorrelatorFor(windowLength);
        lag = FindLag();
        expectedLag = lag;
        lag = SnapToWaveform(lag);
        period = half - lag;
        if (found.GetCount() > 0 && period < minPeriod / 4) {
            period = lastPeriod;
            if (blockSize >= 1024) {
                windowLength = blockSize;
                half = windowLength / 2;
                quarter = windowLength / 4;
                radius = half;
                expectedLag = half - period;
            }
        }
        nextMark = lastMark + period;
        if (period < 1 || nextMark > end) return;
        nearest = std::max(marks->FindNearest(nearest, nextMark), nearest);
        found.AddWithPeriod(nextMark, kGivenVoicing, marks->GetEnergy(nearest), 0,
                            marks->GetPitchChange(nearest), static_cast<float>(half - expectedLag));
        DropPeriod();
    }
}

// The old marks up to `markIndex`, the new ones, and the old ones behind the last new one.
void CPSOLAAnalysis::SpliceMarks(std::int32_t markIndex, const CPitchMarks& found) {
    const PitchMarkRecord* data = nullptr;
    const std::int32_t count = marks->GetData(data);
    const std::vector<PitchMarkRecord> old(data, data + count);
    const PitchMarkRecord* added = nullptr;
    const std::int32_t addedCount = found.GetData(added);
    std::int32_t lastReplaced = marks->FindNearest(0, added[addedCount - 1].position);
    if (lastReplaced < 0) lastReplaced = count - 1;

    marks->Clear();
    const auto add = [this](const PitchMarkRecord& mark, float markPeriod) {
        marks->AddWithPeriod(mark.position, mark.voicing, mark.energy, mark.transient, mark.pitchChange,
                             markPeriod);
    };
    for (std::int32_t i = 0; i < markIndex; ++i)
        add(old[static_cast<std::size_t>(i)], old[static_cast<std::size_t>(i)].period);
    const PitchMarkRecord& first = old[static_cast<std::size_t>(markIndex)];
    add(first, static_cast<float>(added[0].position - first.position));
    for (std::int32_t i = 0; i < addedCount; ++i) add(added[i], added[i].period);
    for (std::int32_t i = std::max(lastReplaced, markIndex) + 1; i < count; ++i) {
        const PitchMarkRecord& mark = old[static_cast<std::size_t>(i)];
        add(mark, mark.period);
    }
}

} // namespace sonorelle
