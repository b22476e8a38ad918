#include "synthesis/sinc_interpolation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace sonorelle {
namespace {

class SincInterpolationTest : public testing::Test {
protected:
    static std::vector<float> Sine(double radiansPerSample, int samples) {
        std::vector<float> sine;
        for (int i = 0; i < samples; ++i) sine.push_back(static_cast<float>(std::sin(radiansPerSample * i)));
        return sine;
    }

    std::vector<float> Read(const std::vector<float>& signal, float rate, std::int64_t base,
                            int count) const {
        const float slow = std::min(1.0F / rate, 1.0F);
        const auto step = static_cast<std::int32_t>(slow * SincInterpolation::kFullStep + 0.5F);
        const SincInterpolation reader(*tables, step, rate, slow * 0.99F, signal.data(),
                                       static_cast<std::int32_t>(signal.size()));
        std::vector<float> read(static_cast<std::size_t>(count), 7.0F);
        reader.Run(base, 0, count,
                   [&](std::int32_t i, float sample) { read[static_cast<std::size_t>(i)] = sample; });
        return read;
    }

    const std::shared_ptr<const GrainTables> tables = GrainTables::Create();
};

TEST_F(SincInterpolationTest, ASlowSineIsReadWhereItLies) {
    // A fiftieth of the sampling rate, far inside the band: only the gain of 0.99 and the ripple of three
    // zero crossings are left, together below 0.2 dB.
    const double step = 2 * std::numbers::pi / 50;
    const std::vector<float> signal = Sine(step, 400);
    for (const float rate : {0.6F, 0.83F, 1.3F, 2.0F}) {
        const std::vector<float> read = Read(signal, rate, 100, 120);
        for (int i = 0; i < 120; ++i) {
            const double exact = std::sin(step * (100 + i * static_cast<double>(rate)));
            ASSERT_NEAR(static_cast<double>(read[static_cast<std::size_t>(i)]), exact, 0.02)
                << rate << ", " << i;
        }
    }
}

TEST_F(SincInterpolationTest, ReadFasterThanRecordedTheUpperPartialsGo) {
    // 0.4 of the sampling rate, read twice as fast, would fold down to 0.2.
    const std::vector<float> signal = Sine(2 * std::numbers::pi * 0.4, 800);
    double loudest = 0;
    for (const float sample : Read(signal, 2.0F, 100, 200))
        loudest = std::max(loudest, static_cast<double>(std::fabs(sample)));
    EXPECT_LT(loudest, 0.05); // -26 dB: the slope of a filter of three zero crossings
}

TEST_F(SincInterpolationTest, OutsideTheSignalIsSilence) {
    const std::vector<float> signal(200, 1.0F);
    for (const float rate : {0.5F, 1.7F, 900.0F}) {
        for (const std::int64_t base : {-1000000LL, 1000000LL, -9000000000LL, 9000000000LL}) {
            for (const float sample : Read(signal, rate, base, 5))
                ASSERT_EQ(sample, 0.0F) << rate << ", " << base;
        }
    }
    const std::vector<float> onset = Read(signal, 1.0F, -10, 30);
    EXPECT_EQ(onset[0], 0.0F);
    EXPECT_NEAR(onset[29], 0.99F, 0.02F);
}

TEST_F(SincInterpolationTest, ReadingNearTheEdgesGivesTheSameAsInTheMiddle) {
    // The same signal with and without silence around it takes the careful and the quick way.
    std::vector<float> bare = Sine(1.1, 60);
    std::vector<float> framed(500);
    std::copy(bare.begin(), bare.end(), framed.begin() + 200);
    for (const float rate : {0.7F, 1.0F, 2.3F}) {
        EXPECT_EQ(Read(bare, rate, -20, 40), Read(framed, rate, 180, 40)) << rate;
    }
}

TEST_F(SincInterpolationTest, APartOfAGrainIsTheSameAsThatPartOfTheWhole) {
    const std::vector<float> signal = Sine(0.7, 400);
    const std::vector<float> whole = Read(signal, 1.37F, 50, 100);
    const SincInterpolation reader(*tables,
                                   static_cast<std::int32_t>(SincInterpolation::kFullStep / 1.37F + 0.5F),
                                   1.37F, 0.99F / 1.37F, signal.data(), 400);
    int parts = 0;
    reader.Run(50, 30, 60, [&](std::int32_t i, float sample) {
        ASSERT_NEAR(sample, whole[static_cast<std::size_t>(i)], 1e-6F); // the gain is rounded once more
        ++parts;
    });
    EXPECT_EQ(parts, 30);
    reader.Run(50, 60, 60, [](std::int32_t, float) { FAIL() << "no samples were asked for"; });
}

} // namespace
} // namespace sonorelle
