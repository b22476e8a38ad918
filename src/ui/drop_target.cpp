#include "ui/drop_target.h"

#include "ui/native_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>
#include <X11/Xatom.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace sonorelle {

namespace {

constexpr long kTargetVersion = 5;
constexpr std::size_t kLongestDrop = 1U << 26U; // bytes; what is longer is no path, and no document of ours

using DragWords = std::array<long, 5>; // of a message; the first is the window that it comes from

class DropTarget {
public:
    DropTarget()
        : aware(AtomOf("XdndAware")), proxy(AtomOf("XdndProxy")), typeList(AtomOf("XdndTypeList")),
          selection(AtomOf("XdndSelection")), copy(AtomOf("XdndActionCopy")), enter(AtomOf("XdndEnter")),
          position(AtomOf("XdndPosition")), status(AtomOf("XdndStatus")), leave(AtomOf("XdndLeave")),
          drop(AtomOf("XdndDrop")), finished(AtomOf("XdndFinished")), incremental(AtomOf("INCR")),
          content(AtomOf("SONORELLE_DROP")) {
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        attributes.event_mask = PropertyChangeMask;
        helper = XCreateWindow(fl_display, RootWindow(fl_display, fl_screen), -10, -10, 1, 1, 0, 0, InputOnly,
                               CopyFromParent, CWOverrideRedirect | CWEventMask, &attributes);
        SetNumber(helper, aware, XA_ATOM, kTargetVersion);
        SetNumber(helper, proxy, XA_WINDOW, static_cast<long>(helper));
    }

    void Add(Fl_Window& window) {
        Remove(window);
        SetNumber(fl_xid(&window), aware, XA_ATOM, kTargetVersion);
        editors.push_back({&window, 0});
        Follow(window);
    }

    void Follow(Fl_Window& window) {
        const auto editor = std::find_if(editors.begin(), editors.end(),
                                         [&](const Editor& e) { return e.window == &window; });
        if (editor == editors.end()) return;
        const Window top = TopWindowOf(fl_xid(&window));
        if (top == editor->top) return;
        const Window before = editor->top;
        editor->top = 0;
        LetGo(before);
        if (top == 0 || top == fl_xid(&window)) return;
        const auto others = ReadNumbers(top, proxy, XA_WINDOW);
        if (!others.empty() && others.front() != helper) return; // another plug-in's
        editor->top = top;
        SetNumber(top, proxy, XA_WINDOW, static_cast<long>(helper));
    }

    void Remove(Fl_Window& window) {
        if (over == &window) over = nullptr;
        if (receiver == &window) receiver = nullptr;
        const auto editor = std::find_if(editors.begin(), editors.end(),
                                         [&](const Editor& e) { return e.window == &window; });
        if (editor == editors.end()) return;
        const Window top = editor->top;
        editors.erase(editor);
        LetGo(top);
    }

    // True: the toolkit shall not see the event.
    bool Take(const XEvent& event) {
        switch (event.type) {
        case ClientMessage:
            return TakeMessage(event.xclient);
        case SelectionNotify:
            if (event.xselection.requestor != helper) return false;
            TakeContent(event.xselection.property != None);
            return true;
        case PropertyNotify:
            if (event.xproperty.window != helper) return false;
            if (inPieces && event.xproperty.atom == content && event.xproperty.state == PropertyNewValue)
                TakeContent(true);
            return true;
        default:
            return false;
        }
    }

private:
    struct Editor {
        Fl_Window* window;
        Window top; // names `helper` as its proxy; 0: none does
    };

    static Atom AtomOf(const char* name) { return XInternAtom(fl_display, name, False); }

    static void SetNumber(Window window, Atom property, Atom type, long value) {
        XChangeProperty(fl_display, window, property, type, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&value), 1);
    }

    static void Send(Window to, Window named, Atom type, const DragWords& words) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = named;
        event.xclient.message_type = type;
        event.xclient.format = 32;
        std::copy(words.begin(), words.end(), event.xclient.data.l);
        XSendEvent(fl_display, to, False, NoEventMask, &event);
        XFlush(fl_display);
    }

    bool IsTop(Window window) const {
        return window != 0 &&
               std::any_of(editors.begin(), editors.end(), [&](const Editor& e) { return e.top == window; });
    }

    Fl_Window* EditorOf(Window window) const {
        const auto found = std::find_if(editors.begin(), editors.end(),
                                        [&](const Editor& e) { return fl_xid(e.window) == window; });
        return found != editors.end() ? found->window : nullptr;
    }

    void LetGo(Window top) {
        if (top == 0 || IsTop(top)) return;
        if (relayedTo == top) relayedTo = 0;
        const auto named = ReadNumbers(top, proxy, XA_WINDOW);
        if (!named.empty() && named.front() == helper) XDeleteProperty(fl_display, top, proxy);
    }

    // --- What a drag tells ---

    bool TakeMessage(const XClientMessageEvent& message) {
        const bool ours =
            message.window == helper || IsTop(message.window) || EditorOf(message.window) != nullptr;
        if (!ours) return false;
        DragWords words;
        std::copy(message.data.l, message.data.l + words.size(), words.begin());
        if (message.message_type == enter) {
            Enter(message.window, words);
        } else if (message.message_type == position) {
            if (IsOfThisDrag(words)) Move(words);
        } else if (message.message_type == leave) {
            if (IsOfThisDrag(words)) Leave();
        } else if (message.message_type == drop) {
            if (IsOfThisDrag(words)) Drop(words);
        } else if (message.window == helper &&
                   (message.message_type == status || message.message_type == finished)) {
            RelayAnswer(message.message_type, words);
        } else {
            return false;
        }
        return true;
    }

    bool IsOfThisDrag(const DragWords& words) const {
        return source != 0 && static_cast<Window>(words[0]) == source;
    }

    void Enter(Window window, const DragWords& words) {
        Leave();
        source = static_cast<Window>(words[0]);
        addressed = window;
        entered = words;
        std::vector<Atom> types(words.begin() + 2, words.end());
        if ((words[1] & 1) != 0) types = ReadNumbers(source, typeList, XA_ATOM);
        wanted = BestOf(types);
    }

    // Files are best; of a text any form will do.
    static Atom BestOf(const std::vector<Atom>& types) {
        for (const char* name :
             {"text/uri-list", "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"})
            if (std::find(types.begin(), types.end(), AtomOf(name)) != types.end()) return AtomOf(name);
        return 0;
    }

    struct Place {
        Fl_Window* editor = nullptr;
        Window top = 0; // around the editor, or at least at this point
    };

    // The search begins at the window that the source means: a picture that it draws along with the pointer
    // may lie above all others.
    Place At(int x, int y) const {
        const Window root = RootWindow(fl_display, fl_screen);
        Place place;
        Window window = addressed == helper ? root : addressed;
        while (window != 0 && place.editor == nullptr) {
            if (IsTop(window)) place.top = window;
            int left = 0;
            int top = 0;
            Window child = 0;
            if (XTranslateCoordinates(fl_display, root, window, x, y, &left, &top, &child) == 0) break;
            Fl_Window* const editor = EditorOf(window);
            if (editor != nullptr && left >= 0 && top >= 0 && left < editor->w() && top < editor->h())
                place.editor = editor;
            window = child;
        }
        return place;
    }

    void Move(const DragWords& words) {
        const int x = static_cast<int>(words[2] >> 16 & 0xffff);
        const int y = static_cast<int>(words[2] & 0xffff);
        const Place place = At(x, y);
        if (over != nullptr && place.editor != over) over->handle(FL_DND_LEAVE);
        over = place.editor;
        RelayMove(over == nullptr ? place.top : 0, words);
        if (relayedTo != 0) return; // the host answers
        const bool accepted = over != nullptr && wanted != 0 && over->handle(FL_DND_DRAG) != 0;
        constexpr long kEachMove = 2; // not only those that leave a rectangle
        Answer(status,
               {0, accepted ? 1 | kEachMove : kEachMove, 0, 0, accepted ? static_cast<long>(copy) : 0});
    }

    void Drop(const DragWords& words) {
        if (relayedTo != 0) {
            Relay(drop, words);
            return; // the host says when it has finished
        }
        receiver = std::exchange(over, nullptr);
        if (receiver == nullptr || wanted == 0 || receiver->handle(FL_DND_RELEASE) == 0) {
            Finish(false);
            return;
        }
        text.clear();
        inPieces = false;
        XConvertSelection(fl_display, selection, wanted, content, helper, static_cast<Time>(words[2]));
        XFlush(fl_display);
    }

    void Leave() {
        if (over != nullptr) over->handle(FL_DND_LEAVE);
        over = nullptr;
        RelayMove(0, {});
        source = 0;
    }

    void Answer(Atom type, DragWords words) const {
        words[0] = static_cast<long>(addressed);
        Send(source, source, type, words);
    }

    void Finish(bool taken) {
        if (receiver != nullptr && !taken) receiver->handle(FL_DND_LEAVE);
        if (source != 0) Answer(finished, {0, taken ? 1 : 0, taken ? static_cast<long>(copy) : 0, 0, 0});
        source = 0;
        receiver = nullptr;
        inPieces = false;
        text.clear();
    }

    // --- What belongs to the host: this side plays the source for it ---

    void Relay(Atom type, DragWords words) const {
        words[0] = static_cast<long>(helper);
        Send(relayedTo, relayedTo, type, words);
    }

    // 0: it is over an editor, or has gone.
    void RelayMove(Window top, const DragWords& words) {
        const bool takes = top != 0 && !ReadNumbers(top, aware, XA_ATOM).empty();
        const Window next = takes ? top : 0;
        if (relayedTo != 0 && relayedTo != next) Relay(leave, {});
        const bool begins = next != 0 && relayedTo != next;
        relayedTo = next;
        if (begins) {
            CopyTypeList();
            Relay(enter, entered);
        }
        if (relayedTo != 0) Relay(position, words);
    }

    void CopyTypeList() const {
        const std::vector<Atom> types = ReadNumbers(source, typeList, XA_ATOM);
        XChangeProperty(fl_display, helper, typeList, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(types.data()), static_cast<int>(types.size()));
    }

    void RelayAnswer(Atom type, const DragWords& words) {
        if (source == 0 || relayedTo == 0 || static_cast<Window>(words[0]) != relayedTo) return;
        Answer(type, words);
        if (type != finished) return;
        relayedTo = 0;
        source = 0;
    }

    // --- What was dropped ---

    void TakeContent(bool there) {
        if (receiver == nullptr || !there) {
            Finish(false);
            return;
        }
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(fl_display, helper, content, 0, kLongestDrop / 4, True, AnyPropertyType, &type,
                           &format, &items, &rest, &data);
        const bool begins = type == incremental;
        const bool readable = format == 8 && rest == 0 && text.size() + items <= kLongestDrop;
        if (readable) text.append(reinterpret_cast<const char*>(data), items);
        if (data != nullptr) XFree(data);
        if (begins) {
            inPieces = true; // the next comes now that the property is gone
        } else if (!readable) {
            Finish(false);
        } else if (!inPieces || items == 0) {
            Deliver();
        }
    }

    void Deliver() {
        char* const before = std::exchange(Fl::e_text, text.data());
        const int lengthBefore = std::exchange(Fl::e_length, static_cast<int>(text.size()));
        const bool taken = receiver->handle(FL_PASTE) != 0;
        Fl::e_text = before;
        Fl::e_length = lengthBefore;
        Finish(taken);
    }

    const Atom aware;
    const Atom proxy;
    const Atom typeList;
    const Atom selection;
    const Atom copy;
    const Atom enter;
    const Atom position;
    const Atom status;
    const Atom leave;
    const Atom drop;
    const Atom finished;
    const Atom incremental;
    const Atom content; // the property of `helper` that takes what is dropped
    Window helper = 0;  // never seen
    std::vector<Editor> editors;

    // Of the drag that goes on:
    Window source = 0;
    Window addressed = 0; // as the source calls its target
    DragWords entered{};
    Atom wanted = 0;
    Fl_Window* over = nullptr;
    Window relayedTo = 0; // the host's window that it has come to

    // Of the drop:
    Fl_Window* receiver = nullptr;
    bool inPieces = false;
    std::string text;
};

// One for the process, as the toolkit's own state; under the same lock.
std::unique_ptr<DropTarget> dropTarget;

int OnDragEvent(void* event, void*) { return dropTarget->Take(*static_cast<const XEvent*>(event)) ? 1 : 0; }

} // namespace

void WatchDrops() {
    dropTarget = std::make_unique<DropTarget>();
    Fl::add_system_handler(OnDragEvent, nullptr);
}

void TakeDrops(Fl_Window& window) { dropTarget->Add(window); }
void FollowHostWindow(Fl_Window& window) { dropTarget->Follow(window); }
void TakeNoDrops(Fl_Window& window) { dropTarget->Remove(window); }

} // namespace sonorelle
