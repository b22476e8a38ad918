// Slow modulators that give one value a tick, in most places one tick a block: `rate` is then blocks a
// second.
//
// They swing between -1 and 1. SetPhase chooses where in its wave a modulator begins, in quarters of a period
// and by the sign; which quarter a mode means differs from kind to kind, as told there. A mode above 3 is
// ignored.
//
//     std::unique_ptr<CLFO> vibrato;
//     if (CreateLFO(vibrato, 689, kSineLfo) == kOk) {
//         vibrato->SetFrequency(5.5F);
//         const float semitones = 0.3F * vibrato->Tick();
//     }
//
// A frequency that the rate makes no finite number of is ignored; one beyond half the rate folds back, as
// with any sampled wave, and a negative one runs backwards. Nothing but CreateLFO allocates; one thread at a
// time.

#pragma once

#include <cstdint>
#include <memory>

namespace sonorelle {

enum LfoKind : std::uint32_t { kSineLfo, kSawLfo, kTriangleLfo, kNoiseLfo, kNoLfo };

class CLFO {
public:
    virtual ~CLFO() = default;
    virtual void SetFrequency(float hertz) = 0;
    virtual void SetPhase(std::uint32_t mode) = 0;
    virtual void Reset() = 0; // to the start of the wave; frequency and phase mode stay
    virtual float Tick() = 0;

protected:
    // A rate that is not positive counts as 1.
    explicit CLFO(float ticksPerSecond) : sampleRate(ticksPerSecond > 0 ? ticksPerSecond : 1) {}
    CLFO(const CLFO&) = default;
    CLFO& operator=(const CLFO&) = default;

    float sampleRate; // ticks a second
    float frequency = 0;
    float sign = 1;
};

// A magic-circle oscillator: two sums a tick instead of a sine, and it does not die away.
// Modes: 0 -sine, 1 -cosine, 2 sine, 3 cosine. The cosine runs half a tick late.
class CSineLFO final : public CLFO {
public:
    explicit CSineLFO(float ticksPerSecond) : CLFO(ticksPerSecond) {}
    void SetFrequency(float hertz) override; // starts the wave again
    void SetPhase(std::uint32_t mode) override;
    void Reset() override;
    float Tick() override;

private:
    float c = 0;         // twice the sine of half the angle of a tick
    float a = 1;         // the cosine side
    float b = 0;         // the sine side
    std::uint32_t k = 1; // which side is given: 0 a, else b
};

// A rising saw behind a smoother of 1000 ticks, which rounds its corner and keeps its jump from clicking;
// fast saws become small.
// Modes: 0 rising, 1 rising and half a period on, 2 and 3 the same falling. The shift is made by each call,
// from where the wave is.
class CSawLFO final : public CLFO {
public:
    explicit CSawLFO(float ticksPerSecond) : CLFO(ticksPerSecond) {}
    void SetFrequency(float hertz) override; // goes on from where the wave is, with the smoother at 0
    void SetPhase(std::uint32_t phaseMode) override;
    void Reset() override;
    float Tick() override;

private:
    float step = 0; // periods a tick
    float phase = 0;
    float y = 0;
    std::uint32_t mode = 0;
};

// Out of two phases half a period apart, without a branch.
// Modes: 0 from the lowest point up, 1 a quarter of a period on, 2 and 3 the same upside down. The shift is
// made by each call, from where the wave is.
class CTriangLFO final : public CLFO {
public:
    explicit CTriangLFO(float ticksPerSecond) : CLFO(ticksPerSecond) {}
    void SetFrequency(float hertz) override; // goes on from where the wave is
    void SetPhase(std::uint32_t phaseMode) override;
    void Reset() override;
    float Tick() override;

private:
    float step = 0; // periods a tick
    float p = 0;
    float q = 0.5F;
    std::uint32_t mode = 0;
};

// Noise behind a smoother of 1000 ticks: a slow wander of 0.013 (effective value). All modulators of this
// kind give the same sequence, so that a render can be repeated.
class CNoiseLFO final : public CLFO {
public:
    explicit CNoiseLFO(float ticksPerSecond) : CLFO(ticksPerSecond) {}
    void SetFrequency(float hertz) override; // the sequence begins again, whatever the frequency
    void SetPhase(std::uint32_t /*mode*/) override {}
    void Reset() override {}
    float Tick() override;

private:
    std::uint32_t seed = 0;
    float y = 0;
};

// No modulation: 1 for ever.
class CNoLFO final : public CLFO {
public:
    explicit CNoLFO(float ticksPerSecond) : CLFO(ticksPerSecond) {}
    void SetFrequency(float /*hertz*/) override {}
    void SetPhase(std::uint32_t /*mode*/) override {}
    void Reset() override {}
    float Tick() override { return 1; }
};

// `rate` in ticks a second, `kind` an LfoKind. kBadArgument for a rate below 1 or another kind, kOutOfMemory;
// `lfo` is then untouched.
std::int32_t CreateLFO(std::unique_ptr<CLFO>& lfo, std::int32_t rate, std::uint32_t kind);

} // namespace sonorelle
