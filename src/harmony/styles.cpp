#include "harmony/styles.h"

#include <algorithm>

namespace sonorelle::ConsortierClassic {
namespace {

constexpr std::int32_t kAnyArrangement = -1;
constexpr std::int32_t kVoicesOfUnknownStyle = 4;

struct VoicesRow {
    std::int32_t style;
    std::int32_t arrangement;
    std::int32_t voices;
};

// clang-format off
constexpr StyleEntry kStyles[kStyleListLength] = {
    // user name                  style              first arrangement, how many
    { "Intelligent 4 Voices",     kStyleIntelligent, kFourVoices,    1 },
    { "Intelligent 3 Voices",     kStyleIntelligent, kThreeVoices,   1 },
    { "Intelligent 2 Voices",     kStyleIntelligent, kTwoVoices,     1 },
    { "Block Chord 4 Voices",     kStyleBlock,       kBlock,         9 },
    { "Fauxbourdon 3 Voices",     kStyleFauxbourdon, kTenorDiatonic, 4 },
    { "Organum 2/3 Voices",       kStyleOrganum,     kFourthAbove,   7 },
    { "Parallel manual 4 Voices", kStyleParallel,    kParallelFour,  1 },
    { "Parallel manual 2 Voices", kStyleParallel,    kParallelTwo,   1 },
};

constexpr ArrangementEntry kArrangements[] = {
    { kStyleBlock,       kBlock,               "Block"                },
    { kStyleBlock,       kBlockIntelligent,    "Block Intelligent"    },
    { kStyleBlock,       kShearing,            "Shearing"             },
    { kStyleBlock,       kShearingIntelligent, "Shearing Intelligent" },
    { kStyleBlock,       kDrop2,               "Drop2"                },
    { kStyleBlock,       kDrop2Intelligent,    "Drop2 Intelligent"    },
    { kStyleBlock,       kBlockRandomized,     "Block Randomized"     },
    { kStyleBlock,       kShearingRandomized,  "Shearing Randomized"  },
    { kStyleBlock,       kDrop2Randomized,     "Drop2 Randomized"     },
    { kStyleFauxbourdon, kTenorDiatonic,       "Tenor Diatonic"       },
    { kStyleFauxbourdon, kTenorIntelligent,    "Tenor Intelligent"    },
    { kStyleFauxbourdon, kDescantDiatonic,     "Descant Diatonic"     },
    { kStyleFauxbourdon, kDescantIntelligent,  "Descant Intelligent"  },
    { kStyleOrganum,     kFourthAbove,         "Fourth Above"         },
    { kStyleOrganum,     kFourthBelow,         "Fourth Below"         },
    { kStyleOrganum,     kFifthAbove,          "Fifth Above"          },
    { kStyleOrganum,     kFifthBelow,          "Fifth Below"          },
    { kStyleOrganum,     kOctaveAbove,         "Octave Above"         },
    { kStyleOrganum,     kOctaveBelow,         "Octave Below"         },
    { kStyleOrganum,     kOctaveAround,        "Octave Around"        },
};

constexpr const char* kManualIntervals[kManualIntervalCount] = {
    "Down Octave", "Down Seventh", "Down Sixth", "Down Fifth", "Down Fourth", "Down Third", "Down Second",
    "Prime",
    "Up Second",   "Up Third",     "Up Fourth",  "Up Fifth",   "Up Sixth",    "Up Seventh", "Up Octave",
};

// The first row that fits holds.
constexpr VoicesRow kVoices[] = {
    { kStyleIntelligent, kThreeVoices,    3 },
    { kStyleIntelligent, kTwoVoices,      2 },
    { kStyleIntelligent, kAnyArrangement, 4 },
    { kStyleParallel,    kParallelTwo,    2 },
    { kStyleParallel,    kAnyArrangement, 4 },
    { kStyleBlock,       kAnyArrangement, 4 },
    { kStyleFauxbourdon, kAnyArrangement, 3 },
    { kStyleOrganum,     kOctaveAround,   3 },
    { kStyleOrganum,     kAnyArrangement, 2 },
};
// clang-format on

bool Covers(const StyleEntry& entry, std::int32_t style, std::int32_t arrangement) {
    return entry.style == style && arrangement >= entry.arrangement &&
           arrangement - entry.arrangement < entry.arrangementCount;
}

} // namespace

std::span<const StyleEntry> StyleList() { return kStyles; }

std::span<const ArrangementEntry> ArrangementList(std::int32_t style) {
    const auto ofStyle = [style](const ArrangementEntry& entry) { return entry.style == style; };
    const auto* const first = std::find_if(std::begin(kArrangements), std::end(kArrangements), ofStyle);
    return {first, std::find_if_not(first, std::end(kArrangements), ofStyle)};
}

std::span<const char* const> ManualIntervalList() { return kManualIntervals; }

bool IsStyle(std::int32_t style) {
    return std::any_of(std::begin(kStyles), std::end(kStyles),
                       [style](const StyleEntry& entry) { return entry.style == style; });
}

bool IsArrangement(std::int32_t style, std::int32_t arrangement) {
    return StyleListPosition(style, arrangement) >= 0;
}

std::int32_t StyleListPosition(std::int32_t style, std::int32_t arrangement) {
    for (std::int32_t position = 0; position < kStyleListLength; ++position)
        if (Covers(kStyles[position], style, arrangement)) return position;
    return -1;
}

std::int32_t CountVoices(std::int32_t style, std::int32_t arrangement) {
    for (const VoicesRow& row : kVoices)
        if (row.style == style && (row.arrangement == arrangement || row.arrangement == kAnyArrangement))
            return row.voices;
    return kVoicesOfUnknownStyle;
}

} // namespace sonorelle::ConsortierClassic
