// Peak memory of a long monitoring run: 1,000 cycles at 1-second intervals on three
// frequencies, on file input, with Hamlib's dummy rig tuned in-process and the data log
// written, the clock accelerated so that the run takes seconds. Target: peak memory grows by
// less than 1 MB from cycle 10 to cycle 1,000.   zav_monitor_memory [CYCLES]
#include "app/Monitor.h"
#include "measure/FileAudioInput.h"
#include "platform/SilentDialogs.h"
#include "qt/services/HamlibRig.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace zav;
namespace fs = std::filesystem;

namespace {

// Time passes as fast as the run asks it to.
struct AcceleratedClock : MonitorClock {
    std::time_t Now() override { return 1790000000 + static_cast<std::time_t>(ms / 1000); }
    void Sleep(std::chrono::milliseconds d) override { ms += d.count(); }
    long long ms = 0;
};

long peakKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// 16-bit mono PCM of Gaussian-like noise (sum of uniforms) at the given RMS in counts.
void writeNoise(const std::string& path, double rms, unsigned seed) {
    constexpr int rate = 8000, count = 8000;
    std::vector<std::int16_t> samples(count);
    std::srand(seed);
    for (auto& s : samples) {
        double sum = 0;
        for (int i = 0; i < 12; ++i)
            sum += std::rand() / static_cast<double>(RAND_MAX);
        s = static_cast<std::int16_t>(std::lround((sum - 6) * rms));
    }
    auto le32 = [](std::ofstream& o, std::uint32_t v) {
        for (int i = 0; i < 4; ++i)
            o.put(static_cast<char>(v >> (8 * i)));
    };
    auto le16 = [](std::ofstream& o, std::uint16_t v) {
        o.put(static_cast<char>(v));
        o.put(static_cast<char>(v >> 8));
    };
    std::ofstream o(path, std::ios::binary);
    o << "RIFF";
    le32(o, 36 + 2 * count);
    o << "WAVEfmt ";
    le32(o, 16);
    le16(o, 1);
    le16(o, 1);
    le32(o, rate);
    le32(o, rate * 2);
    le16(o, 2);
    le16(o, 16);
    o << "data";
    le32(o, 2 * count);
    o.write(reinterpret_cast<const char*>(samples.data()), 2 * count);
}

} // namespace

int main(int argc, char** argv) {
    const int cycles = argc > 1 ? std::atoi(argv[1]) : 1000;
    const fs::path dir =
        fs::temp_directory_path() / ("zav-monitor-memory-" + std::to_string(getpid()));
    fs::create_directories(dir);
    writeNoise((dir / "soundcard.wav").string(), 3, 1);
    writeNoise((dir / "receiver.wav").string(), 100, 2);
    writeNoise((dir / "external.wav").string(), 800, 3);

    SilentDialogs dialogs;
    int recordings = 0;
    FileAudioInput input(dialogs, [&]() -> std::optional<std::string> {
        ++recordings;
        return (dir / (recordings == 1   ? "soundcard.wav"
                       : recordings <= 4 ? "receiver.wav"
                                         : "external.wav"))
            .string();
    });
    HamlibRig rig(1, "");
    AcceleratedClock clock;
    std::atomic<bool> stop{false};

    MonitorSetup setup;
    setup.setup.Bandwidth = "2700";
    setup.setup.RxNF = "6.00";
    setup.setup.AntGain = "0.00";
    setup.setup.Attenuator = "0.0";
    setup.setup.Loss = "0.0";
    setup.setup.AGC = "30";
    setup.setup.Interval = "8";
    setup.dataLogPath = (dir / "log.tab").string();
    setup.tempWave = (dir / "~step").string();
    setup.askOperator = false;
    MonitorPlan plan;
    plan.frequenciesMHz = {3.5, 5.3, 7.0};
    plan.intervalSeconds = 1;
    plan.count = cycles;
    plan.rigModel = 1;

    Monitor monitor(setup, plan, {dialogs, input, &rig, nullptr, nullptr, clock, stop});
    long atTen = 0;
    int lastCycle = 0;
    monitor.onStatus = [&](const MonitorStatus& s) {
        if (s.cycle != lastCycle && s.cycle == 11)
            atTen = peakKb(); // cycle 10 is over
        lastCycle = s.cycle;
    };
    monitor.Run();
    const long atEnd = peakKb();
    const MonitorStatus& s = monitor.status();
    std::error_code ignored;
    fs::remove_all(dir, ignored);

    std::printf("cycles %d, logged %d, failed verdicts %d\n", s.cycle, s.logged, s.failedVerdicts);
    std::printf("peak memory after cycle 10: %ld kB, after cycle %d: %ld kB, growth %ld kB\n",
                atTen, s.cycle, atEnd, atEnd - atTen);
    const bool ok = s.logged == 3 * cycles && atEnd - atTen < 1024;
    std::printf("%s: growth under 1 MB and every observation logged\n", ok ? "PASS" : "FAIL");
    return ok ? 0 : 1;
}
