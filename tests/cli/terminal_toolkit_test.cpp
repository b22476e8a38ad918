#include "cli/terminal_toolkit.h"

#include "cli/console.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace sonorelle {
namespace {

class TerminalToolkitTest : public ::testing::Test {
protected:
    ~TerminalToolkitTest() override {
        std::fclose(stream);
        std::free(memory);
    }
    std::string Shown() {
        std::fflush(stream);
        return {memory, size};
    }

    char* memory = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&memory, &size);
    std::atomic<bool> cancelled{false};
    const Console console{stream, stream, &cancelled};
    TerminalToolkit toolkit{console};
};

TEST_F(TerminalToolkitTest, MessagesAreLinesWithTheirSubject) {
    toolkit.ShowMessage("Error!", "Could not load audio file!");
    toolkit.SetSubject("a\nb.wav");
    toolkit.ShowMessage("Warning!", "Loud!");
    EXPECT_EQ(Shown(), "sonorelle: Could not load audio file!\nsonorelle: a\\nb.wav: Loud!\n");
    EXPECT_EQ(toolkit.TakeMessageCount(), 2);
    EXPECT_EQ(toolkit.TakeMessageCount(), 0);
}

TEST_F(TerminalToolkitTest, AnswersOneQuestionWithThePathGivenBefore) {
    EXPECT_EQ(toolkit.ChooseFileToOpen("Please Locate Audio File: a.wav", ""), "");
    toolkit.AnswerOpen("new/a.wav");
    EXPECT_EQ(toolkit.ChooseFileToOpen("Please Locate Audio File: a.wav", ""), "new/a.wav");
    EXPECT_EQ(toolkit.ChooseFileToOpen("Please Locate Audio File: a.wav", ""), "");
    EXPECT_EQ(toolkit.ChooseFileToSave("Save as Audio File", "", "Out_a.wav"), "");
}

TEST_F(TerminalToolkitTest, IsCancelledBySignals) {
    toolkit.OpenProgress();
    EXPECT_FALSE(toolkit.IsProgressCancelled());
    cancelled = true;
    EXPECT_TRUE(toolkit.IsProgressCancelled());
    toolkit.CloseProgress();
}

TEST_F(TerminalToolkitTest, ShowsNoProgressWhereThereIsNoTerminal) {
    toolkit.SetProgressLabel("Analysing");
    toolkit.OpenProgress();
    toolkit.ShowProgress(50, 45);
    toolkit.CloseProgress();
    toolkit.ShowProgress(60, 0); // too late, and harmless
    EXPECT_EQ(Shown(), "");
}

TEST_F(TerminalToolkitTest, BelongsToTheThreadThatMadeIt) {
    EXPECT_TRUE(toolkit.IsInterfaceThread());
    bool elsewhere = true;
    std::thread([&] { elsewhere = toolkit.IsInterfaceThread(); }).join();
    EXPECT_FALSE(elsewhere);
}

} // namespace
} // namespace sonorelle
