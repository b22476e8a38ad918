#include "platform/regular_file.h"

#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace sonorelle {
namespace {

TEST(CRegularFile, ReadsAtAnyPlaceAndStopsAtTheEnd) {
    const CScratchFolder folder;
    CRegularFile file;
    ASSERT_TRUE(file.Open(folder.Put("digits", "0123456789")));
    EXPECT_EQ(file.Length(), 10);
    char bytes[8] = {};
    EXPECT_EQ(file.ReadAt(3, bytes, 4), 4u);
    EXPECT_EQ(std::string(bytes, 4), "3456");
    EXPECT_EQ(file.ReadAt(8, bytes, 8), 2u);
    EXPECT_EQ(std::string(bytes, 2), "89");
    EXPECT_EQ(file.ReadAt(10, bytes, 8), 0u);
    EXPECT_EQ(file.ReadAt(INT64_MAX - 2, bytes, 8), 0u);
    EXPECT_EQ(file.ReadAt(-1, bytes, 8), 0u);
}

TEST(CRegularFile, RefusesWhatIsNoRegularFileWithoutWaiting) {
    const CScratchFolder folder;
    ASSERT_EQ(::mkfifo(folder.File("pipe").c_str(), 0600), 0);
    CRegularFile file;
    using namespace std::string_literals;
    for (const std::string& path : {folder.Path(), folder.File("pipe"), folder.File("none"), "/dev/null"s,
                                    ""s, folder.Put("cut", "x") + "\0off"s}) {
        EXPECT_FALSE(file.Open(path)) << path;
        EXPECT_FALSE(file.IsOpen());
    }
}

TEST(CRegularFile, ClosedHoldsNothing) {
    const CScratchFolder folder;
    CRegularFile file;
    ASSERT_TRUE(file.Open(folder.Put("a", "abc")));
    file.Close();
    char byte = 0;
    EXPECT_EQ(file.Length(), 0);
    EXPECT_EQ(file.ReadAt(0, &byte, 1), 0u);
}

TEST(CFileDescriptor, MovesItsFileAndClosesItOnce) {
    const CScratchFolder folder;
    CRegularFile file;
    ASSERT_TRUE(file.Open(folder.Put("a", "abc")));
    CRegularFile other = std::move(file);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(other.IsOpen());
    EXPECT_EQ(other.Length(), 3);
}

} // namespace
} // namespace sonorelle
