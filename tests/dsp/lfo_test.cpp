#include "dsp/lfo.h"

#include "platform/result_codes.h"
#include "support/allocation_trap.h"
#include "support/hostile_numbers.h"
#include "support/portable_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace sonorelle {
namespace {

using test::kPi;

constexpr std::int32_t kControlRate = 689; // blocks of 64 a second at 44.1 kHz
constexpr float kLargestFloat = std::numeric_limits<float>::max();
constexpr std::uint32_t kKinds[] = {kSineLfo, kSawLfo, kTriangleLfo, kNoiseLfo, kNoLfo};

std::unique_ptr<CLFO> MakeLFO(std::uint32_t kind) {
    std::unique_ptr<CLFO> lfo;
    EXPECT_EQ(CreateLFO(lfo, kControlRate, kind), kOk);
    return lfo;
}

std::vector<float> Ticks(CLFO& lfo, std::size_t count) {
    std::vector<float> values(count);
    for (float& value : values) value = lfo.Tick();
    return values;
}

float Peak(const std::vector<float>& values) {
    float peak = 0.0f;
    for (const float value : values) peak = std::max(peak, std::fabs(value));
    return peak;
}

// --- Sine ---

TEST(CSineLFO, EachModeIsASineOrACosineOfEitherSign) {
    constexpr float kHertz = 5.5f;
    const double tick = 2.0 * kPi * static_cast<double>(kHertz) / kControlRate; // radians
    for (std::uint32_t mode = 0; mode < 4; ++mode) {
        CSineLFO lfo(kControlRate);
        lfo.SetFrequency(kHertz);
        lfo.SetPhase(mode);
        for (int n = 1; n <= 2000; ++n) {
            const double sine = std::sin(tick * n);
            const double cosine = std::cos(tick * (n - 0.5)); // half a tick late
            const double expected[] = {-sine, -cosine, sine, cosine};
            // Rounding in f32, summed over the ticks.
            ASSERT_NEAR(lfo.Tick(), expected[mode], 1e-4) << mode << ", " << n;
        }
    }
}

TEST(CSineLFO, StartsAsASine) {
    CSineLFO plain(kControlRate), sine(kControlRate);
    sine.SetPhase(2);
    plain.SetFrequency(3.0f);
    sine.SetFrequency(3.0f);
    EXPECT_EQ(Ticks(plain, 500), Ticks(sine, 500));
}

TEST(CSineLFO, StandsAtZeroWithoutAFrequency) {
    CSineLFO lfo(kControlRate);
    EXPECT_EQ(Peak(Ticks(lfo, 100)), 0.0f);
    lfo.SetPhase(3);
    EXPECT_EQ(lfo.Tick(), 1.0f);
}

TEST(CSineLFO, KeepsItsHeightOverMillionsOfTicks) {
    for (const float hertz : {0.1f, 1.0f, 5.5f, 33.3f, 100.0f, 229.7f, 300.0f}) {
        CSineLFO lfo(kControlRate);
        lfo.SetFrequency(hertz);
        for (int block = 0; block < 20; ++block) {
            const float peak = Peak(Ticks(lfo, 100000));
            ASSERT_LE(peak, 1.0f) << hertz;
            // 100,000 ticks come as near to each peak as this at all of these frequencies.
            ASSERT_GT(peak, 0.9999f) << hertz << ", " << block;
        }
    }
}

TEST(CSineLFO, StaysBoundedAtAndBeyondHalfTheRate) {
    // Just below half the rate the coefficient rounds to 2, where the bare sums grow without end: to 18 after
    // two million ticks at 344.499.
    for (const float hertz : {344.0f, 344.4f, 344.499f, 344.5f, 344.501f, 689.0f, 1e6f, -344.499f}) {
        CSineLFO lfo(kControlRate);
        lfo.SetFrequency(hertz);
        for (int block = 0; block < 20; ++block) ASSERT_LE(Peak(Ticks(lfo, 100000)), 1.0f) << hertz;
    }
}

TEST(CSineLFO, ResetStartsTheWaveAgainAndKeepsItsMode) {
    CSineLFO lfo(kControlRate);
    lfo.SetFrequency(7.0f);
    lfo.SetPhase(1);
    const std::vector<float> first = Ticks(lfo, 333);
    lfo.Reset();
    EXPECT_EQ(Ticks(lfo, 333), first);
    lfo.SetFrequency(7.0f);
    EXPECT_EQ(Ticks(lfo, 333), first);
}

// --- Saw ---

TEST(CSawLFO, ASlowSawFollowsItsRampAtTheSmoothersLag) {
    CSawLFO lfo(65536.0f);
    lfo.SetFrequency(0.5f);
    constexpr double kStep = 1.0 / 131072.0; // f32 sums it without rounding
    for (int n = 1; n < 131072; ++n) {
        const double value = static_cast<double>(lfo.Tick());
        if (n < 20000) continue; // the smoother has settled to e^-20
        // A one-pole smoother follows a ramp 0.999 / 0.001 ticks late. Its own rounding: 1000 times 3e-8.
        ASSERT_NEAR(value, 2.0 * (kStep * (n - 999.0) - 0.5), 1e-4) << n;
    }
}

TEST(CSawLFO, EachModeSetsSideAndStart) {
    // Without a frequency the smoother runs towards the value of the phase: 0 where it is half a period on.
    const double goal[] = {-1.0, 0.0, 1.0, 0.0};
    for (std::uint32_t mode = 0; mode < 4; ++mode) {
        CSawLFO lfo(kControlRate);
        lfo.SetPhase(mode);
        for (int n = 1; n <= 3000; ++n)
            ASSERT_NEAR(lfo.Tick(), goal[mode] * (1.0 - std::pow(0.999, n)), 1e-5) << mode;
    }
    for (const std::uint32_t mode : {1u, 3u}) { // from the middle on, up and down
        CSawLFO lfo(kControlRate);
        lfo.SetFrequency(0.5f);
        lfo.SetPhase(mode);
        Ticks(lfo, 300);
        EXPECT_GT(lfo.Tick() * (mode == 1 ? 1.0f : -1.0f), 0.01f) << mode;
    }
}

TEST(CSawLFO, RunsThroughOnePeriodInRateOverFrequencyTicks) {
    CSawLFO lfo(1000);
    lfo.SetFrequency(0.25f); // 4000 ticks
    Ticks(lfo, 40000);
    const std::vector<float> period = Ticks(lfo, 4000), next = Ticks(lfo, 4000);
    for (std::size_t n = 0; n < period.size(); ++n) ASSERT_NEAR(next[n], period[n], 1e-3f) << n;
    const auto top = std::max_element(period.begin(), period.end());
    const auto bottom = std::min_element(period.begin(), period.end());
    EXPECT_GT(*top, 0.2f);
    EXPECT_LT(*bottom, -0.2f);
}

TEST(CSawLFO, ResetBeginsThePeriodWithTheStoredMode) {
    for (std::uint32_t mode = 0; mode < 4; ++mode) {
        CSawLFO lfo(kControlRate), fresh(kControlRate);
        for (CSawLFO* saw : {&lfo, &fresh}) saw->SetPhase(mode);
        Ticks(lfo, 1); // moves the smoother alone
        lfo.SetFrequency(2.0f);
        fresh.SetFrequency(2.0f);
        Ticks(lfo, 100);
        lfo.Reset();
        lfo.SetFrequency(2.0f); // empties the smoother
        EXPECT_EQ(Ticks(lfo, 1000), Ticks(fresh, 1000)) << mode;
    }
}

TEST(CSawLFO, EachCallOfAnOddModeShiftsByHalfAPeriod) {
    CSawLFO lfo(kControlRate), plain(kControlRate);
    lfo.SetPhase(1);
    lfo.SetPhase(1);
    EXPECT_EQ(Ticks(lfo, 100), Ticks(plain, 100));
}

// --- Triangle ---

// Height of a triangle, -1 at 0 and 1 at half a period.
double Triangle(double periods) {
    const double phase = periods - std::floor(periods);
    return phase < 0.5 ? 4.0 * phase - 1.0 : 3.0 - 4.0 * phase;
}

TEST(CTriangLFO, EachModeIsATriangleFromItsOwnStart) {
    constexpr float kHertz = 5.5f;
    const double step = static_cast<double>(kHertz) / kControlRate;
    for (std::uint32_t mode = 0; mode < 4; ++mode) {
        CTriangLFO lfo(kControlRate);
        lfo.SetFrequency(kHertz);
        lfo.SetPhase(mode);
        const double start = mode % 2 == 0 ? 0.0 : 0.25;
        const double side = mode < 2 ? 0.5 : -0.5;
        for (int n = 1; n <= 2000; ++n) {
            // The phases are summed in f32: 2000 roundings of 3e-8, times the slope.
            ASSERT_NEAR(lfo.Tick(), side * 1.9993288181 * Triangle(start + step * n), 3e-4) << mode;
        }
    }
}

TEST(CTriangLFO, KeepsItsHeightOverMillionsOfTicks) {
    for (const float hertz : {0.1f, 1.0f, 5.5f, 33.3f, 300.0f}) {
        CTriangLFO lfo(kControlRate);
        lfo.SetFrequency(hertz);
        for (int block = 0; block < 20; ++block) {
            const float peak = Peak(Ticks(lfo, 100000));
            ASSERT_LE(peak, 1.0f) << hertz;
            ASSERT_GT(peak, 0.99f) << hertz;
        }
    }
}

TEST(CTriangLFO, ResetBeginsThePeriodWithTheStoredMode) {
    for (std::uint32_t mode = 0; mode < 4; ++mode) {
        CTriangLFO lfo(kControlRate);
        lfo.SetFrequency(3.0f);
        lfo.SetPhase(mode);
        const std::vector<float> first = Ticks(lfo, 777);
        lfo.Reset();
        EXPECT_EQ(Ticks(lfo, 777), first) << mode;
    }
}

TEST(CTriangLFO, EachCallOfAnOddModeShiftsByAQuarter) {
    CTriangLFO lfo(kControlRate);
    for (const double expected : {0.0, 1.0, 0.0, -1.0}) {
        lfo.SetPhase(1);
        EXPECT_NEAR(lfo.Tick(), expected, 1e-3);
    }
}

// --- Noise ---

// The first numbers of the generator as "Numerical Recipes in C" prints them, from seed 0.
constexpr std::uint32_t kPrinted[] = {0x3c6ef35f, 0x47502932, 0xd1ccf6e9, 0xaaf95334, 0x6252e503};

TEST(CNoiseLFO, SmoothsThePrintedSequence) {
    CNoiseLFO lfo(kControlRate);
    double expected = 0.0;
    for (const std::uint32_t number : kPrinted) {
        const double x = static_cast<std::int32_t>(number) / 2147483648.0;
        expected = 0.001 * x + 0.999 * expected;
        EXPECT_NEAR(lfo.Tick(), expected, 1e-9);
    }
}

TEST(CNoiseLFO, SetFrequencyRestartsTheSequenceAndKeepsTheSmoother) {
    CNoiseLFO lfo(kControlRate);
    Ticks(lfo, 1000);
    const float before = lfo.Tick();
    lfo.SetFrequency(12.0f);
    const double x = static_cast<std::int32_t>(kPrinted[0]) / 2147483648.0;
    EXPECT_NEAR(lfo.Tick(), 0.001 * x + 0.999 * static_cast<double>(before), 1e-8);
}

TEST(CNoiseLFO, PhaseAndResetDoNothing) {
    CNoiseLFO lfo(kControlRate), untouched(kControlRate);
    Ticks(lfo, 50);
    Ticks(untouched, 50);
    lfo.SetPhase(0);
    lfo.Reset();
    EXPECT_EQ(Ticks(lfo, 100), Ticks(untouched, 100));
}

TEST(CNoiseLFO, WandersSlowlyAroundZero) {
    CNoiseLFO lfo(kControlRate);
    const std::vector<float> values = Ticks(lfo, 3000000);
    double sum = 0.0, power = 0.0;
    for (const float value : values) {
        sum += static_cast<double>(value);
        power += static_cast<double>(value) * static_cast<double>(value);
    }
    const auto count = static_cast<double>(values.size());
    // The smoother passes 0.001 / 1.999 of the power 1/3 of even noise; 3000 time constants make a few per
    // cent of it uncertain.
    EXPECT_NEAR(std::sqrt(power / count), 0.0129, 0.001);
    EXPECT_NEAR(sum / count, 0.0, 0.001);
    EXPECT_LT(Peak(values), 0.1f);
}

// --- None, and all of them ---

TEST(CNoLFO, IsOneWhateverIsSet) {
    CNoLFO lfo(kControlRate);
    lfo.SetFrequency(10.0f);
    lfo.SetPhase(0);
    lfo.Reset();
    EXPECT_EQ(Ticks(lfo, 10), std::vector<float>(10, 1.0f));
}

TEST(CLFO, IgnoresFrequenciesAndModesThatAreNone) {
    for (const std::uint32_t kind : {kSineLfo, kSawLfo, kTriangleLfo}) {
        const auto lfo = MakeLFO(kind), untouched = MakeLFO(kind);
        for (CLFO* each : {lfo.get(), untouched.get()}) {
            each->SetFrequency(5.0f);
            each->SetPhase(3);
            Ticks(*each, 100);
        }
        for (const float bad : {kNaN, kInfinity, -kInfinity}) lfo->SetFrequency(bad);
        for (const std::uint32_t bad : {7u, 0xffffffffu, 4u}) lfo->SetPhase(bad);
        EXPECT_EQ(Ticks(*lfo, 1000), Ticks(*untouched, 1000)) << kind;
        lfo->Reset();
        untouched->Reset();
        EXPECT_EQ(Ticks(*lfo, 1000), Ticks(*untouched, 1000)) << kind;
    }
}

TEST(CLFO, StaysBoundedAtEveryFrequency) {
    for (const std::uint32_t kind : kKinds) {
        const auto lfo = MakeLFO(kind);
        for (const float hertz : {0.0f, 1e-40f, -1e-9f, -3.0f, 1e9f, 1e30f, -1e38f, kLargestFloat, 6.0f}) {
            lfo->SetFrequency(hertz);
            for (std::uint32_t call = 0; call < 1000; ++call) {
                lfo->SetPhase(call % 5);
                if (call % 7 == 0) lfo->Reset();
                ASSERT_LE(std::fabs(lfo->Tick()), 1.0f) << kind << ", " << hertz;
            }
        }
    }
}

TEST(CLFO, ARateThatIsNoneCountsAsOne) {
    for (const float rate : {0.0f, -5.0f, kNaN}) {
        CSineLFO sine(rate), reference(1.0f);
        CSawLFO saw(rate);
        CTriangLFO triangle(rate);
        for (CLFO* lfo : {static_cast<CLFO*>(&sine), static_cast<CLFO*>(&saw), static_cast<CLFO*>(&triangle),
                          static_cast<CLFO*>(&reference)}) {
            lfo->SetFrequency(0.03f);
            lfo->Reset();
        }
        EXPECT_EQ(Ticks(sine, 100), Ticks(reference, 100));
        EXPECT_LE(Peak(Ticks(saw, 1000)), 1.0f);
        EXPECT_LE(Peak(Ticks(triangle, 1000)), 1.0f);
    }
}

TEST(CreateLFO, MakesEachKind) {
    EXPECT_TRUE(dynamic_cast<CSineLFO*>(MakeLFO(0).get()));
    EXPECT_TRUE(dynamic_cast<CSawLFO*>(MakeLFO(1).get()));
    EXPECT_TRUE(dynamic_cast<CTriangLFO*>(MakeLFO(2).get()));
    EXPECT_TRUE(dynamic_cast<CNoiseLFO*>(MakeLFO(3).get()));
    EXPECT_TRUE(dynamic_cast<CNoLFO*>(MakeLFO(4).get()));
}

TEST(CreateLFO, HandsOnTheRate) {
    const auto lfo = MakeLFO(kSineLfo);
    CSineLFO expected(kControlRate);
    lfo->SetFrequency(20.0f);
    expected.SetFrequency(20.0f);
    EXPECT_EQ(Ticks(*lfo, 100), Ticks(expected, 100));
}

TEST(CreateLFO, RefusesAnotherKindAndARateBelowOne) {
    std::unique_ptr<CLFO> lfo;
    for (const std::uint32_t kind : {5u, 100u, 0xffffffffu})
        EXPECT_EQ(CreateLFO(lfo, kControlRate, kind), kBadArgument);
    for (const std::int32_t rate : {0, -1, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(CreateLFO(lfo, rate, kSineLfo), kBadArgument);
    EXPECT_FALSE(lfo);
}

TEST(CreateLFO, TellsWhenMemoryRanOut) {
    for (const std::uint32_t kind : kKinds) {
        std::unique_ptr<CLFO> lfo;
        std::int32_t result = kOk;
        {
            const test::AllocationLimit limit(0);
            result = CreateLFO(lfo, kControlRate, kind);
        }
        EXPECT_EQ(result, kOutOfMemory);
        EXPECT_FALSE(lfo);
    }
}

} // namespace
} // namespace sonorelle
