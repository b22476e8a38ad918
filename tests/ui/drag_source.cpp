#include "ui/drag_source.h"

#include <X11/Xatom.h>

#include <algorithm>
#include <utility>

namespace sonorelle::testing {

void SendDragMessage(CHostDisplay& display, Window to, Window named, const char* type,
                     const DragWords& words) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = named;
    event.xclient.message_type = XInternAtom(display.Get(), type, False);
    event.xclient.format = 32;
    std::copy(words.begin(), words.end(), event.xclient.data.l);
    XSendEvent(display.Get(), to, False, NoEventMask, &event);
    display.Sync();
}

std::optional<unsigned long> NumberOf(CHostDisplay& display, Window window, const char* property) {
    Atom type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display.Get(), window, XInternAtom(display.Get(), property, False), 0, 1, False,
                       AnyPropertyType, &type, &format, &items, &rest, &data);
    std::optional<unsigned long> number;
    if (format == 32 && items == 1) number = *reinterpret_cast<unsigned long*>(data);
    if (data != nullptr) XFree(data);
    return number;
}

void SetNumberOf(CHostDisplay& display, Window window, const char* property, const char* type,
                 unsigned long value) {
    XChangeProperty(display.Get(), window, XInternAtom(display.Get(), property, False),
                    XInternAtom(display.Get(), type, False), 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&value), 1);
    display.Sync();
}

CDragSource::CDragSource(std::vector<std::string> offeredTypes, std::string draggedText,
                         std::function<void()> otherSide)
    : window(display.MakeWindow(0, 0, 10, 10, false)), types(std::move(offeredTypes)),
      text(std::move(draggedText)), work(std::move(otherSide)) {
    std::vector<Atom> list;
    for (const std::string& type : types) list.push_back(AtomOf(type));
    XChangeProperty(display.Get(), window, AtomOf("XdndTypeList"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(list.data()), static_cast<int>(list.size()));
    XSetSelectionOwner(display.Get(), AtomOf("XdndSelection"), window, CurrentTime);
    display.Sync();
}

void CDragSource::Send(const char* type, DragWords words) {
    words[0] = static_cast<long>(window);
    SendDragMessage(display, recipient, named, type, words);
}

void CDragSource::Enter(Window namedWindow, Window recipientWindow) {
    named = namedWindow;
    recipient = recipientWindow;
    DragWords words{};
    words[1] = 5L << 24 | (types.size() > 3 ? 1 : 0);
    for (std::size_t i = 0; i < std::min<std::size_t>(types.size(), 3); ++i)
        words[i + 2] = static_cast<long>(AtomOf(types[i]));
    Send("XdndEnter", words);
}

std::optional<bool> CDragSource::MoveTo(int x, int y) {
    Send("XdndPosition",
         {0, 0, static_cast<long>(x) << 16 | y, 0, static_cast<long>(AtomOf("XdndActionCopy"))});
    const std::optional<DragWords> answer = WaitForMessage("XdndStatus");
    if (!answer || static_cast<Window>((*answer)[0]) != named) return std::nullopt;
    return ((*answer)[1] & 1) != 0;
}

void CDragSource::Leave() { Send("XdndLeave", {}); }

std::optional<bool> CDragSource::Drop() {
    Send("XdndDrop", {});
    const std::optional<DragWords> answer = WaitForMessage("XdndFinished");
    if (!answer || static_cast<Window>((*answer)[0]) != named) return std::nullopt;
    return ((*answer)[1] & 1) != 0;
}

std::optional<DragWords> CDragSource::WaitForMessage(const char* type) {
    const Atom wanted = AtomOf(type);
    std::optional<DragWords> found;
    WorkUntil(
        [this] {
            work();
            ServeEvents();
        },
        [&] {
            for (const XClientMessageEvent& message : std::exchange(messages, {})) {
                if (message.message_type != wanted) continue;
                found.emplace();
                std::copy(message.data.l, message.data.l + found->size(), found->begin());
            }
            return found.has_value();
        });
    return found;
}

void CDragSource::ServeEvents() {
    while (XPending(display.Get()) > 0) {
        XEvent event;
        XNextEvent(display.Get(), &event);
        if (event.type == ClientMessage) messages.push_back(event.xclient);
        if (event.type == SelectionRequest) ServeRequest(event.xselectionrequest);
        if (event.type == PropertyNotify && event.xproperty.state == PropertyDelete && partsBegan)
            SendPart(event.xproperty.window, event.xproperty.atom, partType);
    }
}

void CDragSource::SendPart(Window to, Atom property, Atom type) {
    const std::size_t size = std::min(partSize, text.size() - sent);
    XChangeProperty(display.Get(), to, property, type, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.data() + sent), static_cast<int>(size));
    if (size == 0) partsBegan = false;
    sent += size;
    display.Sync();
}

void CDragSource::ServeRequest(const XSelectionRequestEvent& request) {
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.property = request.property;
    const bool known = std::any_of(types.begin(), types.end(),
                                   [&](const std::string& type) { return AtomOf(type) == request.target; });
    if (!known) {
        reply.xselection.property = None;
    } else if (partSize == 0) {
        XChangeProperty(display.Get(), request.requestor, request.property, request.target, 8,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size()));
    } else {
        XSelectInput(display.Get(), request.requestor, PropertyChangeMask);
        const long size = static_cast<long>(text.size());
        XChangeProperty(display.Get(), request.requestor, request.property, AtomOf("INCR"), 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(&size), 1);
        partType = request.target;
        partsBegan = true;
    }
    XSendEvent(display.Get(), request.requestor, False, NoEventMask, &reply);
    display.Sync();
}

} // namespace sonorelle::testing
