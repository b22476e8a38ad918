// The menus of the pitch view: of a note, of the chord row, of the two markers.

#include "app/pitch_view.h"

#include <algorithm>

namespace sonorelle {
namespace {

PopupItem ImageEntry(std::int32_t id, PopupMark mark) {
    PopupItem item;
    item.id = id;
    item.mark = mark;
    return item;
}

PopupItem TextEntry(const char* text, std::int32_t id, bool separatorBehind) {
    PopupItem item;
    item.text = text;
    item.id = id;
    item.separatorBehind = separatorBehind;
    return item;
}

PopupMenu MarkerMenu() {
    PopupMenu menu;
    menu.items = {TextEntry("Set to closest Pitch", CkvoPitchView::kMarkerToClosestPitch, false),
                  TextEntry("Reset", CkvoPitchView::kMarkerReset, true),
                  TextEntry("Reset both Markers", CkvoPitchView::kMarkerResetBoth, false)};
    return menu;
}

// A mark for the state that the note would get.
PopupMenu NoteMenu(bool isOff) {
    PopupMenu menu;
    menu.items = {ImageEntry(CkvoPitchView::kToggleNote, isOff ? PopupMark::kOn : PopupMark::kOff)};
    return menu;
}

PopupMenu ChordRowMenu() {
    PopupMenu menu;
    menu.items = {ImageEntry(CkvoPitchView::kGainOff, PopupMark::kOff),
                  ImageEntry(CkvoPitchView::kGainOn, PopupMark::kOn)};
    return menu;
}

} // namespace

PopupMenu CkvoPitchView::RightClick(const PointerEvent& event) {
    PointerEvent end = event;
    end.button = PointerButton::kLeft;
    Release(end);
    menuKind = MenuKind::kNone;
    menuNote = {};

    const Gesture marker = HitMarker(event.x, event.y);
    if (marker != Gesture::kNone) {
        menuKind = marker == Gesture::kMarkerStart ? MenuKind::kMarkerStart : MenuKind::kMarkerEnd;
        return MarkerMenu();
    }
    const std::int32_t chord = GetChordEdit() ? HitChord(event.x, event.y) : -1;
    if (chord >= 0) {
        menuKind = MenuKind::kChordRow;
        menuNote = {chord, 0};
        return ChordRowMenu();
    }
    const NoteHit hit = HitNote(event.x, event.y);
    if (!hit.Found()) return {};
    menuKind = MenuKind::kNote;
    menuNote = hit;
    return NoteMenu(GetNote(hit.note, hit.voice)->object.isOff != 0);
}

void CkvoPitchView::ChooseMenuEntry(std::int32_t id) {
    const MenuKind kind = menuKind;
    const NoteHit note = menuNote;
    menuKind = MenuKind::kNone; // a menu is good for one choice
    switch (kind) {
    case MenuKind::kNone:
        break;
    case MenuKind::kNote:
        if (id == kToggleNote) ToggleNote(note);
        break;
    case MenuKind::kChordRow:
        if (id == kGainOff || id == kGainOn) SetHarmonyGains(note.note, id == kGainOn);
        break;
    case MenuKind::kMarkerStart:
        ChooseForMarker(id, true);
        break;
    case MenuKind::kMarkerEnd:
        ChooseForMarker(id, false);
        break;
    }
}

void CkvoPitchView::ToggleNote(const NoteHit& hit) {
    const PitchViewNote* const note = GetNote(hit.note, hit.voice);
    if (note != nullptr) SetNoteGain(hit.note, hit.voice, note->object.isOff != 0);
}

// The lead stays as it is.
void CkvoPitchView::SetHarmonyGains(std::int32_t note, bool on) {
    for (std::int32_t voice = 1; voice < voiceCount; ++voice) SetNoteGain(note, voice, on);
}

void CkvoPitchView::SetNoteGain(std::int32_t note, std::int32_t voice, bool on) {
    PitchViewNote* const record = FindNote(note, voice);
    if (record == nullptr) return;
    record->gain = on ? PitchViewNote::kActiveGain : 0;
    record->object.isOff = on ? 0 : 1;
    Redraw(kDamagePart | kDamageNotes);
    Report(kEventGainChanged, {note, voice, on ? 1 : 0});
}

void CkvoPitchView::ChooseForMarker(std::int32_t id, bool isStart) {
    const MarkerPair old = markers.load(std::memory_order_relaxed);
    if (id == kMarkerReset) {
        MoveMarker(isStart, isStart ? firstSample : lastSample);
    } else if (id == kMarkerResetBoth) {
        ReportMarkers({firstSample, lastSample});
    } else if (id == kMarkerToClosestPitch) {
        const std::optional<std::int32_t> start = ClosestNoteStart(isStart ? old.start : old.end);
        if (!start) return;
        const bool passes = isStart ? *start > old.end : *start < old.start;
        if (!passes) MoveMarker(isStart, *start);
    }
}

} // namespace sonorelle
