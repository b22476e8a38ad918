#include "platform/file_system.h"

#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

namespace sonorelle {
namespace {

void SetModificationTime(const std::string& path, std::int64_t seconds, long nanoseconds) {
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(FileModificationTime, IsExactInSecondsAndInTheFinestUnit) {
    const CScratchFolder folder;
    const std::string path = folder.Put("a", "x");
    SetModificationTime(path, 1234567890,
                        123456000); // whole microseconds: every file system in use keeps them
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    EXPECT_TRUE(FileModificationTimeSeconds(path, seconds));
    EXPECT_TRUE(FileModificationTimeNanoseconds(path, nanoseconds));
    EXPECT_EQ(seconds, 1234567890);
    EXPECT_EQ(nanoseconds, 1234567890123456000);
}

TEST(FileModificationTime, TellsApartTwoTimesWithinOneSecond) {
    const CScratchFolder folder;
    const std::string older = folder.Put("older", "x");
    const std::string newer = folder.Put("newer", "x");
    SetModificationTime(older, 1000, 1000000);
    SetModificationTime(newer, 1000, 2000000);
    std::int64_t a = 0;
    std::int64_t b = 0;
    ASSERT_TRUE(FileModificationTimeNanoseconds(older, a));
    ASSERT_TRUE(FileModificationTimeNanoseconds(newer, b));
    EXPECT_EQ(b - a, 1000000);
}

TEST(FileModificationTime, BeforeTheYear1970IsNegative) {
    const CScratchFolder folder;
    const std::string path = folder.Put("a", "x");
    SetModificationTime(path, -10, 0);
    std::int64_t nanoseconds = 0;
    ASSERT_TRUE(FileModificationTimeNanoseconds(path, nanoseconds));
    EXPECT_EQ(nanoseconds, -10000000000);
}

TEST(FileModificationTime, OfNothingFailsAndLeavesTheResult) {
    const CScratchFolder folder;
    folder.Put("cut", "x");
    std::int64_t value = 42;
    using namespace std::string_literals;
    for (const std::string& path : {folder.File("none"), ""s, folder.File("cut\0off"s)}) {
        EXPECT_FALSE(FileModificationTimeNanoseconds(path, value)) << path;
        EXPECT_FALSE(FileModificationTimeSeconds(path, value)) << path;
        EXPECT_FALSE(FileSize(path, value)) << path;
    }
    EXPECT_EQ(value, 42);
}

TEST(FileSize, IsThatOfRegularFilesOnly) {
    const CScratchFolder folder;
    std::int64_t bytes = -1;
    EXPECT_TRUE(FileSize(folder.Put("empty", ""), bytes));
    EXPECT_EQ(bytes, 0);
    EXPECT_TRUE(FileSize(folder.Put("full", std::string(12345, 'x')), bytes));
    EXPECT_EQ(bytes, 12345);
    EXPECT_FALSE(FileSize(folder.Path(), bytes));
    EXPECT_EQ(bytes, 12345);
}

TEST(FileSystem, TakesNamesWithSpacesLettersOfAllLanguagesAndAnyBytes) {
    const CScratchFolder folder;
    for (const std::string name : {"my song.wav", "L\xc3\xa4rm \xe6\xad\x8c.wav", "\xff\xfe raw\n.wav"}) {
        std::int64_t value = -1;
        EXPECT_TRUE(FileSize(folder.Put(name, "abc"), value)) << name;
        EXPECT_EQ(value, 3);
        EXPECT_TRUE(FileModificationTimeNanoseconds(folder.File(name), value)) << name;
        EXPECT_EQ(FileNamePart(folder.File(name)), name);
    }
}

struct PathParts {
    const char* path;
    const char* folder;
    const char* name;
    const char* stem;
    const char* extension;
};

class PathPartsTest : public testing::TestWithParam<PathParts> {};

TEST_P(PathPartsTest, AreAsExpected) {
    const PathParts& parts = GetParam();
    EXPECT_EQ(FolderPart(parts.path), parts.folder);
    EXPECT_EQ(FileNamePart(parts.path), parts.name);
    EXPECT_EQ(FileStemPart(parts.path), parts.stem);
    EXPECT_EQ(FileExtensionPart(parts.path), parts.extension);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathPartsTest,
    testing::Values(PathParts{"a/b/song.wav", "a/b", "song.wav", "song", ".wav"},
                    PathParts{"song.tar.gz", "", "song.tar.gz", "song.tar", ".gz"},
                    PathParts{"/song", "/", "song", "song", ""}, PathParts{"//song", "/", "song", "song", ""},
                    PathParts{"a/.hidden", "a", ".hidden", ".hidden", ""},
                    PathParts{"a.b/song", "a.b", "song", "song", ""}, PathParts{"a/b/", "a/b", "", "", ""},
                    PathParts{"a//b", "a", "b", "b", ""}, PathParts{"song.", "", "song.", "song", "."},
                    PathParts{"a/..", "a", "..", "..", ""}, PathParts{".", "", ".", ".", ""},
                    PathParts{"", "", "", "", ""}));

TEST(JoinPath, PutsOneSeparatorBetween) {
    EXPECT_EQ(JoinPath("a", "b.wav"), "a/b.wav");
    EXPECT_EQ(JoinPath("a/", "b.wav"), "a/b.wav");
    EXPECT_EQ(JoinPath("/", "b.wav"), "/b.wav");
    EXPECT_EQ(JoinPath("", "b.wav"), "b.wav");
    EXPECT_EQ(JoinPath("a", "/b.wav"), "/b.wav");
    EXPECT_EQ(JoinPath("a", ""), "a/");
}

// Sets TMPDIR for one test and puts the old value back.
class TemporaryFolderTest : public testing::Test {
protected:
    TemporaryFolderTest() {
        if (const char* old = std::getenv("TMPDIR")) old_ = old;
    }
    ~TemporaryFolderTest() override {
        if (old_)
            ::setenv("TMPDIR", old_->c_str(), 1);
        else
            ::unsetenv("TMPDIR");
    }

private:
    std::optional<std::string> old_;
};

TEST_F(TemporaryFolderTest, FollowsTheEnvironmentWithoutATrailingSlash) {
    ::setenv("TMPDIR", "/some/where//", 1);
    EXPECT_EQ(TemporaryFolder(), "/some/where");
    ::setenv("TMPDIR", "/", 1);
    EXPECT_EQ(TemporaryFolder(), "/");
    ::setenv("TMPDIR", "", 1);
    EXPECT_EQ(TemporaryFolder(), "/tmp");
    ::unsetenv("TMPDIR");
    EXPECT_EQ(TemporaryFolder(), "/tmp");
}

} // namespace
} // namespace sonorelle
