#include "ui/native_window.h"

#include <FL/x.H>

namespace sonorelle {

unsigned long ParentOf(unsigned long window) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    if (XQueryTree(fl_display, window, &root, &parent, &children, &count) == 0) return 0;
    if (children != nullptr) XFree(children);
    return parent != root ? parent : 0;
}

unsigned long TopWindowOf(unsigned long window) {
    while (true) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        if (XQueryTree(fl_display, window, &root, &parent, &children, &count) == 0) return 0;
        if (children != nullptr) XFree(children);
        if (parent == root || parent == 0) return window;
        unsigned char* state = nullptr;
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long rest = 0;
        const Atom managed = XInternAtom(fl_display, "WM_STATE", False);
        XGetWindowProperty(fl_display, window, managed, 0, 0, False, AnyPropertyType, &type, &format, &items,
                           &rest, &state);
        if (state != nullptr) XFree(state);
        if (type != None) return window;
        window = parent;
    }
}

std::vector<unsigned long> ReadNumbers(unsigned long window, unsigned long property, unsigned long type) {
    constexpr long kMost = 1024;
    Atom found = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    std::vector<unsigned long> values;
    const int result = XGetWindowProperty(fl_display, window, property, 0, kMost, False, type, &found,
                                          &format, &items, &rest, &data);
    if (result == Success && found == type && format == 32) {
        const auto* words = reinterpret_cast<const unsigned long*>(data);
        values.assign(words, words + items);
    }
    if (data != nullptr) XFree(data);
    return values;
}

} // namespace sonorelle
