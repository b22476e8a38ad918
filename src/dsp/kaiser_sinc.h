// The resamplers' filter: the right half of a sinc under Kaiser's window.
//
// J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function" (1974), for the
// window; J. O. Smith, "Digital Audio Resampling Home Page" (band-limited interpolation), for its use as a
// table.
//
// Pure functions in f64, for any thread; about 50 operations an entry.

#pragma once

#include <cstdint>

namespace sonorelle {

// Table entries from one zero crossing of the full-band sinc to the next.
inline constexpr std::int32_t kSamplesPerCrossing = 256;

// The modified Bessel function of the first kind and order 0, from its power series.
double BesselI0(double argument);

// Entry `index` of a half filter of `tableSize` (at least 2) entries: the sinc with its band edge at
// `rolloff` of the Nyquist frequency, under the window of shape `beta`. Entry 0, the centre, is `rolloff`.
double KaiserSinc(std::int32_t index, std::int32_t tableSize, double rolloff, double beta);

} // namespace sonorelle
