// A list of MIDI events in the order of their times.

#pragma once

#include "formats/midi_event.h"

#include <memory>
#include <vector>

namespace sonorelle {

// A copy has a list of its own and shares the events, which nobody changes any more.
class CkvoMidiTrack {
public:
    using Events = std::vector<std::shared_ptr<const CkvoMidiFileEvent>>;

    CkvoMidiTrack() = default;
    virtual ~CkvoMidiTrack() = default;
    CkvoMidiTrack(const CkvoMidiTrack&) = default;
    CkvoMidiTrack& operator=(const CkvoMidiTrack&) = default;

    // Puts the event before the first later one, so that events of equal time stay in the order of adding. A
    // null pointer is ignored. Throws std::bad_alloc alone.
    void AddEvent(std::shared_ptr<const CkvoMidiFileEvent> event);
    const Events& GetEvents() const { return events_; }

private:
    Events events_;
};

} // namespace sonorelle
