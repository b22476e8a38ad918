// What belongs to the process and not to its guests: the locale, the environment, signal and X error
// handlers, the signal mask, the floating-point control words, the working folder, the mask of new files.
//
//     const ProcessState before = ProcessState::Take();
//     effect->dispatcher(...);
//     EXPECT_EQ(ProcessState::Take().DifferenceTo(before), "");
//
// Looking at the X handlers sets them for a moment: not while another thread works with X.
#pragma once

#include <array>
#include <csignal>
#include <cstdint>
#include <locale.h>
#include <string>
#include <vector>

namespace sonorelle::test {

class ProcessState {
public:
    static ProcessState Take();
    std::string DifferenceTo(const ProcessState& other) const; // empty: none

private:
    static constexpr int kSignals = 65;
    struct Handler {
        void* function = nullptr;
        int flags = 0;
        bool operator==(const Handler&) const = default;
    };

    std::string locale;
    locale_t threadLocale{};
    std::array<Handler, kSignals> handlers;
    std::array<bool, kSignals> blocked{};
    void* xErrors = nullptr;
    void* xLosses = nullptr;
    int rounding = 0;
    std::uint32_t vectorControl = 0; // without the flags of what has happened
    std::uint16_t scalarControl = 0;
    std::string folder;
    std::string fileMask;
    std::vector<std::string> environment;
};

} // namespace sonorelle::test
