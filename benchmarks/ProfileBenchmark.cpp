// Loading profiles of many sections: a profile up to the size cap (4 MiB, about 250,000
// short sections) must load in well under a second. Reported per load, with the sections
// per second, for 1,000, 100,000 and a file at the cap.
#include "config/IniFile.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

// Up to `sections` sections, as many as fit under `capBytes`; `written` gets their count.
std::string profileText(std::size_t sections, std::size_t capBytes, std::size_t& written) {
    std::string text;
    for (written = 0; written < sections; ++written) {
        const std::string i = std::to_string(written);
        const std::string section = "[s" + i + "]\r\nk=" + i + "\r\n";
        if (text.size() + section.size() > capBytes)
            break;
        text += section;
    }
    return text;
}

void LoadProfile(benchmark::State& state) {
    std::size_t sections = 0;
    const std::string text = profileText(static_cast<std::size_t>(state.range(0)),
                                         zav::IniFile::kMaxFileBytes, sections);
    const auto path = std::filesystem::temp_directory_path() /
                      ("zav-profile-bench-" + std::to_string(getpid()) + ".zav");
    std::ofstream(path, std::ios::binary) << text;
    for (auto _ : state) {
        zav::IniFile ini;
        if (!ini.Load(path.string()) || !ini.Value("s0", "k")) {
            state.SkipWithError("the profile did not load");
            break;
        }
        benchmark::DoNotOptimize(ini);
    }
    std::filesystem::remove(path);
    state.counters["sections"] = static_cast<double>(sections);
    state.counters["bytes"] = static_cast<double>(text.size());
    state.counters["sections/s"] = benchmark::Counter(
        static_cast<double>(sections), benchmark::Counter::kIsIterationInvariantRate);
}

} // namespace

BENCHMARK(LoadProfile)->Arg(1000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
