// Detector throughput in samples per second on one core, and the fast kernel's agreement
// with the plain per-sample loop (relative difference of every result at most 1e-12).
#include "ReferenceDetectors.h"
#include "measure/WaveAnalysis.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr std::int32_t kRate = 48000;
const double kPi = std::acos(-1.0);

// Gaussian noise on a DC offset, three times louder for 0.1 s in every second, like a
// receiver's audio with a burst of interference.
std::vector<std::int16_t> noise(std::size_t count, unsigned seed) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> g(0, 3000);
    std::vector<std::int16_t> v(count);
    for (std::size_t i = 0; i < count; ++i) {
        double x = 150 + g(rng);
        if ((i / 4800) % 10 == 3)
            x *= 3;
        v[i] = static_cast<std::int16_t>(std::clamp(std::lround(x), -32768L, 32767L));
    }
    return v;
}

// Full-band uniform noise, as `sox -n synth whitenoise vol 0.3` makes it.
std::vector<std::int16_t> whiteNoise(std::size_t count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-0.3 * 32768, 0.3 * 32768);
    std::vector<std::int16_t> v(count);
    for (auto& x : v)
        x = static_cast<std::int16_t>(std::lround(u(rng)));
    return v;
}

std::vector<std::int16_t> sine(std::size_t count) {
    std::vector<std::int16_t> v(count);
    for (std::size_t i = 0; i < count; ++i)
        v[i] = static_cast<std::int16_t>(
            std::lround(20000 * std::sin(2 * kPi * 1000 * static_cast<double>(i) / kRate)));
    return v;
}

const std::vector<std::int16_t>& noiseBuffer() {
    static const std::vector<std::int16_t> v = noise(std::size_t{1} << 22, 7);
    return v;
}

const std::vector<std::int16_t>& whiteNoiseBuffer() {
    static const std::vector<std::int16_t> v = whiteNoise(std::size_t{1} << 22, 11);
    return v;
}

const std::vector<std::int16_t>& sineBuffer() {
    static const std::vector<std::int16_t> v = sine(std::size_t{1} << 22);
    return v;
}

void detectorPass(benchmark::State& state, const std::vector<std::int16_t>& data) {
    for (auto _ : state) {
        zav::Measurement m;
        zav::AnalyseSamples(data.data(), data.size(), kRate, 7.0, m);
        benchmark::DoNotOptimize(m.QP);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(data.size()));
}

void referencePass(benchmark::State& state, const std::vector<std::int16_t>& data) {
    for (auto _ : state) {
        zav::Measurement m;
        zav::test::ReferenceDetectors(data, static_cast<std::int64_t>(data.size()), kRate, 7.0, m);
        benchmark::DoNotOptimize(m.QP);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(data.size()));
}

void BM_DetectorsNoise(benchmark::State& s) {
    detectorPass(s, noiseBuffer());
}
void BM_DetectorsWhiteNoise(benchmark::State& s) {
    detectorPass(s, whiteNoiseBuffer());
}
void BM_DetectorsSine(benchmark::State& s) {
    detectorPass(s, sineBuffer());
}
void BM_ReferenceLoopNoise(benchmark::State& s) {
    referencePass(s, noiseBuffer());
}
BENCHMARK(BM_DetectorsNoise)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DetectorsWhiteNoise)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DetectorsSine)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReferenceLoopNoise)->Unit(benchmark::kMillisecond);

// Compared over 2^17 samples (2.7 s): over much longer buffers the plain loop's one running
// sum collects more rounding than 1e-12 by itself, and the split sums of the kernel are the
// closer ones to the exact value.
bool agrees(const std::vector<std::int16_t>& whole, double frequencyMHz, const char* what) {
    const std::vector<std::int16_t> data(whole.begin(), whole.begin() + (1 << 17));
    zav::Measurement fast, plain;
    zav::AnalyseSamples(data.data(), data.size(), kRate, frequencyMHz, fast);
    zav::test::ReferenceDetectors(data, static_cast<std::int64_t>(data.size()), kRate, frequencyMHz,
                                  plain);
    bool ok = true;
    auto check = [&](const char* name, double a, double b) {
        const double rel = std::fabs(a - b) / std::max(std::fabs(b), 1e-300);
        std::printf("%-6s %-4s kernel %.17g plain %.17g rel %.2e\n", what, name, a, b, rel);
        if (!(rel <= 1e-12))
            ok = false;
    };
    check("Avg", fast.Avg, plain.Avg);
    check("Ms", fast.Ms, plain.Ms);
    check("QP", fast.QP, plain.QP);
    check("Pk", fast.Pk, plain.Pk);
    return ok;
}

} // namespace

int main(int argc, char** argv) {
    const bool ok = agrees(noiseBuffer(), 7.0, "noise") && agrees(noiseBuffer(), 50.0, "noise") &&
                    agrees(whiteNoiseBuffer(), 7.0, "white") && agrees(sineBuffer(), 7.0, "sine");
    if (!ok) {
        std::fprintf(stderr, "the kernel disagrees with the plain loop; not timing it\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
