// A program that drags something over a window: the source's side of the X drag-and-drop protocol, as a file
// manager has it, on a connection of its own.

#pragma once

#include "ui/virtual_display.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sonorelle::testing {

using DragWords = std::array<long, 5>; // of a message; the first is the window that it comes from

void SendDragMessage(CHostDisplay& display, Window to, Window named, const char* type,
                     const DragWords& words);
// The number of a property, if there is one.
std::optional<unsigned long> NumberOf(CHostDisplay& display, Window window, const char* property);
void SetNumberOf(CHostDisplay& display, Window window, const char* property, const char* type,
                 unsigned long value);

class CDragSource {
public:
    // `work` runs what answers, again and again while this side waits. Types beyond three go into a list.
    CDragSource(std::vector<std::string> offeredTypes, std::string draggedText,
                std::function<void()> otherSide);

    // In parts of this many bytes, each when the one before it was taken; 0: as a whole.
    void SendInParts(std::size_t bytes) { partSize = bytes; }
    // Messages name a window, and go to it, or to another one that stands for it.
    void Enter(Window namedWindow, Window recipientWindow);
    // The answer: whether it would be taken here; none without one.
    std::optional<bool> MoveTo(int x, int y);
    void Leave();
    // Whether it was taken.
    std::optional<bool> Drop();

private:
    void Send(const char* type, DragWords words);
    void ServeEvents();
    void ServeRequest(const XSelectionRequestEvent& request);
    void SendPart(Window window, Atom property, Atom type);
    std::optional<DragWords> WaitForMessage(const char* type);
    Atom AtomOf(const std::string& name) { return XInternAtom(display.Get(), name.c_str(), False); }

    CHostDisplay display;
    const Window window;
    const std::vector<std::string> types;
    const std::string text;
    const std::function<void()> work;
    std::size_t partSize = 0;
    std::size_t sent = 0;
    bool partsBegan = false;
    Atom partType = 0;
    Window named = 0;
    Window recipient = 0;
    std::vector<XClientMessageEvent> messages;
};

} // namespace sonorelle::testing
