// What a drop brings: the path of a file, or a text as it stands.
//
//     TextOfDrop("file:///home/ann/My%20Song.wav\r\n") == "/home/ann/My Song.wav"
//     TextOfDrop("/home/ann/song.wav\n")               == "/home/ann/song.wav"
//     TextOfDrop("<quillon-xml>...")                   == "<quillon-xml>..."
//
// Pure values for any thread.

#pragma once

#include <string>
#include <string_view>

namespace sonorelle {

// Of a list of addresses the first file; empty when there is nothing to use.
std::string TextOfDrop(std::string_view dropped);
// The other way: what other programs take as the address of a file. `path` begins with a slash.
std::string AddressOfFile(std::string_view path);

} // namespace sonorelle
