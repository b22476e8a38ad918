#include "ui/content_layout.h"
#include "ui/progress_window.h"
#include "ui/toolbar_layout.h"

#include <gtest/gtest.h>

#include <iterator>

namespace sonorelle {
namespace {

Placement PlaceOfButton(ToolbarButton button) { return PlaceOf(kToolbar[static_cast<std::size_t>(button)]); }

bool Overlap(Placement a, Placement b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

TEST(ToolbarLayout, EntriesStandInTheOrderOfTheirButtons) {
    for (std::size_t i = 0; i < kToolbar.size(); ++i)
        EXPECT_EQ(static_cast<std::size_t>(kToolbar[i].button), i);
}

TEST(ToolbarLayout, ButtonsLieWhereTheyBelong) {
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kLoad), (Placement{11, 5, 40, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kSave), (Placement{56, 5, 40, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kUndo), (Placement{120, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kRedo), (Placement{160, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kCutMode), (Placement{220, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kViewAll), (Placement{280, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kFitPlayRegion), (Placement{320, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kFitVertically), (Placement{360, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kFitHorizontally), (Placement{400, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kFollowCursor), (Placement{460, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kSingleVoice), (Placement{520, 5, 35, 15}));
    EXPECT_EQ(PlaceOfButton(ToolbarButton::kLogo), (Placement{858, 7, 100, 16}));
}

TEST(ToolbarLayout, ButtonsLieInTheirRowAndApart) {
    for (const ToolbarEntry& a : kToolbar) {
        const Placement place = PlaceOf(a);
        EXPECT_GE(place.x, 0);
        EXPECT_LE(place.x + place.width, kWindowWidth);
        EXPECT_LE(place.y + place.height, kContent.y);
        for (const ToolbarEntry& b : kToolbar) {
            if (a.button != b.button) {
                EXPECT_FALSE(Overlap(place, PlaceOf(b)));
            }
        }
    }
}

TEST(ToolbarLayout, ContentFillsTheRestOfTheWindow) {
    EXPECT_EQ(kContent, (Placement{0, 26, 959, 573}));
    EXPECT_EQ(kMainRow, (Placement{1, 0, 957, 24}));
    EXPECT_EQ(kEditRow, (Placement{120, 1, 799, 22}));
}

TEST(ToolbarLayout, WithoutARecordingOnlyLoadAndTheLogoAnswer) {
    const ToolbarLook empty;
    for (const ToolbarEntry& entry : kToolbar) {
        const bool answers = entry.button == ToolbarButton::kLoad || entry.button == ToolbarButton::kLogo;
        EXPECT_EQ(IsActive(empty, entry.button), answers) << static_cast<int>(entry.button);
    }
}

TEST(ToolbarLayout, EditGroupAnswersAsAWhole) {
    ToolbarLook look;
    look.editActive = true;
    EXPECT_TRUE(IsActive(look, ToolbarButton::kUndo));
    EXPECT_TRUE(IsActive(look, ToolbarButton::kFollowCursor));
    EXPECT_FALSE(IsActive(look, ToolbarButton::kSave));
    EXPECT_FALSE(IsActive(look, ToolbarButton::kSingleVoice));
    look.singleVoiceActive = true;
    look.saveActive = true;
    EXPECT_TRUE(IsActive(look, ToolbarButton::kSave));
    EXPECT_TRUE(IsActive(look, ToolbarButton::kSingleVoice));
}

TEST(ToolbarLayout, OnlyTogglesAreEverOn) {
    ToolbarLook look;
    look.cutMode = look.followCursor = look.singleVoice = true;
    for (const ToolbarEntry& entry : kToolbar) EXPECT_EQ(IsOn(look, entry.button), entry.toggle);
}

TEST(ToolbarLayout, EveryButtonButTheLogoHasATip) {
    const char* tips[] = {"load monophonic audio file",
                          "save audio & midi",
                          "undo",
                          "redo",
                          "enable cut mode",
                          "view all",
                          "scale to current play region",
                          "scale vertically",
                          "scale horizontally",
                          "follow cursor",
                          "enable single voice output"};
    for (std::size_t i = 0; i < std::size(tips); ++i) EXPECT_STREQ(kToolbar[i].tip, tips[i]);
    EXPECT_EQ(kToolbar.back().tip, nullptr);
}

TEST(ToolbarLayout, OnlyLoadAndSaveHaveWords) {
    for (const ToolbarEntry& entry : kToolbar) {
        if (entry.button == ToolbarButton::kLoad) {
            EXPECT_STREQ(entry.label, "Load");
        } else if (entry.button == ToolbarButton::kSave) {
            EXPECT_STREQ(entry.label, "Save");
        } else {
            EXPECT_EQ(entry.label, nullptr);
        }
    }
}

TEST(ContentLayout, FramesLieWhereTheyBelong) {
    const ContentLayout layout = LayOutContent(kContent.width, kContent.height);
    EXPECT_EQ(layout.synchronization.frame, (Placement{10, 0, 844, 50}));
    EXPECT_EQ(layout.synchronization.panel, (Placement{15, 12, 839, 32}));
    EXPECT_EQ(layout.tuning.frame, (Placement{854, 0, 103, 50}));
    EXPECT_EQ(layout.tuning.panel, (Placement{859, 12, 98, 32}));
    EXPECT_EQ(layout.view.frame, (Placement{256, 50, 694, 273}));
    EXPECT_EQ(layout.view.panel, (Placement{264, 56, 690, 261}));
    EXPECT_EQ(layout.voices.frame, (Placement{260, 323, 699, 250}));
    EXPECT_EQ(layout.melody.frame, (Placement{0, 60, 250, 90}));
    EXPECT_EQ(layout.melody.panel, (Placement{10, 70, 230, 70}));
    EXPECT_EQ(layout.choir.frame, (Placement{0, 150, 250, 215}));
    EXPECT_EQ(layout.snapshots.frame, (Placement{0, 365, 250, 208}));
    EXPECT_EQ(layout.voices.panel, layout.voices.frame) << "fills it";
}

TEST(ContentLayout, FramesFillTheContentWithoutOverlap) {
    const ContentLayout layout = LayOutContent(kContent.width, kContent.height);
    // The view reaches out of its frame.
    const Placement frames[] = {layout.synchronization.frame, layout.tuning.frame, layout.view.panel,
                                layout.voices.frame,          layout.melody.frame, layout.choir.frame,
                                layout.snapshots.frame};
    for (const Placement& a : frames) {
        EXPECT_LE(a.x + a.width, kContent.width);
        EXPECT_LE(a.y + a.height, kContent.height);
        for (const Placement& b : frames) {
            if (&a != &b) {
                EXPECT_FALSE(Overlap(a, b));
            }
        }
    }
}

TEST(ProgressPlaces, SpinnerBarAndButtonLieWithinTheWindowAndApart) {
    EXPECT_EQ(kProgressPlace, (Placement{328, 279, 303, 40})) << "in the middle of the main window";
    EXPECT_EQ(kSpinnerPlace, (Placement{8, 10, 15, 20}));
    EXPECT_EQ(kBarPlace, (Placement{25, 10, 255, 20}));
    EXPECT_EQ(kCancelPlace, (Placement{280, 12, 17, 17}));
    EXPECT_STREQ(kCancelTip, "Cancel analysis");
    EXPECT_FALSE(Overlap(kSpinnerPlace, kBarPlace));
    EXPECT_FALSE(Overlap(kBarPlace, kCancelPlace));
    EXPECT_LE(kCancelPlace.x + kCancelPlace.width, kProgressPlace.width);
}

} // namespace
} // namespace sonorelle
