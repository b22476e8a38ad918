#include "formats/midi_track.h"

#include <algorithm>
#include <utility>

namespace sonorelle {

void CkvoMidiTrack::AddEvent(std::shared_ptr<const CkvoMidiFileEvent> event) {
    if (event == nullptr) return;
    const auto later =
        std::upper_bound(events_.begin(), events_.end(), event, [](const auto& added, const auto& other) {
            return added->GetTime() < other->GetTime();
        });
    events_.insert(later, std::move(event));
}

} // namespace sonorelle
