#include "ui/drag_source.h"
#include "ui/theme.h"
#include "ui/window_stage.h"

#include <X11/Xatom.h>

#include <string>

namespace sonorelle::testing {
namespace {

constexpr int kInside = 300; // of the editor, both ways
constexpr int kViewLine = 26 + 53;

class DropTarget : public WindowStageTest {
protected:
    void Open(Window where) {
        ASSERT_TRUE(window->OpenInside(where));
        ASSERT_TRUE(WorkUntilTrue([&] { return ProxyOf(where).has_value(); }));
    }
    std::optional<unsigned long> ProxyOf(Window top) { return NumberOf(*host, top, "XdndProxy"); }
    CDragSource Source(std::vector<std::string> types, std::string text) {
        return {std::move(types), std::move(text), [this] { Work(); }};
    }
    // The host takes every drop on its own part of `where`; notes what it is told.
    void ServeAsHost(Window where) {
        XEvent event;
        while (XCheckTypedWindowEvent(host->Get(), where, ClientMessage, &event) != 0) {
            char* const name = XGetAtomName(host->Get(), event.xclient.message_type);
            const std::string type = name;
            XFree(name);
            told.push_back(type);
            const auto teller = static_cast<Window>(event.xclient.data.l[0]);
            const DragWords yes{static_cast<long>(where), 1, 0, 0, 0};
            if (type == "XdndPosition") SendDragMessage(*host, teller, teller, "XdndStatus", yes);
            if (type == "XdndDrop") SendDragMessage(*host, teller, teller, "XdndFinished", yes);
        }
    }

    std::vector<std::string> told;
    const std::string address = "file:///tmp/My%20Song.wav\r\n";
    const std::string path = "/tmp/My Song.wav";
};

TEST_F(DropTarget, WindowOfTheHostNamesAProxyThatNamesItself) {
    Open(parent);
    const Window proxy = ProxyOf(parent).value_or(0);
    ASSERT_NE(proxy, 0U);
    EXPECT_EQ(ProxyOf(proxy), proxy);
    EXPECT_GE(NumberOf(*host, proxy, "XdndAware").value_or(0), 3U);
    EXPECT_GE(NumberOf(*host, host->OnlyChild(parent), "XdndAware").value_or(0), 3U);
    EXPECT_FALSE(NumberOf(*host, parent, "XdndAware").has_value()) << "the host itself takes nothing";
    window->CloseInside();
    EXPECT_FALSE(ProxyOf(parent).has_value());
}

// As programs do that look no deeper than at the windows of the window manager: some then name the proxy in
// their messages, others the window that it stands for. The third kind finds the editor itself.
TEST_F(DropTarget, FileIsTakenWhicheverWindowTheSourceTalksTo) {
    Open(parent);
    const Window proxy = ProxyOf(parent).value_or(0);
    const Window editor = host->OnlyChild(parent);
    for (const auto& [named, recipient] : {std::pair{proxy, proxy}, {parent, proxy}, {editor, editor}}) {
        owner.drops.clear();
        CDragSource source = Source({"text/uri-list"}, address);
        source.Enter(named, recipient);
        EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
        EXPECT_EQ(source.Drop(), true);
        Work();
        EXPECT_EQ(owner.drops, std::vector{path});
    }
}

// Sources draw a picture of what they drag under the pointer.
TEST_F(DropTarget, PictureThatIsDraggedAlongDoesNotHideTheEditor) {
    Open(parent);
    const Window picture = host->MakeWindow(kLeft + kInside - 10, kTop + kInside - 10, 20, 20);
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
    EXPECT_EQ(source.Drop(), true);
    Work();
    EXPECT_EQ(owner.drops, std::vector{path});
    host->Destroy(picture);
}

TEST_F(DropTarget, HostsWindowThatComesLaterIsFollowed) {
    const Window small = host->MakeWindow(0, 0, 1, 1, false);
    ASSERT_TRUE(window->OpenInside(small));
    WorkFor(0.05);
    XResizeWindow(host->Get(), small, kWindowWidth, kWindowHeight);
    XReparentWindow(host->Get(), small, parent, 0, 0);
    XMapWindow(host->Get(), small);
    host->Sync();
    EXPECT_TRUE(WorkUntilTrue([&] { return ProxyOf(parent).has_value(); }));
    EXPECT_FALSE(ProxyOf(small).has_value());
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
    window->CloseInside();
    host->Destroy(small);
}

TEST_F(DropTarget, DocumentInManyPartsArrivesWhole) {
    Open(parent);
    std::string document = "<quillon-xml>";
    for (int i = 0; document.size() < 1'000'000; ++i) document += std::to_string(i) + ' ';
    CDragSource source = Source({"image/png", "text/html", "text/plain", "STRING"}, document);
    source.SendInParts(65536);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
    EXPECT_EQ(source.Drop(), true);
    Work();
    ASSERT_EQ(owner.drops.size(), 1U);
    EXPECT_TRUE(owner.drops.front() == document) << owner.drops.front().size();
}

TEST_F(DropTarget, FilesAreWantedMoreThanTheirNamesAsText) {
    Open(parent);
    CDragSource source = Source({"text/plain", "UTF8_STRING", "text/uri-list"}, address);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    source.MoveTo(kLeft + kInside, kTop + kInside);
    source.Drop();
    Work();
    EXPECT_EQ(owner.drops, std::vector{path}) << "the address is decoded";
}

TEST_F(DropTarget, LineAroundTheViewTellsThatADropWouldBeTaken) {
    Open(parent);
    ASSERT_TRUE(WaitForPicture());
    const auto line = [this] {
        WorkFor(0.05);
        return host->Pixel(parent, kInside, kViewLine);
    };
    constexpr unsigned long kOrange = 0xff5f00;
    const unsigned long atRest = line();
    EXPECT_NE(atRest, kOrange);
    for (const bool drop : {false, true}) {
        CDragSource source = Source({"text/uri-list"}, address);
        source.Enter(parent, ProxyOf(parent).value_or(0));
        source.MoveTo(kLeft + kInside, kTop + kInside);
        EXPECT_EQ(line(), kOrange);
        if (drop) {
            source.Drop();
        } else {
            source.Leave();
        }
        EXPECT_EQ(line(), atRest);
    }
}

TEST_F(DropTarget, PictureIsRefused) {
    Open(parent);
    CDragSource source = Source({"image/png"}, "?");
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), false);
    EXPECT_EQ(source.Drop(), false);
    Work();
    EXPECT_TRUE(owner.drops.empty());
}

TEST_F(DropTarget, WhileInputIsOffNothingIsTaken) {
    Open(parent);
    toolkit.ActivateMainWindow(false);
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), false);
    toolkit.ActivateMainWindow(true);
    EXPECT_EQ(source.MoveTo(kLeft + kInside + 1, kTop + kInside), true);
    source.Leave();
    Work();
    EXPECT_TRUE(owner.drops.empty());
}

TEST_F(DropTarget, BesideTheEditorNothingIsTaken) {
    const Window wide = host->MakeWindow(0, 0, 1270, 700);
    Open(wide);
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(wide, ProxyOf(wide).value_or(0));
    EXPECT_EQ(source.MoveTo(1100, 300), false);
    EXPECT_EQ(source.MoveTo(kInside, kInside), true);
    EXPECT_EQ(source.MoveTo(1100, 300), false);
    EXPECT_EQ(source.Drop(), false);
    window->CloseInside();
    host->Destroy(wide);
    EXPECT_TRUE(owner.drops.empty());
}

TEST_F(DropTarget, HostThatTakesDropsItselfGoesOnToDoSo) {
    const Window wide = host->MakeWindow(0, 0, 1270, 700);
    SetNumberOf(*host, wide, "XdndAware", "ATOM", 5);
    Open(wide);
    const Window proxy = ProxyOf(wide).value_or(0);
    CDragSource source({"text/uri-list", "a/a", "a/b", "a/c"}, address, [&] {
        Work();
        ServeAsHost(wide);
    });
    source.Enter(wide, proxy);
    EXPECT_EQ(source.MoveTo(kInside, kInside), true);
    EXPECT_TRUE(told.empty()) << "over the editor it hears of nothing";
    EXPECT_EQ(source.MoveTo(1100, 300), true);
    EXPECT_EQ(told, (std::vector<std::string>{"XdndEnter", "XdndPosition"}));
    EXPECT_EQ(NumberOf(*host, proxy, "XdndTypeList"), XInternAtom(host->Get(), "text/uri-list", False));
    EXPECT_EQ(source.MoveTo(kInside, kInside), true);
    ServeAsHost(wide);
    EXPECT_EQ(told.back(), "XdndLeave");
    EXPECT_EQ(source.MoveTo(1100, 300), true);
    EXPECT_EQ(source.Drop(), true);
    EXPECT_EQ(told.back(), "XdndDrop");
    EXPECT_TRUE(owner.drops.empty());
    window->CloseInside();
    host->Destroy(wide);
}

TEST_F(DropTarget, ProxyOfAnotherPlugInIsLeftAlone) {
    SetNumberOf(*host, parent, "XdndProxy", "WINDOW", 0x123456);
    ASSERT_TRUE(window->OpenInside(parent));
    ASSERT_TRUE(WaitForPicture());
    EXPECT_EQ(ProxyOf(parent), 0x123456U);
    window->CloseInside();
    EXPECT_EQ(ProxyOf(parent), 0x123456U);
}

TEST_F(DropTarget, TwoEditorsInOneWindowOfTheHostShareTheProxy) {
    const Window wide = host->MakeWindow(0, 0, 1270, 890);
    NotingOwner secondOwner;
    CkvoDNDWindow second(secondOwner);
    const Window pane =
        XCreateSimpleWindow(host->Get(), wide, 200, 250, kWindowWidth, kWindowHeight, 0, 0, 0);
    XMapWindow(host->Get(), pane);
    Open(wide);
    ASSERT_TRUE(second.OpenInside(pane));
    XRaiseWindow(host->Get(), pane);
    host->Sync();
    const Window proxy = ProxyOf(wide).value_or(0);
    const auto drop = [&](int x, int y) {
        CDragSource source = Source({"text/uri-list"}, address);
        source.Enter(wide, proxy);
        EXPECT_EQ(source.MoveTo(x, y), true);
        EXPECT_EQ(source.Drop(), true);
        Work();
        second.RunActions();
    };
    drop(100, 100);
    EXPECT_EQ(owner.drops.size(), 1U);
    EXPECT_EQ(secondOwner.drops.size(), 0U);
    drop(900, 700);
    EXPECT_EQ(secondOwner.drops.size(), 1U);
    drop(500, 400); // the upper one of the two
    EXPECT_EQ(secondOwner.drops.size(), 2U);
    window->CloseInside();
    EXPECT_EQ(ProxyOf(wide), proxy);
    drop(900, 700);
    EXPECT_EQ(secondOwner.drops.size(), 3U);
    second.CloseInside();
    EXPECT_FALSE(ProxyOf(wide).has_value());
    host->Destroy(wide);
}

TEST_F(DropTarget, WindowThatIsClosedWithinADragTakesNothing) {
    Open(parent);
    const Window proxy = ProxyOf(parent).value_or(0);
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(parent, proxy);
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
    window->CloseInside();
    ASSERT_TRUE(window->OpenInside(parent));
    EXPECT_EQ(source.Drop(), false);
    Work();
    EXPECT_TRUE(owner.drops.empty());
}

TEST_F(DropTarget, SourceThatGivesNothingIsToldSo) {
    Open(parent);
    CDragSource source = Source({"text/uri-list"}, address);
    source.Enter(parent, ProxyOf(parent).value_or(0));
    EXPECT_EQ(source.MoveTo(kLeft + kInside, kTop + kInside), true);
    XSetSelectionOwner(host->Get(), XInternAtom(host->Get(), "XdndSelection", False), None, CurrentTime);
    host->Sync();
    EXPECT_EQ(source.Drop(), false);
    EXPECT_TRUE(owner.drops.empty());
    WorkFor(0.05);
    EXPECT_EQ(host->Pixel(parent, kInside, kViewLine), RgbFromColour(kFrameColour));
}

} // namespace
} // namespace sonorelle::testing
