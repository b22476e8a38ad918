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

} // namespace
} // namespace sonorelle
