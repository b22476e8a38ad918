// A song of voiced_melody_fixture.h as files: the recording, and beside it the analysis of which everything
// is known, so that whoever loads the recording need not listen to it first.
//
//     TemporaryFolder folder;
//     const std::string path = WriteSongFiles(folder, "song.wav", MakeVoicedSong({{200, 8000}}));
#pragma once

#include "support/temporary_folder.h"
#include "support/voiced_melody_fixture.h"

#include <string>

namespace sonorelle::test {

// Float samples, so that the recording has the song's own bits. Gives the full path of the recording. Throws
// std::runtime_error when the files cannot be written.
std::string WriteSongFiles(const TemporaryFolder& folder, const std::string& name, const VoicedSong& song);

} // namespace sonorelle::test
