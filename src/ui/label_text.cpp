#include "ui/label_text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace sonorelle {

namespace {

constexpr int kLargestShift = 200; // pixels

struct SignedNumber {
    int value = 0;
    bool relative = false; // it had a sign
};

class LabelParser {
public:
    LabelParser(std::string_view label, int labelSize)
        : text(label), ownSize(std::clamp(labelSize, 1, kLargestLabel)) {
        run.size = ownSize;
    }

    std::vector<LabelRun> Parse() {
        while (!text.empty()) {
            const char sign = Take();
            if (sign == '\n') {
                EndLine();
            } else if (sign == '@' && !text.empty()) {
                Command(Take());
            } else {
                run.text += sign;
            }
        }
        EndRun();
        return std::move(runs);
    }

private:
    char Take() {
        const char sign = text.front();
        text.remove_prefix(1);
        return sign;
    }

    bool TakeIf(char sign) {
        if (text.empty() || text.front() != sign) return false;
        text.remove_prefix(1);
        return true;
    }

    SignedNumber TakeNumber() {
        SignedNumber number;
        const bool negative = TakeIf('-');
        number.relative = negative || TakeIf('+');
        while (!text.empty() && text.front() >= '0' && text.front() <= '9')
            number.value = std::min(number.value * 10 + (Take() - '0'), kLargestShift);
        if (negative) number.value = -number.value;
        return number;
    }

    void Command(char name) {
        switch (name) {
        case 'b':
            Restyle([](LabelRun& r) { r.bold = true; });
            TakeIf(' ');
            break;
        case 'n':
            Restyle([this](LabelRun& r) {
                r.bold = false;
                r.size = ownSize;
                r.lower = 0;
            });
            TakeIf(' ');
            break;
        case 's':
            TakeSize();
            break;
        case 'y': {
            const int lower = TakeNumber().value;
            Restyle([lower](LabelRun& r) { r.lower = lower; });
            break;
        }
        case '<':
            Arrow(LabelShape::kArrowLeft);
            break;
        case '>':
            Arrow(LabelShape::kArrowRight);
            break;
        case '@':
            run.text += '@';
            break;
        default:
            run.text += {'@', name};
            break;
        }
    }

    void TakeSize() {
        const SignedNumber number = TakeNumber();
        const bool own = number.relative || number.value == 0;
        const int size = std::clamp(own ? ownSize + number.value : number.value, 1, kLargestLabel);
        Restyle([size](LabelRun& r) { r.size = size; });
    }

    template<class Change>
    void Restyle(const Change& change) {
        EndRun();
        change(run);
    }

    void Arrow(LabelShape shape) {
        EndRun();
        LabelRun arrow = run;
        arrow.shape = shape;
        runs.push_back(std::move(arrow));
    }

    void EndRun() {
        if (!run.text.empty()) runs.push_back(run);
        run.text.clear();
    }

    void EndLine() {
        EndRun();
        ++run.line;
        run.lower = 0;
    }

    std::string_view text;
    const int ownSize;
    LabelRun run;
    std::vector<LabelRun> runs;
};

} // namespace

std::vector<LabelRun> ParseLabel(std::string_view label, int size) {
    return LabelParser(label, size).Parse();
}

std::string PlainLabel(std::string_view label) {
    std::string plain;
    int line = 0;
    for (const LabelRun& run : ParseLabel(label, 1)) {
        plain.append(static_cast<std::size_t>(run.line - line), '\n');
        line = run.line;
        plain += run.text;
    }
    return plain;
}

} // namespace sonorelle
