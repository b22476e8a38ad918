#include "support/psola_driver.h"
#include "support/slow_psola.h"
#include "synthesis/psola_synthesis.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace sonorelle {
namespace {

using test::Channels;

// Sums of at most some dozens of f32 products of full-scale samples, against the same in f64.
constexpr double kModelRounding = 1e-6;

struct Case {
    bool resample;
    bool attacks;
    int channels;
};

// One synthesis beside its model through the same random life.
class Companions {
public:
    Companions(const Case& kind, unsigned seed)
        : random(seed), records(test::RandomMarks(random, 300, 20, 400, kind.attacks ? 0.15 : 0.0)),
          marks(test::MarksOf(records)), recording(test::NoiseRecording(kind.channels, 80000, seed)),
          synthesis(marks, 64, kind.channels), model(records, 64, kind.channels) {
        synthesis.SetFormantPreservation(!kind.resample);
        synthesis.SetTransientHandling(kind.attacks);
        model.resampleGrains = kind.resample;
        model.transientHandling = kind.attacks;
    }

    void Live(int blocks) {
        Jump(0);
        for (int n = 0; n < blocks && !testing::Test::HasFailure(); ++n) {
            Change();
            Render();
        }
    }

    int rendered = 0; // blocks that came out
    int ends = 0;     // blocks that found no marks
    double loudest = 0;
    int CopiedAttacks() const { return model.copiedAttacks; }

private:
    int Pick(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }
    float Between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); }

    void Jump(int position) { ASSERT_EQ(synthesis.SetPosition(position), model.SetPosition(position)); }

    void SetPitch(float factor) {
        synthesis.SetPitchFactor(factor);
        model.SetPitchFactor(factor);
    }

    void Change() {
        switch (Pick(60)) {
        case 0:
        case 1:
        case 2:
            SetPitch(Between(0.4F, 2.5F));
            break;
        case 3:
            SetPitch(1.0F);
            break;
        case 4:
            SetTime(Between(0.3F, 3.0F));
            break;
        case 5:
            Freeze(!model.transientHandling && Pick(2) == 0);
            break;
        case 6:
            Jump(Pick(60000) - 2000);
            break;
        case 7:
            SetReadPosition(synthesis.GetReadPosition() + static_cast<double>(Between(-3000, 9000)));
            break;
        case 8:
            model.blockSize = 1 + Pick(300);
            break;
        case 9:
            SetSearch(100 + Pick(2000));
            break;
        case 10:
            if (Pick(10) == 0) {
                synthesis.Reset();
                model.Reset();
            }
            break;
        default:
            break;
        }
    }

    void SetTime(float factor) {
        synthesis.SetTimeFactor(factor);
        model.SetTimeFactor(factor);
    }

    void Freeze(bool on) {
        synthesis.SetFreeze(on);
        model.SetFreeze(on);
    }

    // Not far back: the walk repeats its mark until it is there again, and where attacks are copied it keeps
    // the output of all that. The model has no limit for it.
    void SetReadPosition(double position) {
        synthesis.SetReadPosition(position);
        model.SetReadPosition(position);
    }

    void SetSearch(int samples) {
        synthesis.SetTransientSearchLength(samples);
        model.transientSearch = samples;
    }

    void Render() {
        const int need = synthesis.GetRequiredInput(model.blockSize);
        ASSERT_EQ(need, model.CalcRequiredInput());
        // Now and then too little comes, or more than was asked for.
        int given = std::max(need, 0);
        if (Pick(20) == 0) given = given * Pick(100) / 100;
        if (Pick(20) == 0) given += Pick(300);
        Channels in = test::Stretch(recording, model.inputEnd, given);
        const auto length = static_cast<std::size_t>(model.blockSize);
        Channels out(in.size(), std::vector<float>(length, 7.0F));
        std::vector<std::vector<double>> expected(in.size(), std::vector<double>(length, 7.0));
        const int result = synthesis.Process(test::Pointers(in).data(), given, test::Pointers(out).data());
        ASSERT_EQ(result, model.Process(in, given, expected));
        Compare(out, expected);
        if (result == 0) ++rendered;
        if (result != 0) {
            ++ends;
            Jump(Pick(50000));
        }
    }

    void Compare(const Channels& out, const std::vector<std::vector<double>>& expected) {
        ASSERT_EQ(synthesis.GetOutputFill(), model.outputMark);
        ASSERT_EQ(synthesis.GetReadPosition(), model.readPosition);
        ASSERT_EQ(synthesis.repeatCount, model.repeatCount);
        ASSERT_EQ(synthesis.inputEnd, model.inputEnd);
        for (std::size_t channel = 0; channel < out.size(); ++channel) {
            for (std::size_t i = 0; i < out[channel].size(); ++i) {
                const double sample = static_cast<double>(out[channel][i]);
                ASSERT_NEAR(sample, expected[channel][i], kModelRounding) << "sample " << i;
                if (sample != 7.0) loudest = std::max(loudest, std::abs(sample));
            }
        }
    }

    std::mt19937 random;
    std::vector<PitchMarkRecord> records;
    CPitchMarks marks;
    Channels recording;
    test::OpenPsola synthesis;
    test::SlowPsola model;
};

class PsolaAgainstModel : public testing::TestWithParam<std::tuple<bool, bool, int>> {};

TEST_P(PsolaAgainstModel, EverySampleAndEveryCountAgreeThroughARandomLife) {
    const auto [resample, attacks, channels] = GetParam();
    int rendered = 0, ends = 0, copied = 0;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Companions companions({resample, attacks, channels}, seed);
        companions.Live(900);
        if (HasFailure()) return;
        rendered += companions.rendered;
        ends += companions.ends;
        copied += companions.CopiedAttacks();
        EXPECT_GT(companions.loudest, 0.5);
    }
    EXPECT_GT(rendered, 2000); // the life was mostly sound ...
    EXPECT_GT(ends, 0);        // ... and met the end of the marks
    EXPECT_EQ(copied > 30, attacks);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, PsolaAgainstModel,
                         testing::Combine(testing::Bool(), testing::Bool(), testing::Values(1, 2)));

} // namespace
} // namespace sonorelle
