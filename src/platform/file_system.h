// Questions to the file system, and the parts of a path.
//
// A path is a string of bytes in the system's own form: UTF-8 as a rule, but any bytes that the file system
// holds work. A path with a zero byte in it names nothing. Every function may be called from any thread; none
// throws but for lack of memory.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sonorelle {

// Time of the last change of the file's content since the start of 1970, in the finest unit that the file
// system keeps. False, and the result untouched, when nothing is there under that name. Times that 64 bits of
// nanoseconds cannot hold (before 1677, after 2262) are held to the nearest that they can.
bool FileModificationTimeNanoseconds(const std::string& path, std::int64_t& nanoseconds);

// The same in whole seconds.
bool FileModificationTimeSeconds(const std::string& path, std::int64_t& seconds);

// Length of a regular file in bytes. False, and the result untouched, for anything else.
bool FileSize(const std::string& path, std::int64_t& bytes);

// Parts of a path, without asking the file system. Folder, stem and extension together tell the whole path:
//
//     path              FolderPart   FileNamePart   FileStemPart   FileExtensionPart
//     a/b/song.wav      a/b          song.wav       song           .wav
//     song.tar.gz       (empty)      song.tar.gz    song.tar       .gz
//     /song             /            song           song           (empty)
//     a/.hidden         a            .hidden        .hidden        (empty)
//     a/b/              a/b          (empty)        (empty)        (empty)
std::string FolderPart(std::string_view path);
std::string FileNamePart(std::string_view path);
std::string FileStemPart(std::string_view path);
std::string FileExtensionPart(std::string_view path); // with its dot

// "a" and "b.wav" give "a/b.wav". An empty folder, or a name that is a full path itself, gives the name
// alone.
std::string JoinPath(std::string_view folder, std::string_view name);

// The folder for files that need not last: TMPDIR where it is set, /tmp elsewhere. Ends without a slash.
std::string TemporaryFolder();

} // namespace sonorelle
