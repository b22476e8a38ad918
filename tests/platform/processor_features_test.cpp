#include "platform/processor_features.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

TEST(ProcessorFeatureWord, AgreesWithWhatTheCompilerFindsOut) {
#if defined(__x86_64__) || defined(__i386__)
    EXPECT_EQ((ProcessorFeatureWord() & kFeatureSse) != 0, __builtin_cpu_supports("sse") != 0);
    EXPECT_EQ((ProcessorFeatureWord() & kFeatureSse2) != 0, __builtin_cpu_supports("sse2") != 0);
#else
    EXPECT_EQ(ProcessorFeatureWord(), 0u);
#endif
}

TEST(ProcessorFeatureWord, BitsLieWhereTheProcessorPutsThem) {
    EXPECT_EQ(kFeatureSse, 0x02000000u);
    EXPECT_EQ(kFeatureSse2, 0x04000000u);
}

// Takes the word as a factory does.
std::uint32_t Chosen(std::uint32_t features = ProcessorFeatureWord()) { return features & kFeatureSse2; }

TEST(ProcessorFeatureWord, IsReplacedByHandingInAnother) {
    EXPECT_EQ(Chosen(0), 0u);
    EXPECT_EQ(Chosen(kFeatureSse2), kFeatureSse2);
    EXPECT_EQ(Chosen(), ProcessorFeatureWord() & kFeatureSse2);
}

} // namespace
} // namespace sonorelle
