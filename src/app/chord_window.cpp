#include "app/chord_window.h"

#include "app/time_display.h"
#include "harmony/chord_names.h"

#include <array>
#include <cstdio>

namespace sonorelle {

std::string FormatBeatPosition(const BeatPosition& position) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%d.%d.%d", position.bar, position.beat, position.tick);
    return text.data();
}

std::string FormatChordTip(std::string_view chordName) {
    std::string text = "@s-8@y+6 chord:@s0\n@y+3 ";
    text += chordName.empty() ? std::string_view("--") : chordName;
    return text;
}

std::string ChordDisplayName(std::int32_t root, std::int32_t type, bool useFlats) {
    std::array<char, ConsortierClassic::kChordNameSize> name{};
    ConsortierClassic::FormatChordName(name, root, type, useFlats);
    return name.data();
}

void CkvoChordDisplayWin::ShowTime(double sample, float sampleRate) { text = FormatTime(sample, sampleRate); }

void CkvoChordDisplayWin::ShowTimeAndBeat(double sample, float sampleRate, const BeatPosition& position) {
    text = FormatTime(sample, sampleRate) + "\n" + FormatBeatPosition(position);
}

} // namespace sonorelle
