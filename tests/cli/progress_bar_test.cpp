#include "cli/progress_bar.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace sonorelle {
namespace {

// A stream that writes into memory.
class MemoryStream {
public:
    MemoryStream() : stream_(open_memstream(&data_, &size_)) {}
    ~MemoryStream() {
        std::fclose(stream_);
        std::free(data_);
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;
    std::FILE* Get() const { return stream_; }
    std::string Text() const {
        std::fflush(stream_);
        return {data_, size_};
    }

private:
    char* data_ = nullptr;
    std::size_t size_ = 0;
    std::FILE* stream_;
};

TEST(ProgressBar, DrawsPercentAndShare) {
    MemoryStream stream;
    ProgressBar bar(stream.Get(), 80, "Analysing");
    bar.Show(0);
    EXPECT_EQ(stream.Text(), "\rAnalysing [----------------------------------------]   0%");
    bar.Show(50);
    EXPECT_TRUE(stream.Text().ends_with("\rAnalysing [####################--------------------]  50%"));
    bar.Show(100);
    EXPECT_TRUE(stream.Text().ends_with("\rAnalysing [########################################] 100%"));
}

TEST(ProgressBar, WritesOnlyWhenTheValueChanges) {
    MemoryStream stream;
    ProgressBar bar(stream.Get(), 80, "x");
    bar.Show(7);
    const std::string once = stream.Text();
    bar.Show(7);
    EXPECT_EQ(stream.Text(), once);
    bar.Show(8);
    EXPECT_NE(stream.Text(), once);
}

TEST(ProgressBar, IsSilentWithoutATerminal) {
    MemoryStream stream;
    {
        ProgressBar bar(stream.Get(), 0, "Analysing");
        for (int percent = 0; percent <= 100; ++percent) bar.Show(percent);
    }
    EXPECT_EQ(stream.Text(), "");
}

TEST(ProgressBar, LeavesACleanLine) {
    MemoryStream stream;
    std::string line;
    {
        ProgressBar bar(stream.Get(), 80, "Analysing");
        bar.Show(42);
        line = stream.Text().substr(1);
    }
    EXPECT_EQ(stream.Text(), "\r" + line + "\r" + std::string(line.size(), ' ') + "\r");
}

TEST(ProgressBar, NeverReachesTheLastColumn) {
    for (int columns = 1; columns <= 120; ++columns) {
        MemoryStream stream;
        ProgressBar bar(stream.Get(), columns, "Analysing 12 of 345");
        bar.Show(100);
        EXPECT_LT(stream.Text().size() - 1, static_cast<std::size_t>(columns)) << columns;
    }
}

TEST(ProgressBar, HoldsStrayValues) {
    MemoryStream stream;
    ProgressBar bar(stream.Get(), 80, "x");
    bar.Show(-5);
    EXPECT_TRUE(stream.Text().ends_with("  0%"));
    bar.Show(1000);
    EXPECT_TRUE(stream.Text().ends_with("100%"));
}

} // namespace
} // namespace sonorelle
