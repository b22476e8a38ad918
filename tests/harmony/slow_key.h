// The key once more, in the slowest obvious way: scales as strings, one semitone at a time. The tests of the
// harmony compare the fast forms with it.

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace sonorelle::slow {

inline const std::array<std::string, 12> kScales = {
    "101011010101", "101101010110", "110101011010", "101010110101", "101011010110", "101101011010",
    "110101101010", "101101011001", "101100111001", "110011011001", "101010101010", "111111111111"};

inline int Reduce(long long x) { return static_cast<int>(((x % 12) + 12) % 12); }

struct Key {
    int root = 0;
    int melodyScale = 0;
    int harmonyScale = 0;
    bool snap = true;
    bool map = true;

    int Position(int pitch) const { return Reduce(static_cast<long long>(pitch) - root); }
    bool Flag(long long position) const {
        return kScales[static_cast<std::size_t>(harmonyScale)][static_cast<std::size_t>(Reduce(position))] ==
               '1';
    }
    bool MelodyFlag(long long position) const {
        return kScales[static_cast<std::size_t>(melodyScale)][static_cast<std::size_t>(Reduce(position))] ==
               '1';
    }

    int Walk(int position, int semitone, int n) const {
        int distance = -1;
        int sum = 0;
        while (sum < n) {
            distance += 1;
            sum += Flag(position) ? 1 : 0;
            position = semitone > 0 ? (position + 13) % 12 : (position + 11) % 12;
        }
        return distance;
    }

    int Steps(int from, int delta) const {
        int flags = 0;
        if (delta >= 0) {
            for (int x = from; x <= from + delta; ++x) flags += Flag(x) ? 1 : 0;
            return flags - 1;
        }
        for (int x = from + delta; x <= from; ++x) flags += Flag(x) ? 1 : 0;
        return -(flags - 1);
    }

    int StepsFull(int x, int y) const { return Steps(Position(x), y - x); }
    int Steps12(int x, int y) const { return Steps(Position(x), Reduce(y - x)); }
    int StepsT(int x, int y) const { return Steps(Position(x), (y - x) % 12); }

    int Snapped(int pitch) const {
        int up = 0;
        int down = 0;
        while (!MelodyFlag(Position(pitch) + up)) ++up;
        while (!MelodyFlag(Position(pitch) - down)) ++down;
        return down > up ? pitch + up : pitch - down;
    }

    std::array<int, 12> Map() const {
        std::array<int, 12> offsets{};
        std::string melody;
        std::string harmony;
        for (int i = 0; i < 12; ++i) {
            if (MelodyFlag(i)) melody.push_back(static_cast<char>(i));
            if (Flag(i)) harmony.push_back(static_cast<char>(i));
        }
        const auto set = [&](int i, int j) { offsets[static_cast<std::size_t>((i + root) % 12)] = j - i; };
        if (melody.size() == harmony.size()) {
            for (std::size_t k = 0; k < melody.size(); ++k) set(melody[k], harmony[k]);
        } else if (harmonyScale != 11) {
            int j = 0;
            for (const char tone : melody) {
                while (j < 12 && !Flag(j)) ++j;
                if (j >= 12) j = harmony.back();
                set(tone, j);
                ++j;
            }
        }
        return offsets;
    }

    int Mapped(int pitch) const { return pitch + Map()[static_cast<std::size_t>(Reduce(pitch))]; }
    int Prepared(int pitch) const {
        if (snap) pitch = Snapped(pitch);
        if (map) pitch = Mapped(pitch);
        return pitch;
    }
};

} // namespace sonorelle::slow
