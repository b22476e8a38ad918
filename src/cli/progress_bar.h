// A progress bar on one line of a terminal, which is clean again afterwards.
//
//     Analysing 2 of 5 [#############---------------------------]  32%

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace sonorelle {

class ProgressBar {
public:
    // `columns`: width of the terminal; 0 for none, and nothing is ever written. `label`: ASCII text.
    ProgressBar(std::FILE* stream, int columns, std::string label);
    // Clears the line.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Held to 0 to 100. Touches the terminal only when the value differs from the one it shows.
    void Show(std::int32_t percent);
    void Clear();

private:
    std::string Line(std::int32_t percent) const;

    std::FILE* stream_;
    int columns_;
    std::string label_;
    std::int32_t shown_ = -1;
    std::size_t drawn_ = 0; // characters on the line
};

} // namespace sonorelle
