// Sessions and programs as hosts keep them.

#include "vst/vst_stage.h"

#include <gmock/gmock.h>

#include <random>

namespace sonorelle::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class VstSession : public VstStage {};

TEST_F(VstSession, ThereIsNoneWithoutARecording) {
    EXPECT_EQ(plugIn.Chunk(), "");
    EXPECT_EQ(plugIn.Chunk(true), "");
}

TEST_F(VstSession, TheIndexTellsSessionFromProgram) {
    LoadSong();
    const std::string session = plugIn.Chunk();
    const std::string program = plugIn.Chunk(true);
    EXPECT_THAT(session, HasSubstr(VstSong()));
    EXPECT_THAT(session, HasSubstr("NumOfPresets"));
    EXPECT_THAT(program, Not(HasSubstr(VstSong())));
    EXPECT_THAT(program, HasSubstr("Preset"));
    EXPECT_LT(program.size(), session.size());
    // Any other index than 0 means the program.
    void* data = nullptr;
    EXPECT_EQ(plugIn.Do(Call::kGetChunk, 7, 0, static_cast<void*>(&data)),
              static_cast<std::intptr_t>(program.size()));
}

TEST_F(VstSession, RestoredElsewhereItIsTheSameAgain) {
    LoadSong();
    plugIn.Set(7, 0.25F);
    std::string name = "evensong";
    plugIn.Do(Call::kSetProgramName, 0, 0, name.data());
    const std::string saved = plugIn.Chunk();

    TestHost otherHost;
    HostedPlugIn other(otherHost, library);
    EXPECT_EQ(other.SetChunk(saved), 1);
    EXPECT_NEAR(other.Get(7), 0.25F, 1e-6F);
    EXPECT_EQ(other.Text(Call::kGetProgramName, 24), "evensong");
    EXPECT_EQ(other.Chunk(), saved);
}

TEST_F(VstSession, AProgramChangesTheStripsAndTellsTheHost) {
    LoadSong();
    plugIn.Set(0, 0.125F);
    const std::string program = plugIn.Chunk(true);
    plugIn.Set(0, 0.5F);
    host.TakeAutomations();
    EXPECT_EQ(plugIn.SetChunk(program, true), 1);
    EXPECT_NEAR(plugIn.Get(0), 0.125F, 1e-6F);
    const auto told = host.TakeAutomations();
    ASSERT_EQ(told.size(), 32U);
    for (std::size_t i = 0; i < told.size(); ++i) EXPECT_EQ(told[i].index, static_cast<std::int32_t>(i));
    EXPECT_NEAR(told[0].value, 0.125F, 1e-6F);
}

// Qtractor's way: the chunk, then every parameter from a decimal text.
TEST_F(VstSession, ParametersThatAreSetAfterwardsChangeNothing) {
    LoadSong();
    plugIn.Set(1, 0.3F);
    plugIn.Set(3, 0.6F);
    const std::string saved = plugIn.Chunk();
    std::array<float, 32> values{};
    for (std::int32_t i = 0; i < 32; ++i) values[static_cast<std::size_t>(i)] = plugIn.Get(i);
    TestHost otherHost;
    HostedPlugIn other(otherHost, library);
    ASSERT_EQ(other.SetChunk(saved), 1);
    for (std::int32_t i = 0; i < 32; ++i) other.Set(i, values[static_cast<std::size_t>(i)]);
    for (std::int32_t i = 0; i < 32; ++i)
        EXPECT_NEAR(other.Get(i), values[static_cast<std::size_t>(i)], 1e-5F) << i;
    EXPECT_EQ(other.PlayOut(2000, 500), plugIn.PlayOut(2000, 500));
}

// Ardour's way.
TEST_F(VstSession, AProgramThatIsSetBeforehandStaysAndTheStripsAreTheSessions) {
    LoadSong();
    plugIn.Set(0, 0.25F);
    const std::string saved = plugIn.Chunk();
    TestHost otherHost;
    HostedPlugIn other(otherHost, library);
    other.Do(Call::kSetProgram, 0, 1);
    ASSERT_EQ(other.SetChunk(saved), 1);
    EXPECT_EQ(other.Do(Call::kGetProgram), 1);
    EXPECT_NEAR(other.Get(0), 0.25F, 1e-6F);
}

// Of what was current when it was saved; a host that restores chunks alone learns of it.
TEST_F(VstSession, WithoutAProgramSetBeforehandTheSessionsIsTheCurrentOne) {
    plugIn.Do(Call::kSetProgram, 0, 1);
    LoadSong();
    const std::string saved = plugIn.Chunk();
    TestHost otherHost;
    HostedPlugIn other(otherHost, library);
    ASSERT_EQ(other.SetChunk(saved), 1);
    EXPECT_EQ(other.Do(Call::kGetProgram), 1);
}

TEST_F(VstSession, TheHostsMemoryIsGoodUntilTheNextOne) {
    LoadSong();
    void* data = nullptr;
    const std::intptr_t size = plugIn.Do(Call::kGetChunk, 0, 0, static_cast<void*>(&data));
    ASSERT_GT(size, 0);
    const std::string copy(static_cast<const char*>(data), static_cast<std::size_t>(size));
    plugIn.Set(0, 0.9F);
    plugIn.SetChunk("rubbish");
    EXPECT_EQ(std::string(static_cast<const char*>(data), static_cast<std::size_t>(size)), copy);
}

TEST_F(VstSession, SizesBelowOneRestoreNothing) {
    LoadSong();
    const std::string saved = plugIn.Chunk();
    std::string bytes = saved;
    for (const std::intptr_t size : {std::intptr_t{0}, std::intptr_t{-1}, std::intptr_t{-5} << 40})
        for (const std::int32_t index : {0, 1})
            EXPECT_EQ(plugIn.Do(Call::kSetChunk, index, size, bytes.data()), 0) << size;
    EXPECT_EQ(plugIn.Chunk(), saved);
}

TEST_F(VstSession, RubbishCutAndChangedDocumentsAreHarmless) {
    LoadSong();
    const std::string saved = plugIn.Chunk();
    std::vector<std::string> wrong = {"x", std::string(3000, '\0'), std::string(3000, '<'),
                                      plugIn.Chunk(true), saved.substr(0, 60)};
    for (std::size_t i = 1; i < 12; ++i) wrong.push_back(saved.substr(0, saved.size() * i / 12));
    std::mt19937 random(5);
    for (int turn = 0; turn < 12; ++turn) {
        wrong.push_back(saved);
        for (int i = 0; i < 20; ++i)
            wrong.back()[random() % saved.size()] = static_cast<char>(random() % 256);
    }
    HostBlock block(64);
    for (const std::string& document : wrong) {
        plugIn.SetChunk(document);
        plugIn.SetChunk(document, true);
        plugIn.PlayBlock(block, 64);
        EXPECT_TRUE(block.IsFinite());
        plugIn.Do(Call::kEditIdle);
    }
    EXPECT_EQ(plugIn.SetChunk(saved), 1);
    EXPECT_EQ(plugIn.Chunk(), saved);
}

// The host will write over its file with whatever it is given.
TEST_F(VstSession, OneWhoseRecordingIsGoneIsHandedOutAsItCameIn) {
    LoadSong();
    std::string saved = plugIn.Chunk();
    const std::size_t at = saved.find("song.wav");
    ASSERT_NE(at, std::string::npos);
    saved.replace(at, 4, "gone");
    EXPECT_EQ(plugIn.SetChunk(saved), 0);
    plugIn.Do(Call::kEditIdle); // with no window open nobody is asked
    EXPECT_EQ(plugIn.Chunk(), saved);
}

} // namespace
} // namespace sonorelle::test
