// From grain to grain. Each takes the mark nearest to the read position; the mark's period over the pitch
// factor is how far the next grain lies in the output, and, over the time factor too, how far the read
// position moves on. Looking ahead is the same walk on a copy of its state.

#include "synthesis/psola_synthesis.h"
#include "synthesis/sample_counts.h"

#include <algorithm>

namespace sonorelle {

namespace {

// Grains in a row that bring the output no further before the walk gives up. At the highest pitch factor a
// period of 500 samples is half an output sample, and a second of those has 88 grains: more are no recording.
constexpr std::int32_t kMostIdleGrains = 4096;

// The shortest distance between two grains of the look-ahead, so that it ends.
constexpr std::int32_t kShortestSpacing = 2;

// Samples behind the longest grain: what it zeroes beyond its end, and the rounding of its length.
constexpr std::int32_t kGrainMargin = 2;

// Of the output that attacks step back over; a walk that is frozen on one mark would keep ever more.
constexpr std::int32_t kKeptPart = 4;

class ProgressWatch {
public:
    explicit ProgressWatch(std::int32_t start) : furthest(start) {}

    bool StandsStill(std::int32_t place) {
        if (place > furthest) {
            furthest = place;
            idle = 0;
            return false;
        }
        return ++idle >= kMostIdleGrains;
    }

private:
    std::int32_t furthest;
    std::int32_t idle = 0;
};

std::int32_t Repeats(std::int32_t count, bool sameMark) {
    return sameMark ? HoldToI32(std::int64_t{count} + 1) : 1;
}

} // namespace

// What CalcRequiredInput moves on instead of the synthesis itself.
struct CPSOLASynthesis::Walk {
    double readPosition;
    std::int32_t outputMark;
    std::int32_t outputEnd;
    std::int32_t outPeriod;
    std::int32_t repeatCount;
    std::int32_t prevMarkIndex;
    std::int32_t prevMarkPos;
    bool inTransient;
};

std::int32_t CPSOLASynthesis::Process(const float* const* in, std::int32_t count, float* const* out) {
    Append(in, count);
    if (inputFill < 1) {
        if (outputMark >= blockSize) HandOut(out);
        return 0;
    }
    if (RenderGrains() != 0) return kMarksExhausted;
    DiscardInput(std::int64_t{markPos} - std::int64_t{outPeriod} * repeatCount - inputEnd + inputFill -
                 kUsualHistory);
    HandOut(out);
    return 0;
}

std::int32_t CPSOLASynthesis::RenderGrains() {
    ProgressWatch progress(outputMark);
    while (outputMark < KeptOutput(outPeriod, repeatCount) + blockSize) {
        if (RenderNextGrain() != 0 || progress.StandsStill(outputMark)) return kMarksExhausted;
    }
    return 0;
}

std::int32_t CPSOLASynthesis::RenderNextGrain() {
    const std::int32_t mark = FindMark(prevMarkIndex, readPosition);
    if (mark < 0) return kMarksExhausted;
    const std::int32_t period = PeriodAt(mark);
    if (period < 0) return kMarksExhausted;
    const bool attack = transientHandling && !inTransient && IsTransient(mark);
    const std::int32_t span = attack ? FindAttackSpan(mark) : 0;
    if (span < 0) return kMarksExhausted;

    markIndex = mark;
    markPos = marks.GetPosition(mark);
    if (attack) {
        inPeriod = HoldSpan(span, outputEnd);
        CopyAttack();
        prevMarkPos = markPos;
    } else {
        inPeriod = HoldPeriod(period, outputEnd);
        RenderGrain();
    }
    inTransient = attack;
    repeatCount = Repeats(repeatCount, markIndex == prevMarkIndex);
    prevMarkIndex = markIndex;
    const float distance = static_cast<float>(inPeriod) * invPitchFactor;
    outPeriod = NearestSamples(distance);
    readPosition += static_cast<double>(distance * invTimeFactor);
    return 0;
}

// A quirk that stays: where the mark nearest to the read position is an attack that was used already, the
// look-ahead takes the one behind it. It asks for a little more input than is used, and ends one mark early
// on an attack that is the second to last mark.
std::int32_t CPSOLASynthesis::CalcRequiredInput() {
    if (marks.GetCount() < 1) return kMarksExhausted;
    Walk walk{readPosition, outputMark,    outputEnd,   outPeriod,
              repeatCount,  prevMarkIndex, prevMarkPos, inTransient};
    const float span = timeSpan * readSpan;
    std::int64_t required = 0;
    ProgressWatch progress(outputMark);
    while (walk.outputMark < KeptOutput(walk.outPeriod, walk.repeatCount) + blockSize) {
        std::int32_t mark = FindMark(walk.prevMarkIndex, walk.readPosition);
        if (mark < 0) return kMarksExhausted;
        if (mark == walk.prevMarkIndex && IsTransient(mark)) ++mark;
        const std::int32_t period = Advance(walk, mark);
        if (period < 0 || progress.StandsStill(walk.outputMark)) return kMarksExhausted;
        const std::int32_t ahead = WholeSamples(span * static_cast<float>(period));
        required = std::max(required, std::int64_t{marks.GetPosition(mark)} + ahead - inputEnd);
    }
    return HoldToI32(required);
}

// Gives the input period of the grain, or kMarksExhausted.
std::int32_t CPSOLASynthesis::Advance(Walk& walk, std::int32_t mark) const {
    std::int32_t period = marks.GetDistance(mark);
    if (period < 1) return kMarksExhausted;
    const bool attack = transientHandling && !walk.inTransient && IsTransient(mark);
    if (attack) {
        period = FindAttackSpan(mark);
        if (period < 0) return kMarksExhausted;
        period = HoldSpan(period, walk.outputEnd);
    } else {
        period = HoldPeriod(period, walk.outputEnd);
    }
    const float distance = static_cast<float>(period) * invPitchFactor;
    const std::int32_t spacing = std::max(NearestSamples(distance), kShortestSpacing);
    if (attack) {
        const std::int32_t position = marks.GetPosition(mark);
        const AttackCopy copy = PlanAttack(period, KeptOutput(walk.outPeriod, walk.repeatCount),
                                           std::int64_t{position} - walk.prevMarkPos, walk.outputEnd);
        walk.outputEnd = copy.end;
        walk.outputMark = copy.centre;
        walk.prevMarkPos = position;
    } else {
        walk.outputMark = walk.outputEnd;
        walk.outputEnd = std::min(walk.outputEnd + spacing, output.GetCapacity());
    }
    walk.inTransient = attack;
    walk.repeatCount = Repeats(walk.repeatCount, mark == walk.prevMarkIndex);
    walk.prevMarkIndex = mark;
    walk.outPeriod = spacing;
    walk.readPosition += static_cast<double>(distance * invTimeFactor);
    return period;
}

// The mark nearest to the position, or the attack before it, which must not be passed over.
std::int32_t CPSOLASynthesis::FindMark(std::int32_t from, double position) const {
    const std::int32_t mark = marks.FindNearest(from, TruncateToI32(position));
    if (mark < 0) return kMarksExhausted;
    return transientHandling && mark > std::int64_t{from} + 1 && IsTransient(mark - 1) ? mark - 1 : mark;
}

// The last mark has no distance to a next one: the period goes on as it is.
std::int32_t CPSOLASynthesis::PeriodAt(std::int32_t mark) const {
    if (mark >= marks.GetCount() - 1) return NearestSamples(static_cast<float>(outPeriod) * pitchFactor);
    const std::int32_t distance = marks.GetDistance(mark);
    return distance < 1 ? kMarksExhausted : distance;
}

// Output behind the current grain that may not be handed out yet, since an attack steps back over it.
std::int32_t CPSOLASynthesis::KeptOutput(std::int32_t spacing, std::int32_t repeats) const {
    if (!transientHandling) return 0;
    const std::int64_t most = output.GetCapacity() / kKeptPart;
    return static_cast<std::int32_t>(std::min(std::int64_t{spacing} * repeats, most));
}

// The longest period, of those up to the given one, whose grain has room in the output behind `end`.
std::int32_t CPSOLASynthesis::HoldPeriod(std::int32_t period, std::int32_t end) const {
    const std::int32_t room = std::max(output.GetCapacity() - end - kGrainMargin, 0);
    return std::min(period, WholeSamples(static_cast<float>(room) * pitchFactor));
}

std::int32_t CPSOLASynthesis::HoldSpan(std::int32_t span, std::int32_t end) const {
    const std::int32_t room = std::max(output.GetCapacity() - end - kGrainMargin, 0);
    return std::min(HoldPeriod(span, end), room);
}

} // namespace sonorelle
