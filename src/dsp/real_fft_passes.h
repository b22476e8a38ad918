// The passes of RealFft over whole vectors, written once for every vector width. Included by the source file
// of each instruction set and by nothing else; it includes nothing itself, so that no other code is ever
// compiled for a machine that may not be there.
//
// A pass of radix 4 at length n and stride s splits each of s interleaved transforms of length n into four of
// length n / 4 and turns them by the twiddle factors w^p, w^2p, w^3p, w = e^(-2 pi i / n).

#pragma once

namespace sonorelle::fft_passes {

template<int Lanes>
struct VectorOf;
template<>
struct VectorOf<4> {
    using Type = float __attribute__((vector_size(16)));
};
template<>
struct VectorOf<8> {
    using Type = float __attribute__((vector_size(32)));
};

template<int Lanes>
struct Passes {
    using Vector = typename VectorOf<Lanes>::Type;

    struct Complex {
        Vector re;
        Vector im;
        friend Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
        friend Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
        friend Complex operator*(Complex a, Complex w) {
            return {a.re * w.re - a.im * w.im, a.re * w.im + a.im * w.re};
        }
    };

    struct Four {
        Complex a, b, c, d;
    };

    static Vector Load(const float* from) {
        Vector value;
        __builtin_memcpy(&value, from, sizeof value);
        return value;
    }
    static void Store(float* to, Vector value) { __builtin_memcpy(to, &value, sizeof value); }
    static Vector Broadcast(float value) { return value - Vector{}; }
    static Complex Load(const float* re, const float* im) { return {Load(re), Load(im)}; }
    static void Store(float* re, float* im, Complex value) {
        Store(re, value.re);
        Store(im, value.im);
    }
    static Complex TimesMinusI(Complex a) { return {a.im, -a.re}; }

    static Vector Reverse(Vector v) {
        if constexpr (Lanes == 4)
            return __builtin_shufflevector(v, v, 3, 2, 1, 0);
        else
            return __builtin_shufflevector(v, v, 7, 6, 5, 4, 3, 2, 1, 0);
    }
    static Vector Evens(Vector a, Vector b) {
        if constexpr (Lanes == 4)
            return __builtin_shufflevector(a, b, 0, 2, 4, 6);
        else
            return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
    }
    static Vector Odds(Vector a, Vector b) {
        if constexpr (Lanes == 4)
            return __builtin_shufflevector(a, b, 1, 3, 5, 7);
        else
            return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
    }
    // a0 b0 a1 b1 ... to 2 x Lanes floats.
    static void StoreInterleaved(float* to, Vector a, Vector b) {
        if constexpr (Lanes == 4) {
            Store(to, __builtin_shufflevector(a, b, 0, 4, 1, 5));
            Store(to + Lanes, __builtin_shufflevector(a, b, 2, 6, 3, 7));
        } else {
            Store(to, __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
            Store(to + Lanes, __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15));
        }
    }
    // Four rows of Lanes columns, written column by column: a0 b0 c0 d0 a1 b1 c1 d1 ...
    static void StoreTransposed(float* to, Vector a, Vector b, Vector c, Vector d) {
        if constexpr (Lanes == 4) {
            const Vector ab0 = __builtin_shufflevector(a, b, 0, 4, 1, 5);
            const Vector ab1 = __builtin_shufflevector(a, b, 2, 6, 3, 7);
            const Vector cd0 = __builtin_shufflevector(c, d, 0, 4, 1, 5);
            const Vector cd1 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
            Store(to, __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5));
            Store(to + 4, __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7));
            Store(to + 8, __builtin_shufflevector(ab1, cd1, 0, 1, 4, 5));
            Store(to + 12, __builtin_shufflevector(ab1, cd1, 2, 3, 6, 7));
        } else {
            // Within each half as above: columns 0 and 4, 1 and 5, 2 and 6, 3 and 7; then the halves are
            // sorted.
            const Vector ab0 = __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13);
            const Vector ab1 = __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15);
            const Vector cd0 = __builtin_shufflevector(c, d, 0, 8, 1, 9, 4, 12, 5, 13);
            const Vector cd1 = __builtin_shufflevector(c, d, 2, 10, 3, 11, 6, 14, 7, 15);
            const Vector columns04 = __builtin_shufflevector(ab0, cd0, 0, 1, 8, 9, 4, 5, 12, 13);
            const Vector columns15 = __builtin_shufflevector(ab0, cd0, 2, 3, 10, 11, 6, 7, 14, 15);
            const Vector columns26 = __builtin_shufflevector(ab1, cd1, 0, 1, 8, 9, 4, 5, 12, 13);
            const Vector columns37 = __builtin_shufflevector(ab1, cd1, 2, 3, 10, 11, 6, 7, 14, 15);
            StoreHalves(to, to + 16, columns04, columns15);
            StoreHalves(to + 8, to + 24, columns26, columns37);
        }
    }
    // The lower halves of a and b to `low`, the upper ones to `high`.
    static void StoreHalves(float* low, float* high, Vector a, Vector b) {
        if constexpr (Lanes == 8) {
            Store(low, __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11));
            Store(high, __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15));
        }
    }

    // Transforms of length 4 over four inputs, one in each lane.
    static Four Butterfly(Complex a, Complex b, Complex c, Complex d) {
        const Complex sumAC = a + c;
        const Complex differenceAC = a - c;
        const Complex sumBD = b + d;
        const Complex turnedBD = TimesMinusI(b - d);
        return {sumAC + sumBD, differenceAC + turnedBD, sumAC - sumBD, differenceAC - turnedBD};
    }

    // Stride 1: neighbouring p make a vector. `twiddles`: six arrays of length / 4.
    template<class LoadAt>
    static void FirstPass(LoadAt load, float* outRe, float* outIm, int length, const float* twiddles) {
        const int quarter = length / 4;
        for (int p = 0; p < quarter; p += Lanes) {
            Four y = Butterfly(load(p), load(p + quarter), load(p + 2 * quarter), load(p + 3 * quarter));
            const float* w = twiddles + p;
            y.b = y.b * Load(w, w + quarter);
            y.c = y.c * Load(w + 2 * quarter, w + 3 * quarter);
            y.d = y.d * Load(w + 4 * quarter, w + 5 * quarter);
            StoreTransposed(outRe + 4 * p, y.a.re, y.b.re, y.c.re, y.d.re);
            StoreTransposed(outIm + 4 * p, y.a.im, y.b.im, y.c.im, y.d.im);
        }
    }

    static void FirstPassFromSignal(const float* data, float* outRe, float* outIm, int length,
                                    const float* twiddles) {
        const auto load = [data](int index) {
            const Vector low = Load(data + 2 * index);
            const Vector high = Load(data + 2 * index + Lanes);
            return Complex{Evens(low, high), Odds(low, high)};
        };
        FirstPass(load, outRe, outIm, length, twiddles);
    }

    static void FirstPassFromParts(const float* re, const float* im, float* outRe, float* outIm, int length,
                                   const float* twiddles) {
        FirstPass([re, im](int index) { return Load(re + index, im + index); }, outRe, outIm, length,
                  twiddles);
    }

    // Neighbouring columns make a vector. `twiddles`: six numbers for each p.
    static void MiddlePass(const float* re, const float* im, float* outRe, float* outIm, int length,
                           int stride, const float* twiddles) {
        if (stride < Lanes) {
            PairedPass(re, im, outRe, outIm, length, twiddles);
            return;
        }
        const int quarter = length / 4;
        const int step = stride * quarter;
        for (int p = 0; p < quarter; ++p) {
            const float* w = twiddles + 6 * p;
            const Complex w1{Broadcast(w[0]), Broadcast(w[1])};
            const Complex w2{Broadcast(w[2]), Broadcast(w[3])};
            const Complex w3{Broadcast(w[4]), Broadcast(w[5])};
            for (int q = 0; q < stride; q += Lanes) {
                const float* inRe = re + stride * p + q;
                const float* inIm = im + stride * p + q;
                const Four y =
                    Butterfly(Load(inRe, inIm), Load(inRe + step, inIm + step),
                              Load(inRe + 2 * step, inIm + 2 * step), Load(inRe + 3 * step, inIm + 3 * step));
                float* toRe = outRe + 4 * stride * p + q;
                float* toIm = outIm + 4 * stride * p + q;
                Store(toRe, toIm, y.a);
                Store(toRe + stride, toIm + stride, y.b * w1);
                Store(toRe + 2 * stride, toIm + 2 * stride, y.c * w2);
                Store(toRe + 3 * stride, toIm + 3 * stride, y.d * w3);
            }
        }
    }

    // Stride 4 with eight lanes: two neighbouring p share a vector.
    static void PairedPass(const float* re, const float* im, float* outRe, float* outIm, int length,
                           const float* twiddles) {
        if constexpr (Lanes == 8) {
            const int quarter = length / 4;
            const int step = 4 * quarter;
            const auto both = [](const float* w, int slot) {
                const float a = w[slot];
                const float b = w[slot + 6];
                return Vector{a, a, a, a, b, b, b, b};
            };
            for (int p = 0; p < quarter; p += 2) {
                const float* w = twiddles + 6 * p;
                const float* inRe = re + 4 * p;
                const float* inIm = im + 4 * p;
                Four y =
                    Butterfly(Load(inRe, inIm), Load(inRe + step, inIm + step),
                              Load(inRe + 2 * step, inIm + 2 * step), Load(inRe + 3 * step, inIm + 3 * step));
                y.b = y.b * Complex{both(w, 0), both(w, 1)};
                y.c = y.c * Complex{both(w, 2), both(w, 3)};
                y.d = y.d * Complex{both(w, 4), both(w, 5)};
                float* toRe = outRe + 16 * p;
                float* toIm = outIm + 16 * p;
                StoreHalves(toRe, toRe + 16, y.a.re, y.b.re);
                StoreHalves(toRe + 8, toRe + 24, y.c.re, y.d.re);
                StoreHalves(toIm, toIm + 16, y.a.im, y.b.im);
                StoreHalves(toIm + 8, toIm + 24, y.c.im, y.d.im);
            }
        }
    }

    // The last pass has one p and so no twiddle factors.
    static void LastPass4(const float* re, const float* im, float* outRe, float* outIm, int stride) {
        for (int q = 0; q < stride; q += Lanes) {
            const auto row = [&](int index) {
                return Load(re + index * stride + q, im + index * stride + q);
            };
            const auto store = [&](int index, Complex value) {
                Store(outRe + index * stride + q, outIm + index * stride + q, value);
            };
            const Four y = Butterfly(row(0), row(1), row(2), row(3));
            store(0, y.a);
            store(1, y.b);
            store(2, y.c);
            store(3, y.d);
        }
    }

    // Radix 8: two transforms of length 4, the second turned by eighths of a circle, added and subtracted.
    static void LastPass8(const float* re, const float* im, float* outRe, float* outIm, int stride) {
        const Vector diagonal = Broadcast(0.70710678118654752440F);
        for (int q = 0; q < stride; q += Lanes) {
            const auto row = [&](int index) {
                return Load(re + index * stride + q, im + index * stride + q);
            };
            const auto store = [&](int index, Complex value) {
                Store(outRe + index * stride + q, outIm + index * stride + q, value);
            };
            const Four even = Butterfly(row(0), row(2), row(4), row(6));
            Four odd = Butterfly(row(1), row(3), row(5), row(7));
            odd.b = {(odd.b.re + odd.b.im) * diagonal, (odd.b.im - odd.b.re) * diagonal};
            odd.c = TimesMinusI(odd.c);
            odd.d = {(odd.d.im - odd.d.re) * diagonal, -((odd.d.re + odd.d.im) * diagonal)};
            store(0, even.a + odd.a);
            store(1, even.b + odd.b);
            store(2, even.c + odd.c);
            store(3, even.d + odd.d);
            store(4, even.a - odd.a);
            store(5, even.b - odd.b);
            store(6, even.c - odd.c);
            store(7, even.d - odd.d);
        }
    }

    // X[k] = (Z[k] + Z*[M - k]) / 2 - i W^k (Z[k] - Z*[M - k]) / 2 with W = e^(-2 pi i / N), M = N / 2: a bin
    // and its mirror image at once.
    static void SplitSpectra(float* data, const float* re, const float* im, int half, const float* rotation) {
        const int middle = half / 2;
        const float* sines = rotation + middle + 1;
        const Vector oneHalf = Broadcast(0.5F);
        for (int k = 1; k + Lanes <= middle + 1; k += Lanes) {
            const int mirrored = half - k - (Lanes - 1);
            const Complex z = Load(re + k, im + k);
            const Complex m{Reverse(Load(re + mirrored)), Reverse(Load(im + mirrored))};
            const Vector c = Load(rotation + k);
            const Vector s = Load(sines + k);
            const Complex even{(z.re + m.re) * oneHalf, (z.im - m.im) * oneHalf};
            const Complex odd{(z.im + m.im) * oneHalf, (m.re - z.re) * oneHalf};
            const Complex turned{odd.re * c + odd.im * s, odd.im * c - odd.re * s};
            StoreInterleaved(data + 2 * k, even.re + turned.re, even.im + turned.im);
            StoreInterleaved(data + 2 * mirrored, Reverse(even.re - turned.re), Reverse(turned.im - even.im));
        }
        data[0] = re[0] + im[0];
        data[1] = re[0] - im[0];
    }

    // Z[k] = (X[k] + X*[M - k]) + i W^-k (X[k] - X*[M - k]).
    static void JoinSpectra(const float* data, float* re, float* im, int half, const float* rotation) {
        const int middle = half / 2;
        const float* sines = rotation + middle + 1;
        for (int k = 1; k + Lanes <= middle + 1; k += Lanes) {
            const int mirrored = half - k - (Lanes - 1);
            const Vector x0 = Load(data + 2 * k);
            const Vector x1 = Load(data + 2 * k + Lanes);
            const Vector m0 = Load(data + 2 * mirrored);
            const Vector m1 = Load(data + 2 * mirrored + Lanes);
            const Complex x{Evens(x0, x1), Odds(x0, x1)};
            const Complex m{Reverse(Evens(m0, m1)), Reverse(Odds(m0, m1))};
            const Vector c = Load(rotation + k);
            const Vector s = Load(sines + k);
            const Complex even{x.re + m.re, x.im - m.im};
            const Complex difference{x.re - m.re, x.im + m.im};
            const Complex odd{difference.re * c - difference.im * s, difference.im * c + difference.re * s};
            Store(re + k, im + k, {even.re - odd.im, even.im + odd.re});
            Store(re + mirrored, im + mirrored, {Reverse(even.re + odd.im), Reverse(odd.re - even.im)});
        }
        re[0] = data[0] + data[1];
        im[0] = data[0] - data[1];
    }

    static void Interleave(const float* even, const float* odd, float* data, int half) {
        for (int k = 0; k < half; k += Lanes) StoreInterleaved(data + 2 * k, Load(even + k), Load(odd + k));
    }
};

} // namespace sonorelle::fft_passes
