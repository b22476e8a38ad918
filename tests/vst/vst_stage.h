// A loaded plug-in with a host around it, and a song that it finds analysed.
#pragma once

#include "support/song_files.h"
#include "vst/hosted_plugin.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace sonorelle::test {

// Three notes, made once for all tests.
inline const std::string& VstSong() {
    static const TemporaryFolder folder;
    static const std::string path =
        WriteSongFiles(folder, "song.wav", MakeVoicedSong({{200, 9000}, {160, 9000}, {178, 9000}}));
    return path;
}
inline constexpr std::int32_t kVstSongFrames = 32000; // all of its sound

// A measured time, for whoever reads; it decides nothing, since machines differ.
inline void Figure(const std::string& what, double value) {
    std::printf("[ MEASURED ] %s: %.3f\n", what.c_str(), value);
}

class VstStage : public ::testing::Test {
protected:
    void LoadSong(const std::string& settings = {}) {
        ASSERT_EQ(plugIn.SetChunk(SessionNaming(VstSong(), settings)), 1);
    }

    PlugInLibrary library;
    TestHost host;
    HostedPlugIn plugIn{host, library};
};

} // namespace sonorelle::test
