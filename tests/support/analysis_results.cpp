#include "support/analysis_results.h"

#include "analysis/pitch_marks.h"

#include <bit>
#include <cmath>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

namespace sonorelle::test {

namespace {

std::string At(const char* what, std::size_t index) { return what + (" at " + std::to_string(index)); }

std::string WhatIsWrongWithMarks(const std::vector<PitchMarkRecord>& marks, std::int32_t length) {
    if (marks.empty() || marks.front().position != 0) return "no mark at 0";
    if (marks.back().position != length) return "no mark at the end";
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const PitchMarkRecord& mark = marks[i];
        if (i > 0 && mark.position <= marks[i - 1].position) return At("marks do not rise", i);
        for (const float value : {mark.energy, mark.transient, mark.voicing, mark.pitchChange, mark.period})
            if (!std::isfinite(value)) return At("a mark is not finite", i);
        if (mark.energy < 0 || mark.transient < 0 || mark.transient > 1 || mark.period < 0)
            return At("a mark is out of range", i);
    }
    return {};
}

std::string WhatIsWrongWithFrames(const AnalysisResults& results) {
    if (results.frames.size() != results.marks.size()) return "not one frame a mark";
    for (std::size_t i = 0; i < results.frames.size(); ++i) {
        const AnalysisFrame& frame = results.frames[i];
        if (frame.position != results.marks[i].position) return At("a frame is not at its mark", i);
        if (!std::isfinite(frame.pitch)) return At("a pitch is not finite", i);
        if (!(frame.level >= 0 && frame.level <= 1)) return At("a level is out of range", i);
        if (frame.voiced != 0 && frame.voiced != 1) return At("voiced is neither 0 nor 1", i);
    }
    return {};
}

std::string WhatIsWrongWithNotes(const AnalysisResults& results) {
    for (std::size_t i = 0; i < results.notes.size(); ++i) {
        const NoteRecord& note = results.notes[i];
        if (!std::isfinite(note.pitch)) return At("a note's pitch is not finite", i);
        if (!(note.level >= 0 && note.level <= 1)) return At("a note's level is out of range", i);
        if (note.firstFrame < 0 || note.firstFrame > note.lastFrame ||
            static_cast<std::size_t>(note.lastFrame) >= results.frames.size())
            return At("a note's frames are out of range", i);
        if (note.start != results.marks[static_cast<std::size_t>(note.firstFrame)].position ||
            note.end != results.marks[static_cast<std::size_t>(note.lastFrame)].position ||
            note.length != note.end - note.start)
            return At("a note does not lie on its frames", i);
        if (i > 0 && note.start < results.notes[i - 1].end) return At("notes overlap", i);
    }
    return {};
}

} // namespace

AnalysisResults::AnalysisResults(const CMelodyAnalyzer& analyzer) : tuningOffset(analyzer.GetTuningOffset()) {
    const PitchMarkRecord* markRecords = nullptr;
    if (analyzer.GetMarks() != nullptr) {
        const std::int32_t count = analyzer.GetMarks()->GetData(markRecords);
        marks.assign(markRecords, markRecords + count);
    }
    const AnalysisFrame* frameRecords = nullptr;
    const std::int32_t frameCount = analyzer.GetFrames(frameRecords);
    frames.assign(frameRecords, frameRecords + frameCount);
    const NoteRecord* noteRecords = nullptr;
    const std::int32_t noteCount = analyzer.GetNotes(noteRecords);
    notes.assign(noteRecords, noteRecords + noteCount);
}

bool AnalysisResults::SameBits(const AnalysisResults& other) const {
    return SameRecords(marks, other.marks) && SameRecords(frames, other.frames) &&
           SameRecords(notes, other.notes) &&
           std::bit_cast<std::uint32_t>(tuningOffset) == std::bit_cast<std::uint32_t>(other.tuningOffset);
}

std::string WhatIsWrong(const AnalysisResults& results, std::int32_t length) {
    if (std::string wrong = WhatIsWrongWithMarks(results.marks, length); !wrong.empty()) return wrong;
    if (std::string wrong = WhatIsWrongWithFrames(results); !wrong.empty()) return wrong;
    if (std::string wrong = WhatIsWrongWithNotes(results); !wrong.empty()) return wrong;
    if (!(results.tuningOffset >= -0.5F && results.tuningOffset <= 0.5F)) return "tuning out of range";
    return {};
}

void SetModificationTime(const std::filesystem::path& path, std::int64_t nanoseconds) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    struct timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(nanoseconds / kSecond);
    times[1].tv_nsec = static_cast<long>(nanoseconds % kSecond);
    if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        throw std::runtime_error("cannot set the time of " + path.string());
}

} // namespace sonorelle::test
