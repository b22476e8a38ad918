// What the processor can do.
//
// A factory that chooses between a plain and a vector form takes the feature word as an argument that
// defaults to this machine's, so that a test reaches every form on every machine and nothing is kept between
// calls:
//
//     std::int32_t CreateSomething(CSomething*& made, std::uint32_t features = ProcessorFeatureWord());
//     CreateSomething(made, 0); // the plain form

#pragma once

#include <cstdint>

namespace sonorelle {

// Bits of the word.
inline constexpr std::uint32_t kFeatureSse = 1u << 25;
inline constexpr std::uint32_t kFeatureSse2 = 1u << 26;

// CPUID leaf 1, register EDX; 0 on other processors. Any thread; allocates nothing.
std::uint32_t ProcessorFeatureWord() noexcept;

} // namespace sonorelle
