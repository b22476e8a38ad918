// What of a session is the user's own doing, apart from what the host's transport and automation move by
// themselves: so that a document which could not be restored whole is only replaced once the user has begun
// to work.
//
//     const UserState before = UserStateOf(document, notes, 44100);
//     ... a host starts, follows its tempo, automates a volume ...
//     SameUserState(before, UserStateOf(documentNow, notes, 48000)); // true
//     ... the user moves a note ...                                  // false
//
// Pure functions; they allocate.

#pragma once

#include "app/state_document.h"

#include <cstdint>
#include <string_view>

namespace sonorelle {

struct UserState {
    SavedState state;       // without what a host may change
    double markerStart = 0; // where the melody begins, in samples of the host
    float hostRate = 0;     // Hz, of these samples; 0: not known
};

// `document`: of this session as it is now. `analysedNotes`: of the present analysis. The values of the
// strips are left out, but for mute and solo: hosts automate them, and their own callback tells when a user
// moves one.
UserState UserStateOf(std::string_view document, std::int32_t analysedNotes, float hostRate);

// A marker counts as unmoved when it lies at the same time, whatever the host's rate was when it was asked.
bool SameUserState(const UserState& one, const UserState& other);

} // namespace sonorelle
