#include "platform/atomic_file_writer.h"

#include "platform/file_size_limit.h"
#include "platform/scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace sonorelle {
namespace {

mode_t Permissions(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

TEST(CAtomicFileWriter, MakesANewFileWithTheUsersPermissions) {
    const CScratchFolder folder;
    const mode_t oldMask = ::umask(0027);
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("new")));
    ::umask(oldMask);
    EXPECT_TRUE(writer.Write("hello", 5));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(folder.File("new")), "hello");
    EXPECT_EQ(Permissions(folder.File("new")), 0640u);
    EXPECT_EQ(folder.CountFiles(), 1u);
    EXPECT_FALSE(writer.IsOpen());
}

TEST(CAtomicFileWriter, ShowsTheOldFileUntilCommitAndKeepsItsPermissions) {
    const CScratchFolder folder;
    const std::string path = folder.Put("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0604), 0);
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(path));
    EXPECT_TRUE(writer.Write(std::string(200000, 'n').data(), 200000));
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(path), std::string(200000, 'n'));
    EXPECT_EQ(Permissions(path), 0604u);
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST(CAtomicFileWriter, WithoutCommitLeavesNothingBehind) {
    const CScratchFolder folder;
    const std::string path = folder.Put("file", "old");
    {
        CAtomicFileWriter writer;
        ASSERT_TRUE(writer.Open(path));
        EXPECT_TRUE(writer.Write("new", 3));
        EXPECT_EQ(folder.CountFiles(), 2u); // the temporary lies beside the target
    }
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST(CAtomicFileWriter, KeepsASymbolicLinkAndReplacesWhatItLeadsTo) {
    const CScratchFolder folder;
    ASSERT_EQ(::mkdir(folder.File("sub").c_str(), 0700), 0);
    const std::string real = folder.Put("sub/real", "old");
    ASSERT_EQ(::symlink("sub/real", folder.File("link").c_str()), 0);
    ASSERT_EQ(::symlink(folder.File("link").c_str(), folder.File("chain").c_str()), 0);
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("chain")));
    EXPECT_TRUE(writer.Write("new", 3));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(real), "new");
    struct stat status = {};
    ASSERT_EQ(::lstat(folder.File("chain").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(::lstat(folder.File("link").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(CAtomicFileWriter, FollowsALinkThatLeadsToNothingYetAndRefusesARing) {
    const CScratchFolder folder;
    ASSERT_EQ(::symlink("later", folder.File("link").c_str()), 0);
    ASSERT_EQ(::symlink("ring", folder.File("ring").c_str()), 0);
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("link")));
    EXPECT_TRUE(writer.Write("new", 3));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(folder.File("later")), "new");
    EXPECT_FALSE(writer.Open(folder.File("ring")));
}

TEST(CAtomicFileWriter, RefusesTargetsThatAreNoFileAndFoldersThatAreNotThere) {
    const CScratchFolder folder;
    ASSERT_EQ(::mkfifo(folder.File("pipe").c_str(), 0600), 0);
    CAtomicFileWriter writer;
    using namespace std::string_literals;
    for (const std::string& path :
         {folder.Path(), folder.File("pipe"), folder.File("none/file"), ""s, folder.File("a\0b"s)}) {
        EXPECT_FALSE(writer.Open(path)) << path;
        EXPECT_FALSE(writer.IsOpen());
        EXPECT_FALSE(writer.Write("x", 1));
        EXPECT_FALSE(writer.Commit());
    }
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST(CAtomicFileWriter, AFailedWriteFailsEveryLaterStepAndKeepsTheOldFile) {
    const CScratchFolder folder;
    const std::string path = folder.Put("file", "old");
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(path));
    const std::string block(100000, 'x');
    {
        const FileSizeLimit limit(150000);
        EXPECT_TRUE(writer.Write(block.data(), block.size()));
        EXPECT_FALSE(writer.Write(block.data(), block.size()));
    }
    EXPECT_FALSE(writer.Write("y", 1)); // though there is room again
    EXPECT_FALSE(writer.Seek(0));
    EXPECT_FALSE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST(CAtomicFileWriter, AFailureThatShowsOnlyAtTheEndKeepsTheOldFile) {
    const CScratchFolder folder;
    const std::string path = folder.Put("file", "old");
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(path));
    const FileSizeLimit limit(1);
    EXPECT_TRUE(writer.Write("new", 3)); // fits into the buffer
    EXPECT_FALSE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(path), "old");
    EXPECT_EQ(folder.CountFiles(), 1u);
}

TEST(CAtomicFileWriter, SeeksBackToMendWhatWasWritten) {
    const CScratchFolder folder;
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("file")));
    EXPECT_TRUE(writer.Write("....", 4));
    EXPECT_EQ(writer.Tell(), 4);
    EXPECT_EQ(writer.Length(), 4);
    const std::string body(100000, 'b');
    EXPECT_TRUE(writer.Write(body.data(), body.size()));
    EXPECT_EQ(writer.Tell(), 100004);
    EXPECT_TRUE(writer.Seek(0));
    EXPECT_EQ(writer.Length(), 100004);
    EXPECT_TRUE(writer.Write("head", 4));
    EXPECT_EQ(writer.Tell(), 4);
    EXPECT_EQ(writer.Length(), 100004);
    EXPECT_TRUE(writer.Seek(100006));
    EXPECT_EQ(writer.Length(), 100004);
    EXPECT_TRUE(writer.Write("e", 1));
    EXPECT_FALSE(writer.Seek(-1));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(folder.File("file")), "head" + body + std::string(2, '\0') + "e");
}

TEST(CAtomicFileWriter, CutsOffWhatLiesBehindThePosition) {
    const CScratchFolder folder;
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("file")));
    EXPECT_TRUE(writer.Write("0123456789", 10));
    EXPECT_TRUE(writer.Seek(4));
    EXPECT_TRUE(writer.Write("x", 1));
    EXPECT_TRUE(writer.CutOff());
    EXPECT_EQ(writer.Length(), 5);
    EXPECT_EQ(writer.Tell(), 5);
    EXPECT_TRUE(writer.Write("y", 1));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(CScratchFolder::Content(folder.File("file")), "0123xy");
    EXPECT_FALSE(writer.CutOff());
}

TEST(CAtomicFileWriter, ShortAndLongWritesArriveInOrder) {
    const CScratchFolder folder;
    std::string expected;
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("file")));
    for (std::uint32_t i = 0; i < 50000; ++i) {
        EXPECT_TRUE(writer.Write(&i, sizeof i));
        expected.append(reinterpret_cast<const char*>(&i), sizeof i);
        if (i % 10000 != 0) continue;
        const std::string block(65536 + i, static_cast<char>('a' + i / 10000));
        EXPECT_TRUE(writer.Write(block.data(), block.size()));
        expected += block;
    }
    EXPECT_TRUE(writer.Write(nullptr, 0));
    EXPECT_TRUE(writer.Commit());
    EXPECT_TRUE(CScratchFolder::Content(folder.File("file")) == expected);
}

TEST(CAtomicFileWriter, AnEmptyFileAndANameAsLongAsTheSystemAllowsWork) {
    const CScratchFolder folder;
    const std::string path = folder.File(std::string(255, 'n'));
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(path));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(::access(path.c_str(), F_OK), 0);
    EXPECT_EQ(CScratchFolder::Content(path), "");
}

TEST(CAtomicFileWriter, OpeningAnotherFileAbandonsTheFirst) {
    const CScratchFolder folder;
    CAtomicFileWriter writer;
    ASSERT_TRUE(writer.Open(folder.File("first")));
    EXPECT_TRUE(writer.Write("1", 1));
    ASSERT_TRUE(writer.Open(folder.File("second")));
    EXPECT_TRUE(writer.Write("2", 1));
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(folder.CountFiles(), 1u);
    EXPECT_EQ(CScratchFolder::Content(folder.File("second")), "2");
}

// Permissions do not hold for root; the test then gives them up for its own thread's file access.
TEST(CAtomicFileWriter, RespectsWriteProtectionOfFilesAndFolders) {
    const CScratchFolder folder;
    const std::string path = folder.Put("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0777), 0);
    const bool isRoot = ::geteuid() == 0;
    constexpr uid_t kNobody = 65534;
    ASSERT_TRUE(!isRoot || ::seteuid(kNobody) == 0);
    CAtomicFileWriter writer;
    const bool openedProtected = writer.Open(path);
    const bool openedNew = writer.Open(folder.File("new"));
    writer.Abandon();
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    EXPECT_FALSE(openedProtected);
    EXPECT_TRUE(openedNew);
    EXPECT_EQ(CScratchFolder::Content(path), "old");

    ASSERT_EQ(::chmod(folder.Path().c_str(), 0555), 0);
    ASSERT_TRUE(!isRoot || ::seteuid(kNobody) == 0);
    const bool openedInProtectedFolder = writer.Open(folder.File("new"));
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0700), 0);
    EXPECT_FALSE(openedInProtectedFolder);
}

} // namespace
} // namespace sonorelle
