// Sound files as the tests of the program see them: read byte by byte, and a few plain measures.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace sonorelle::test {

struct WavSound {
    std::uint32_t format = 0; // 1: integers
    std::uint32_t channels = 0;
    std::uint32_t rate = 0; // Hz
    std::uint32_t bits = 0;
    std::array<std::vector<int>, 2> sides; // of two-channel 16-bit files

    std::size_t Frames() const { return sides[0].size(); }
    double Seconds() const { return static_cast<double>(Frames()) / rate; }
    int Peak(std::size_t side) const {
        int peak = 0;
        for (const int sample : sides[side]) peak = std::max(peak, std::abs(sample));
        return peak;
    }
};

inline WavSound ReadWav(const std::string& bytes) {
    const auto number = [&](std::size_t at, std::size_t count) {
        std::uint32_t value = 0;
        for (std::size_t i = count; i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
        return value;
    };
    WavSound sound;
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8, 4), "RIFFWAVE");
    if (bytes.size() < 12) return sound;
    EXPECT_EQ(number(4, 4), bytes.size() - 8);
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::string name = bytes.substr(at, 4);
        const std::size_t size = number(at + 4, 4);
        if (name == "fmt ") {
            sound.format = number(at + 8, 2);
            sound.channels = number(at + 10, 2);
            sound.rate = number(at + 12, 4);
            sound.bits = number(at + 22, 2);
        } else if (name == "data") {
            EXPECT_LE(at + 8 + size, bytes.size());
            for (std::size_t i = at + 8; i + 4 <= std::min(at + 8 + size, bytes.size()); i += 4)
                for (const std::size_t side : {0U, 1U})
                    sound.sides[side].push_back(static_cast<std::int16_t>(number(i + 2 * side, 2)));
        }
        at += 8 + size + size % 2;
    }
    return sound;
}

// The pitch of a steady voice in the middle second: the lag at which it is most like itself, between the
// samples by a parabola. Good to a few cents.
inline double FrequencyOf(const WavSound& sound, double lowest, double highest) {
    const std::vector<int>& samples = sound.sides[0];
    const std::size_t length = sound.rate / 2;
    const auto longest = static_cast<std::size_t>(sound.rate / lowest) + 1;
    const auto shortest = static_cast<std::size_t>(sound.rate / highest);
    EXPECT_GT(samples.size(), length + longest);
    if (samples.size() <= length + longest) return 0;
    const std::size_t from = (samples.size() - length - longest) / 2;
    std::vector<double> likeness(longest + 2, -1);
    for (std::size_t lag = shortest; lag <= longest; ++lag) {
        double product = 0;
        double energy = 1;
        for (std::size_t i = from; i < from + length; ++i) {
            product += static_cast<double>(samples[i]) * samples[i + lag];
            energy += static_cast<double>(samples[i + lag]) * samples[i + lag];
        }
        likeness[lag] = product / std::sqrt(energy);
    }
    const auto best = static_cast<std::size_t>(
        std::max_element(likeness.begin() + static_cast<std::ptrdiff_t>(shortest) + 1,
                         likeness.begin() + static_cast<std::ptrdiff_t>(longest)) -
        likeness.begin());
    const double a = likeness[best - 1];
    const double b = likeness[best];
    const double c = likeness[best + 1];
    return sound.rate / (static_cast<double>(best) + 0.5 * (a - c) / (a - 2 * b + c));
}

inline double Cents(double hertz, double other) { return 1200 * std::log2(hertz / other); }

} // namespace sonorelle::test
