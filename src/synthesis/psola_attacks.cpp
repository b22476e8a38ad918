// Attacks: overlapped grains would smear or double them, so they pass sample for sample. A copy reaches back
// over the output that was kept for it, fades in there within a sixteenth of that, and goes on to the end of
// the attack.

#include "synthesis/grain_range.h"
#include "synthesis/psola_synthesis.h"
#include "synthesis/sample_counts.h"

#include <algorithm>

namespace sonorelle {

namespace {

constexpr std::int32_t kFadeShift = 4; // a sixteenth

} // namespace

// From the attack to the end of the search, or to the next attack: what is copied. kMarksExhausted when the
// marks end before.
std::int32_t CPSOLASynthesis::FindAttackSpan(std::int32_t mark) const {
    std::int32_t end = mark;
    const std::int32_t search = WholeSamples(static_cast<float>(transientSearch) * invPitchFactor);
    std::int64_t span = marks.FindSpan(end, search);
    for (std::int32_t next = mark + 1; next <= end; ++next) {
        if (!IsTransient(next)) continue;
        span = std::int64_t{marks.GetPosition(next)} - marks.GetPosition(mark);
        break;
    }
    return span < 1 ? kMarksExhausted : HoldToI32(span);
}

CPSOLASynthesis::AttackCopy CPSOLASynthesis::PlanAttack(std::int32_t span, std::int32_t kept,
                                                        std::int64_t sinceLast, std::int32_t end) const {
    AttackCopy copy{};
    copy.lead = static_cast<std::int32_t>(std::clamp<std::int64_t>(sinceLast >> 1, 0, kept));
    copy.fade = copy.lead >> kFadeShift;
    copy.samples = copy.lead - copy.fade + span;
    std::int32_t behind = copy.lead;
    if (!ReadsAtUnity()) {
        copy.samples = WholeSamples(static_cast<float>(copy.samples) * invPitchFactor);
        behind = WholeSamples(static_cast<float>(copy.lead) * invPitchFactor);
    }
    copy.start = end - copy.lead;
    const std::int32_t capacity = output.GetCapacity();
    copy.samples = std::min(copy.samples, capacity - copy.start - copy.fade);
    copy.end = std::max(copy.start + copy.fade + copy.samples, -capacity);
    copy.centre = copy.end - behind;
    return copy;
}

void CPSOLASynthesis::CopyAttack() {
    const AttackCopy copy = PlanAttack(inPeriod, KeptOutput(outPeriod, repeatCount),
                                       std::int64_t{markPos} - prevMarkPos, outputEnd);
    const std::int64_t first = std::int64_t{InputIndex(markPos)} - copy.lead;
    const std::int32_t behindFade = copy.start + copy.fade;
    if (ReadsAtUnity()) {
        BlendCopied(copy.start, first, copy.fade);
        WriteCopied(behindFade, first + copy.fade, copy.samples);
    } else {
        BlendResampled(copy.start, first, copy.fade);
        WriteResampled(behindFade, first + WholeSamples(static_cast<float>(copy.fade) * pitchFactor),
                       copy.samples);
    }
    outputEnd = copy.end;
    outputMark = copy.centre;
}

void CPSOLASynthesis::BlendCopied(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity());
    if (range.IsEmpty()) return;
    const Fade fade(*tables, samples);
    const std::int64_t fill = inputFill;
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        const float* const from = input.Channel(channel);
        float* const to = output.Channel(channel) + at;
        for (std::int32_t i = range.begin; i < range.end; ++i) {
            const std::int64_t index = first + i;
            const float sample = index >= 0 && index < fill ? from[index] : 0.0F;
            to[i] = to[i] * (1.0F - fade[i]) + sample * fade[i];
        }
    }
}

void CPSOLASynthesis::WriteCopied(std::int32_t at, std::int64_t first, std::int32_t samples) {
    const GrainRange range = GrainRange::Inside(at, samples, output.GetCapacity())
                                 .And(GrainRange::Inside(first, samples, inputFill));
    if (range.Count() < samples) WriteSilence(at, samples);
    if (range.IsEmpty()) return;
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        std::copy_n(input.Channel(channel) + (first + range.begin), range.Count(),
                    output.Channel(channel) + (at + range.begin));
    }
}

} // namespace sonorelle
