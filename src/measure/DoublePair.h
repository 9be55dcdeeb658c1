#pragma once

#include <cstdint>

// ZAV_NO_SIMD builds the plain form on any processor (the tests check that both agree).
#if !defined(ZAV_NO_SIMD) &&                                                                       \
    (defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2))
#define ZAV_DOUBLE_PAIR_SSE2 1
#include <emmintrin.h>
#endif

namespace zav {

// Two doubles worked on side by side, for the detector kernel: one SSE2 register where the
// processor has it, two plain doubles elsewhere, with the same results bit for bit (every
// operation is a single IEEE operation on each lane).
class DoublePair {
public:
    DoublePair() : DoublePair(Both(0)) {}
    static DoublePair Of(double low, double high);
    static DoublePair Both(double x) { return Of(x, x); }
    // Four signed 16-bit samples as doubles: s[0], s[1] into `low`, s[2], s[3] into `high`.
    static void LoadFour(const std::int16_t* s, DoublePair& low, DoublePair& high);

    double Low() const;
    double High() const;
    DoublePair Lows() const;    // the low lane in both
    DoublePair Highs() const;   // the high lane in both
    DoublePair Swapped() const; // lanes exchanged
    void Store(double* out) const;
    // Bit 0 set when the low lane is greater than the low lane of `t`, bit 1 likewise high.
    int Above(DoublePair t) const;

    friend DoublePair operator+(DoublePair a, DoublePair b);
    friend DoublePair operator-(DoublePair a, DoublePair b);
    friend DoublePair operator*(DoublePair a, DoublePair b);
    // Per lane: a > b ? a : b.
    friend DoublePair Larger(DoublePair a, DoublePair b);
    // Per lane: e > 0 ? e : +0.
    friend DoublePair PositivePart(DoublePair e);

private:
#ifdef ZAV_DOUBLE_PAIR_SSE2
    explicit DoublePair(__m128d v) : m_v(v) {}
    __m128d m_v;
#else
    DoublePair(double low, double high) : m_low(low), m_high(high) {}
    double m_low, m_high;
#endif
};

#ifdef ZAV_DOUBLE_PAIR_SSE2

inline DoublePair DoublePair::Of(double low, double high) {
    return DoublePair(_mm_set_pd(high, low));
}
inline void DoublePair::LoadFour(const std::int16_t* s, DoublePair& low, DoublePair& high) {
    const __m128i raw = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s));
    const __m128i wide = _mm_srai_epi32(_mm_unpacklo_epi16(raw, raw), 16); // sign-extended
    low = DoublePair(_mm_cvtepi32_pd(wide));
    high = DoublePair(_mm_cvtepi32_pd(_mm_shuffle_epi32(wide, _MM_SHUFFLE(1, 0, 3, 2))));
}
inline double DoublePair::Low() const {
    return _mm_cvtsd_f64(m_v);
}
inline double DoublePair::High() const {
    return _mm_cvtsd_f64(_mm_unpackhi_pd(m_v, m_v));
}
inline DoublePair DoublePair::Lows() const {
    return DoublePair(_mm_unpacklo_pd(m_v, m_v));
}
inline DoublePair DoublePair::Highs() const {
    return DoublePair(_mm_unpackhi_pd(m_v, m_v));
}
inline DoublePair DoublePair::Swapped() const {
    return DoublePair(_mm_shuffle_pd(m_v, m_v, 1));
}
inline void DoublePair::Store(double* out) const {
    _mm_storeu_pd(out, m_v);
}
inline int DoublePair::Above(DoublePair t) const {
    return _mm_movemask_pd(_mm_cmpgt_pd(m_v, t.m_v));
}
inline DoublePair operator+(DoublePair a, DoublePair b) {
    return DoublePair(_mm_add_pd(a.m_v, b.m_v));
}
inline DoublePair operator-(DoublePair a, DoublePair b) {
    return DoublePair(_mm_sub_pd(a.m_v, b.m_v));
}
inline DoublePair operator*(DoublePair a, DoublePair b) {
    return DoublePair(_mm_mul_pd(a.m_v, b.m_v));
}
// maxpd gives its first operand only where that is greater: exactly a > b ? a : b.
inline DoublePair Larger(DoublePair a, DoublePair b) {
    return DoublePair(_mm_max_pd(a.m_v, b.m_v));
}
inline DoublePair PositivePart(DoublePair e) {
    return DoublePair(_mm_max_pd(e.m_v, _mm_setzero_pd()));
}

#else

inline DoublePair DoublePair::Of(double low, double high) {
    return DoublePair(low, high);
}
inline void DoublePair::LoadFour(const std::int16_t* s, DoublePair& low, DoublePair& high) {
    low = DoublePair(s[0], s[1]);
    high = DoublePair(s[2], s[3]);
}
inline double DoublePair::Low() const {
    return m_low;
}
inline double DoublePair::High() const {
    return m_high;
}
inline DoublePair DoublePair::Lows() const {
    return DoublePair(m_low, m_low);
}
inline DoublePair DoublePair::Highs() const {
    return DoublePair(m_high, m_high);
}
inline DoublePair DoublePair::Swapped() const {
    return DoublePair(m_high, m_low);
}
inline void DoublePair::Store(double* out) const {
    out[0] = m_low;
    out[1] = m_high;
}
inline int DoublePair::Above(DoublePair t) const {
    return (m_low > t.m_low ? 1 : 0) | (m_high > t.m_high ? 2 : 0);
}
inline DoublePair operator+(DoublePair a, DoublePair b) {
    return DoublePair(a.m_low + b.m_low, a.m_high + b.m_high);
}
inline DoublePair operator-(DoublePair a, DoublePair b) {
    return DoublePair(a.m_low - b.m_low, a.m_high - b.m_high);
}
inline DoublePair operator*(DoublePair a, DoublePair b) {
    return DoublePair(a.m_low * b.m_low, a.m_high * b.m_high);
}
inline DoublePair Larger(DoublePair a, DoublePair b) {
    return DoublePair(a.m_low > b.m_low ? a.m_low : b.m_low,
                      a.m_high > b.m_high ? a.m_high : b.m_high);
}
inline DoublePair PositivePart(DoublePair e) {
    return DoublePair(e.m_low > 0 ? e.m_low : 0.0, e.m_high > 0 ? e.m_high : 0.0);
}

#endif

} // namespace zav
