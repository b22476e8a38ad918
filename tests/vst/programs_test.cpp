// Programs, parameters, and the texts of both, as hosts set and show them.

#include "vst/vst_stage.h"

#include <cmath>
#include <limits>
#include <set>

namespace sonorelle::test {
namespace {

constexpr std::size_t kParameterRoom = 32;
constexpr std::size_t kProgramRoom = 24;

class VstPrograms : public VstStage {};
class VstParameters : public VstStage {};

// Before a recording is loaded, too: a host sets the program first.
TEST_F(VstPrograms, TheOneThatIsSetIsStored) {
    EXPECT_EQ(plugIn.Do(Call::kGetProgram), 0);
    plugIn.Do(Call::kSetProgram, 0, 1);
    EXPECT_EQ(plugIn.Do(Call::kGetProgram), 1);
    LoadSong();
    EXPECT_EQ(plugIn.Do(Call::kGetProgram), 1);
    plugIn.Do(Call::kSetProgram, 0, 0);
    EXPECT_EQ(plugIn.Do(Call::kGetProgram), 0);
}

TEST_F(VstPrograms, ThereAreTwoOnly) {
    plugIn.Do(Call::kSetProgram, 0, 1);
    for (const std::intptr_t wrong : {std::intptr_t{2}, std::intptr_t{-1}, std::intptr_t{1} << 32,
                                      std::numeric_limits<std::intptr_t>::min()}) {
        plugIn.Do(Call::kSetProgram, 0, wrong);
        EXPECT_EQ(plugIn.Do(Call::kGetProgram), 1) << wrong;
    }
}

TEST_F(VstPrograms, AreNamedByIndexAndByTheCurrentOne) {
    std::string name = "hymn";
    plugIn.Do(Call::kSetProgram, 0, 1);
    plugIn.Do(Call::kSetProgramName, 0, 0, name.data());
    EXPECT_EQ(plugIn.Text(Call::kGetProgramName, kProgramRoom), "hymn");
    EXPECT_EQ(plugIn.Text(Call::kGetProgramNameIndexed, kProgramRoom, 1), "hymn");
    const std::string first = plugIn.Text(Call::kGetProgramNameIndexed, kProgramRoom, 0);
    EXPECT_NE(first, "hymn");
    EXPECT_NE(first, "");
    plugIn.Do(Call::kSetProgram, 0, 0);
    EXPECT_EQ(plugIn.Text(Call::kGetProgramName, kProgramRoom), first);
    std::array<char, 24> text{};
    for (const std::intptr_t category : {-1, 0, 5})
        EXPECT_EQ(plugIn.Do(Call::kGetProgramNameIndexed, 1, category, text.data()), 1);
    EXPECT_STREQ(text.data(), "hymn");
}

// Names are kept whole, and cut to the host's 24 bytes between two characters.
TEST_F(VstPrograms, NamesAreCutAtAWholeCharacter) {
    struct Name {
        std::string given;
        std::string shown;
    };
    const std::string umlaut = "\xC3\xA4";
    const std::string euro = "\xE2\x82\xAC";
    const std::string clef = "\xF0\x9D\x84\x9E";
    const std::string letters(19, 'x');
    const Name names[] = {
        {letters + "abcd", letters + "abcd"},          {letters + "abcde", letters + "abcd"},
        {letters + "abc" + umlaut, letters + "abc"},   {letters + "ab" + umlaut, letters + "ab" + umlaut},
        {letters + "a" + euro, letters + "a" + euro},  {letters + "ab" + euro, letters + "ab"},
        {letters + "abc" + euro, letters + "abc"},     {letters + clef, letters + clef},
        {letters + "a" + clef, letters + "a"},         {letters + "abc" + clef, letters + "abc"},
        {std::string(500, 'y'), std::string(23, 'y')}, {"", ""},
    };
    for (const Name& name : names) {
        std::string given = name.given;
        plugIn.Do(Call::kSetProgramName, 0, 0, given.data());
        EXPECT_EQ(plugIn.Text(Call::kGetProgramName, kProgramRoom), name.shown) << name.given;
        EXPECT_EQ(plugIn.Text(Call::kGetProgramNameIndexed, kProgramRoom, 0), name.shown) << name.given;
    }
}

TEST_F(VstParameters, EachHasANameOfItsOwnAndAllHaveTexts) {
    LoadSong();
    std::set<std::string> names;
    for (std::int32_t index = 0; index < 32; ++index) {
        names.insert(plugIn.Text(Call::kGetParamName, kParameterRoom, index));
        plugIn.Text(Call::kGetParamLabel, kParameterRoom, index);
        EXPECT_NE(plugIn.Text(Call::kGetParamDisplay, kParameterRoom, index), "") << index;
    }
    EXPECT_EQ(names.size(), 32U);
    EXPECT_EQ(names.count(""), 0U);
    EXPECT_EQ(plugIn.Text(Call::kGetParamName, kParameterRoom, 0), "orange voice volume");
    EXPECT_EQ(plugIn.Text(Call::kGetParamName, kParameterRoom, 31), "green voice timing");
}

TEST_F(VstParameters, ThoseBeyondTheLastHaveNothing) {
    LoadSong();
    for (const std::int32_t index :
         {-1, 32, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
        plugIn.Set(index, 0.5F);
        EXPECT_EQ(plugIn.Get(index), 0.0F) << index;
        for (const Call call : {Call::kGetParamName, Call::kGetParamLabel, Call::kGetParamDisplay})
            EXPECT_EQ(plugIn.Text(call, kParameterRoom, index), "") << index;
    }
}

// Volume and pan take every value; the others move in steps that the ear tells apart.
TEST_F(VstParameters, TakeWhatIsSetAndShowIt) {
    LoadSong();
    for (const std::int32_t index : {0, 1, 6, 7, 12, 13, 18, 19}) {
        plugIn.Set(index, 0.25F);
        EXPECT_NEAR(plugIn.Get(index), 0.25F, 1e-5F) << index;
        const std::string quarter = plugIn.Text(Call::kGetParamDisplay, kParameterRoom, index);
        plugIn.Set(index, 0.75F);
        EXPECT_NEAR(plugIn.Get(index), 0.75F, 1e-5F) << index;
        EXPECT_NE(plugIn.Text(Call::kGetParamDisplay, kParameterRoom, index), quarter) << index;
    }
}

TEST_F(VstParameters, AbsurdValuesAreHeldOrLeftOut) {
    LoadSong();
    for (std::int32_t index = 0; index < 32; ++index) {
        const float before = plugIn.Get(index);
        for (const float odd :
             {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
              -std::numeric_limits<float>::infinity()}) {
            plugIn.Set(index, odd);
            EXPECT_EQ(plugIn.Get(index), before) << index << ' ' << odd;
        }
        for (const float far : {-1.0F, 2.0F, 1e30F, -1e30F, 1e-40F}) {
            plugIn.Set(index, far);
            EXPECT_GE(plugIn.Get(index), 0.0F) << index << ' ' << far;
            EXPECT_LE(plugIn.Get(index), 1.0F) << index << ' ' << far;
        }
    }
}

TEST_F(VstParameters, WithoutARecordingThereAreNamesButNoValues) {
    plugIn.Set(0, 0.5F);
    EXPECT_EQ(plugIn.Get(0), 0.0F);
    EXPECT_EQ(plugIn.Text(Call::kGetParamName, kParameterRoom, 0), "orange voice volume");
}

} // namespace
} // namespace sonorelle::test
