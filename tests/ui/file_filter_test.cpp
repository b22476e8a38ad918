#include "ui/file_filter.h"

#include <gtest/gtest.h>

namespace sonorelle {
namespace {

TEST(FileFilter, TypesOfTheOpenDialogAreConverted) {
    EXPECT_EQ(ToolkitFilter("All Audio Files\t*.{wav,aif,aiff}\nWAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}"),
              "All Audio Files (*.{wav,aif,aiff})\tWAV Files (*.wav)\tAIFF Files (*.{aif,aiff})");
}

TEST(FileFilter, WithoutTypesAllFilesAreShown) { EXPECT_EQ(ToolkitFilter(""), "All Files (*)"); }

TEST(FileFilter, StarDotStarAlsoMeansFilesWithoutADot) {
    EXPECT_EQ(ToolkitFilter("All Files\t*.*"), "All Files (*)");
}

TEST(FileFilter, TypeWithoutAPatternShowsAllFiles) { EXPECT_EQ(ToolkitFilter("Anything"), "Anything (*)"); }

TEST(FileFilter, EmptyEntriesAreLeftOut) {
    EXPECT_EQ(ToolkitFilter("\nMIDI Files\t*.mid\n\n\t*.x\nBad\t"), "MIDI Files (*.mid)");
}

TEST(FileFilter, OneTypeAloneTellsTheExtension) {
    EXPECT_EQ(ExtensionOfFilter("WAV File\t*.wav"), ".wav");
    EXPECT_EQ(ExtensionOfFilter("MIDI File\t*.mid"), ".mid");
}

TEST(FileFilter, SeveralTypesTellNone) {
    EXPECT_EQ(ExtensionOfFilter("WAV Files\t*.wav\nAIFF Files\t*.{aif,aiff}"), "");
    EXPECT_EQ(ExtensionOfFilter("AIFF Files\t*.{aif,aiff}"), "");
    EXPECT_EQ(ExtensionOfFilter("All Files\t*.*"), "");
    EXPECT_EQ(ExtensionOfFilter("All Files\t*"), "");
    EXPECT_EQ(ExtensionOfFilter("Anything"), "");
    EXPECT_EQ(ExtensionOfFilter(""), "");
    EXPECT_EQ(ExtensionOfFilter("Odd\t*."), "");
}

} // namespace
} // namespace sonorelle
