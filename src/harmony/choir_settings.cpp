#include "harmony/choir_settings.h"

#include "app/snapshot_store.h"

namespace sonorelle {

namespace {

// Store versions in which the elements came in.
constexpr float kFirst = 1.0F;
constexpr float kWithArrangements = 1.1F;
constexpr float kWithStyles = 1.2F;

} // namespace

void ChoirSettings::RegisterWith(CSnapshotStore& store, void* owner) {
    const auto add = [&](auto& field, float version) {
        static_assert(sizeof field == 4, "settings are stored in four bytes each");
        store.AddElement(&field, sizeof field, version, true, owner);
    };
    add(melodyScale, kFirst);
    add(harmonyScale, kFirst);
    add(root, kFirst);
    add(voiceRange, kFirst);
    add(spread, kFirst);
    add(snapToScale, kFirst);
    add(mapScale, kFirst);
    add(autoKey, kFirst);
    add(followScale, kFirst);
    add(chordsDirty, kFirst);
    add(manualOnly, kFirst);
    add(arrangement, kWithArrangements);
    add(style, kWithStyles);
    add(noteCount, kWithArrangements);
    for (std::int32_t& interval : manualIntervals) add(interval, kFirst);
}

} // namespace sonorelle
