#include "cli/progress_bar.h"

#include <algorithm>
#include <utility>

namespace sonorelle {

namespace {

constexpr std::int32_t kFullBar = 100;
constexpr int kWidestBar = 40;
constexpr int kNarrowestBar = 5; // below it the percentage stands alone
constexpr int kPercentWidth = 4; // "100%"
constexpr int kFurniture = 4;    // brackets and blanks

std::string PercentText(std::int32_t percent) {
    std::string text = std::to_string(percent) + "%";
    return std::string(static_cast<std::size_t>(kPercentWidth) - text.size(), ' ') + text;
}

} // namespace

ProgressBar::ProgressBar(std::FILE* stream, int columns, std::string label)
    : stream_(stream), columns_(columns), label_(std::move(label)) {}

ProgressBar::~ProgressBar() { Clear(); }

void ProgressBar::Show(std::int32_t percent) {
    const std::int32_t held = std::clamp<std::int32_t>(percent, 0, kFullBar);
    if (columns_ <= 0 || held == shown_) return;
    shown_ = held;
    const std::string line = Line(held);
    std::fprintf(stream_, "\r%s", line.c_str());
    std::fflush(stream_);
    drawn_ = std::max(drawn_, line.size());
}

// Blanks rather than an escape sequence: every terminal understands them.
void ProgressBar::Clear() {
    if (drawn_ == 0) return;
    std::fprintf(stream_, "\r%s\r", std::string(drawn_, ' ').c_str());
    std::fflush(stream_);
    drawn_ = 0;
    shown_ = -1;
}

// Never fills the last column, where some terminals begin a new line.
std::string ProgressBar::Line(std::int32_t percent) const {
    const int room = columns_ - 1 - static_cast<int>(label_.size()) - kFurniture - kPercentWidth;
    const std::string number = PercentText(percent);
    if (room < kNarrowestBar) return number.substr(0, static_cast<std::size_t>(std::max(columns_ - 1, 0)));
    const int width = std::min(room, kWidestBar);
    const auto filled = static_cast<std::size_t>(width * percent / kFullBar);
    const std::string bar =
        std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '-');
    return label_ + " [" + bar + "] " + number;
}

} // namespace sonorelle
