#include "vst/fresh_song.h"

#include "support/synthetic_singer.h"
#include "support/wav_writer.h"

#include <gtest/gtest.h>

namespace sonorelle::test {

std::string FreshSong(const TemporaryFolder& folder, double seconds) {
    SingerSettings settings;
    const std::string path = folder.File("fresh.wav").string();
    EXPECT_TRUE(WriteWav(path, VibratoTone(220, seconds, settings)));
    return path;
}

} // namespace sonorelle::test
