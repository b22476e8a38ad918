// The built plug-in, loaded as hosts load it.
//
//     const PlugInLibrary library;                 // the file that was built
//     HostedEffect* effect = library.Entry()(callback);
//
//     const OwnPlugInFile file;                    // a copy: code and globals of its own
//     PlugInLibrary other(file.Path());
#pragma once

#include "support/temporary_folder.h"
#include "vst/vst_interface.h"

#include <string>

namespace sonorelle::test {

const char* PlugInPath();  // of the plug-in that was built like the program
std::string BuiltPlugIn(); // the same; it is loaded from here on

class PlugInLibrary {
public:
    // Throws std::runtime_error when it does not load.
    explicit PlugInLibrary(const std::string& path = BuiltPlugIn());
    ~PlugInLibrary() { Unload(); }
    PlugInLibrary(const PlugInLibrary&) = delete;
    PlugInLibrary& operator=(const PlugInLibrary&) = delete;

    VstEntry Entry(const char* name = "VSTPluginMain") const; // null: not there
    void Unload();

private:
    void* handle;
};

// A plug-in of the same code that shares nothing with the built one. Tests that leave an effect behind, or
// need a library that has not been loaded yet, or one that really goes, take one.
//
// The toolkit never frees its fonts and colours, which are out of reach when its library is unloaded: while
// there is such a file, this thread's leaks are not looked for. The built plug-in stays, and shows them.
class OwnPlugInFile {
public:
    OwnPlugInFile();
    ~OwnPlugInFile();
    OwnPlugInFile(const OwnPlugInFile&) = delete;
    OwnPlugInFile& operator=(const OwnPlugInFile&) = delete;
    std::string Path() const { return folder.File("sonorelle.so").string(); }
    bool IsInMemory() const;

private:
    TemporaryFolder folder;
};

} // namespace sonorelle::test
