#include "synthesis/grain_tables.h"

#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace sonorelle {
namespace {

using std::numbers::pi;

// Half a step of f32 near 1, and what the f64 formula itself may be off.
constexpr double kRounding = 6.1e-8;

double At(const auto& table, int i) { return static_cast<double>(table[static_cast<std::size_t>(i)]); }

class GrainTablesTest : public testing::Test {
protected:
    const std::shared_ptr<const GrainTables> tables = GrainTables::Create();
};

TEST_F(GrainTablesTest, FadeIsTheCubeOfAQuarterSineFromZeroToOne) {
    EXPECT_EQ(At(tables->fade, 0), 0.0);
    EXPECT_EQ(At(tables->fade, 32767), 1.0);
    for (int i = 0; i < 32768; ++i)
        ASSERT_NEAR(At(tables->fade, i), std::pow(std::sin(i * pi / 2 / 32767), 3), kRounding) << i;
}

TEST_F(GrainTablesTest, FadeNeverFalls) {
    for (int i = 1; i < 32768; ++i) ASSERT_GE(At(tables->fade, i), At(tables->fade, i - 1)) << i;
}

TEST_F(GrainTablesTest, SincStartsAtItsCutoffAndCrossesZeroWhereTheCutoffSaysSo) {
    EXPECT_EQ(At(tables->sinc, 0), 0.90234375);
    // sin(pi * cutoff * i / 256) changes its sign at i = 256 n / cutoff = 283.7 n.
    for (const int crossing : {283, 567}) {
        EXPECT_LT(At(tables->sinc, crossing) * At(tables->sinc, crossing + 1), 0.0) << crossing;
    }
    for (int i = 1; i < 283; ++i) ASSERT_GT(At(tables->sinc, i), 0.0) << i;
}

TEST_F(GrainTablesTest, SincCarriesAKaiserWindowOfShapeNine) {
    // Bessel's function of order 0 as an integral, (1 / pi) times that of exp(x cos t) from 0 to pi.
    const auto bessel = [](double x) {
        double sum = 0;
        constexpr int kSteps = 2000;
        for (int n = 0; n < kSteps; ++n) sum += std::exp(x * std::cos(pi * (n + 0.5) / kSteps));
        return sum / kSteps;
    };
    for (const int i : {1, 100, 256, 400, 600, 700, 766, 767}) {
        const double x = i / 256.0;
        const double side = i / 767.0;
        const double window = bessel(9 * std::sqrt(1 - side * side)) / bessel(9);
        EXPECT_NEAR(At(tables->sinc, i), std::sin(x * 0.90234375 * pi) / (x * pi) * window, kRounding) << i;
    }
}

TEST_F(GrainTablesTest, SincDeltasLeadFromEachEntryToTheNextAndEndWithZero) {
    for (int i = 0; i < 767; ++i) {
        ASSERT_NEAR(At(tables->sinc, i) + At(tables->sincDelta, i), At(tables->sinc, i + 1), kRounding) << i;
    }
    EXPECT_EQ(At(tables->sincDelta, 767), 0.0);
}

TEST_F(GrainTablesTest, FadeOfNoneOrOneSampleHasWeightZero) {
    for (const int samples : {-3, 0, 1}) EXPECT_EQ(Fade(*tables, samples)[0], 0.0F) << samples;
}

TEST_F(GrainTablesTest, FadesOfAllLengthsRunFromZeroToOneWithinTheTable) {
    for (int samples = 2; samples < 150000; samples += 1 + samples / 16) {
        const Fade fade(*tables, samples);
        ASSERT_EQ(fade[0], 0.0F) << samples;
        ASSERT_EQ(fade[samples - 1], 1.0F) << samples;
        // Between two entries the curve rises by up to 1.1e-4: a rounded index is half of that off.
        for (int i = 0; i < samples; i += 1 + samples / 50) {
            const double exact = std::pow(std::sin(static_cast<double>(i) / (samples - 1) * pi / 2), 3);
            ASSERT_NEAR(static_cast<double>(fade[i]), exact, 6e-5) << samples << ", " << i;
        }
    }
}

TEST(GrainTables, CreateGivesNothingWhenThereIsNoMemory) {
    const test::AllocationLimit none(0);
    EXPECT_EQ(GrainTables::Create(), nullptr);
}

} // namespace
} // namespace sonorelle
