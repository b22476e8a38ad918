#include "analysis/note_stages.h"

#include "analysis/mean_pitch.h"
#include "platform/saturate.h"

#include <algorithm>
#include <cmath>

namespace sonorelle {

namespace {

constexpr float kFirmLevel = 0.05F;   // notes louder than this are stretched before anything is joined
constexpr float kFadedShare = 0.125F; // of a note's level: where it has died away
constexpr float kBurstShare = 100.0F; // of a note's level: another sound begins
constexpr float kSuddenRise = 0.95F;  // relative rise of the level that begins a note of its own
constexpr double kNeighbourWeight =
    2.0; // in the pitch of a joined note, for each sample: a neighbour counts four times ...
constexpr double kJoinedWeight = 0.5;  // ... what the note itself does, whose length already holds both
constexpr float kSmallestGlide = 1.0F; // semitones
constexpr float kSlowestGlide = 0.03F; // semitones a frame

// Frames and notes that were set from outside may hold any positions.
std::int32_t Distance(std::int32_t from, std::int32_t to) {
    return TruncateToI32(static_cast<double>(to) - from);
}

class NoteCleaner {
public:
    NoteCleaner(std::vector<NoteRecord>& target, const std::vector<AnalysisFrame>& source,
                const NoteRules& noteRules)
        : notes(target), frames(source), levels(source), rules(noteRules),
          lastFrame(static_cast<std::int32_t>(source.size()) - 1) {}

    void Run() {
        for (NoteRecord& note : notes) {
            note.firstFrame = std::clamp(note.firstFrame, 0, lastFrame);
            note.lastFrame = std::clamp(note.lastFrame, 0, lastFrame);
        }
        for (std::int32_t i = 0; i < Count(); ++i) {
            if (notes[Index(i)].level > kFirmLevel) Extend(i, false);
        }
        JoinAndDrop();
        for (std::int32_t i = 0; i < Count(); ++i) Extend(i, true);
        std::erase_if(notes, [this](const NoteRecord& note) {
            return note.length < rules.minNoteLength || IsGlide(note);
        });
        for (std::int32_t i = Count() - 1; i >= 0; --i) Extend(i, true);
        for (NoteRecord& note : notes) {
            const float pitch = MeanPitch(frames.data(), note.firstFrame, note.lastFrame, false, scratch);
            if (pitch > 0) note.pitch = pitch;
        }
    }

private:
    std::int32_t Count() const { return static_cast<std::int32_t>(notes.size()); }
    float Level(std::int32_t frame) const { return frames[Index(frame)].level; }
    std::int32_t Position(std::int32_t frame) const { return frames[Index(frame)].position; }

    // Moves a note's edges out to where the level falls away, as far as its neighbours let it; with
    // `stopAtBursts` also no further than where a far louder sound begins.
    void Extend(std::int32_t index, bool stopAtBursts) {
        NoteRecord& note = notes[Index(index)];
        const float faded = kFadedShare * note.level;
        const float burst = kBurstShare * note.level;
        const auto sounds = [&](std::int32_t frame) {
            const float level = Level(frame);
            return level > faded && (!stopAtBursts || level < burst);
        };
        std::int32_t k = std::max(note.firstFrame - 1, 0);
        std::int32_t limit = index > 0 ? notes[Index(index - 1)].lastFrame : 0;
        while (k > limit && sounds(k)) --k;
        note.firstFrame = std::clamp(std::max(k, limit + 1), 0, lastFrame);
        note.start = Position(note.firstFrame);

        k = std::min(note.lastFrame + 1, lastFrame);
        limit = index < Count() - 1 ? notes[Index(index + 1)].firstFrame : lastFrame;
        while (k < limit && sounds(k)) ++k;
        note.lastFrame = std::clamp(std::min(k, limit - 1), 0, lastFrame);
        note.end = Position(note.lastFrame);
        note.length = Distance(note.start, note.end);
    }

    // The list is walked with a gap in it: notes before `done` are settled, notes from `open` on are not, the
    // first of them is the one in question. Joining and dropping then move nothing.
    void JoinAndDrop() {
        std::int32_t done = 0;
        std::int32_t open = 0;
        while (open < Count()) {
            NoteRecord& note = notes[Index(open)];
            if (note.length < rules.minNoteLength && note.level < kSilentLevel) {
                ++open;
                continue;
            }
            if (done > 0 && open < Count() - 1) {
                NoteRecord& previous = notes[Index(done - 1)];
                NoteRecord& next = notes[Index(open + 1)];
                const bool nearPrevious = IsNear(previous, note, previous, note);
                if (nearPrevious && MayJoin(note, previous.lastFrame, note.firstFrame)) {
                    note.start = previous.start;
                    note.firstFrame = previous.firstFrame;
                    Join(note, previous);
                    --done;
                    continue;
                }
                if (!nearPrevious && IsNear(next, note, note, next) &&
                    MayJoin(note, note.lastFrame, next.firstFrame)) {
                    note.end = next.end;
                    note.lastFrame = next.lastFrame;
                    Join(note, next);
                    next = note;
                    // The joined note takes its neighbour's place, and the walk steps back to the note
                    // before.
                    notes[Index(open)] = previous;
                    --done;
                    continue;
                }
            }
            notes[Index(done)] = note;
            ++done;
            ++open;
        }
        notes.resize(Index(done));
    }

    // Whether `neighbour` is near `note` in pitch, and in time: `earlier` and `later` are the same two in
    // order.
    bool IsNear(const NoteRecord& neighbour, const NoteRecord& note, const NoteRecord& earlier,
                const NoteRecord& later) const {
        return std::fabs(neighbour.pitch - note.pitch) < rules.pitchTolerance &&
               Distance(earlier.end, later.start) < rules.maxGap;
    }

    // A note that begins with a sudden rise of the level stands for itself, unless the one in question is too
    // short.
    bool MayJoin(const NoteRecord& note, std::int32_t lastFrameBefore, std::int32_t firstFrameAfter) const {
        const float before = Level(lastFrameBefore);
        return (Level(firstFrameAfter) - before) / before < kSuddenRise || note.length < rules.minNoteLength;
    }

    // `note` has the extent of both already.
    void Join(NoteRecord& note, const NoteRecord& neighbour) {
        note.length = Distance(note.start, note.end);
        // In f64, so that two notes of one pitch make a note of that very pitch.
        const double neighbourWeight = neighbour.length * kNeighbourWeight;
        const double ownWeight = note.length * kJoinedWeight;
        note.pitch = static_cast<float>((neighbourWeight * static_cast<double>(neighbour.pitch) +
                                         ownWeight * static_cast<double>(note.pitch)) /
                                        (ownWeight + neighbourWeight));
        note.level = levels.Mean(note.firstFrame, note.lastFrame);
    }

    // Whether a note is nothing but the way from one pitch to another.
    bool IsGlide(const NoteRecord& note) {
        std::int32_t a = note.firstFrame;
        std::int32_t b = note.lastFrame;
        while (a < b && frames[Index(a)].voiced == 0) ++a;
        while (b > a && frames[Index(b)].voiced == 0) --b;
        if (Distance(Position(a), Position(b)) > rules.maxGap) return false;
        if (a == b) return true;
        const float rise = frames[Index(b)].pitch - frames[Index(a)].pitch;
        if (std::fabs(rise) < kSmallestGlide || std::fabs(rise / static_cast<float>(b - a)) < kSlowestGlide)
            return false;

        const float mean = MeanPitch(frames.data(), note.firstFrame, note.lastFrame, true, scratch);
        std::int32_t voiced = 0;
        std::int32_t crossings = 0;
        std::int32_t below = 0;
        for (std::int32_t k = note.firstFrame; k < note.lastFrame; ++k) {
            if (frames[Index(k)].voiced == 0) continue;
            const float pitch = frames[Index(k)].pitch;
            const float next = frames[Index(k + 1)].pitch;
            ++voiced;
            if ((pitch < mean && mean < next) || (pitch > mean && mean > next)) ++crossings;
            if (pitch < mean) ++below;
        }
        if (crossings > 1 || 2 * voiced < note.lastFrame - note.firstFrame) return false;
        const double share = static_cast<double>(below) / voiced;
        return 0.4 < share && share < 0.6;
    }

    std::vector<NoteRecord>& notes;
    const std::vector<AnalysisFrame>& frames;
    LevelMeans levels;
    const NoteRules& rules;
    std::int32_t lastFrame;
    std::vector<float> scratch;
};

} // namespace

std::vector<NoteRecord> BuildNotes(const std::vector<AnalysisFrame>& frames,
                                   const std::vector<AnalysisFrame>& smoothed) {
    std::vector<NoteRecord> notes;
    const std::int32_t lastFrame = static_cast<std::int32_t>(std::min(frames.size(), smoothed.size())) - 1;
    const LevelMeans levels(smoothed);
    std::vector<float> scratch;
    std::int32_t first = 0;
    std::int32_t last = 0;
    while (last < lastFrame) {
        while (first < lastFrame && smoothed[Index(first)].voiced == 0) ++first;
        if (first >= lastFrame) break;
        last = first + 1;
        while (last < lastFrame && smoothed[Index(last)].voiced != 0) ++last;
        NoteRecord note;
        note.firstFrame = first;
        note.lastFrame = last;
        note.start = smoothed[Index(first)].position;
        note.end = smoothed[Index(last)].position;
        note.length = Distance(note.start, note.end);
        note.pitch = MeanPitch(frames.data(), first, last, false, scratch);
        note.level = levels.Mean(first, last);
        notes.push_back(note);
        first = last;
    }
    return notes;
}

void CleanUpNotes(std::vector<NoteRecord>& notes, const std::vector<AnalysisFrame>& frames,
                  const NoteRules& rules) {
    if (!notes.empty() && !frames.empty()) NoteCleaner(notes, frames, rules).Run();
}

} // namespace sonorelle
