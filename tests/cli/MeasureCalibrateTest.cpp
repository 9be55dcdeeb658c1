// zavcli measure --calibrate and the P.372 keys of --json, in-process on generated recordings:
// a noise diode's figures, applied by hand, must make the next measurement read the diode.
#include "CliRun.h"
#include "cli/Commands.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

using namespace zav;
using zav::test::Cli;

namespace {

// A quiet sound card, the receiver and the external step as noise of the given RMS in counts.
struct Recordings {
    test::TempDir dir;
    std::string soundcard = write("soundcard.wav", 3, 1), receiver = write("receiver.wav", 100, 2);
    std::string external;
    explicit Recordings(double externalRms) : external(write("external.wav", externalRms, 3)) {}
    std::string write(const std::string& name, double rms, unsigned seed) const {
        const std::string path = (dir.path / name).string();
        test::WriteWave(path, test::Noise(rms, 16000, seed), 8000);
        return path;
    }
    std::string profile(const std::string& rxNf, const char* attenuator, const char* loss) const {
        const std::string path = (dir.path / ("nf" + rxNf + ".zav")).string();
        std::ofstream(path, std::ios::binary)
            << "[conditions]\r\nRxNF=" << rxNf << "\r\nBandwidth=2700\r\nFrequency=7.100\r\n"
            << "AntGain=0.00\r\nAttenuator=" << attenuator << "\r\nLoss=" << loss
            << "\r\nEnvironment=Rural\r\n";
        return path;
    }
    // zavcli measure with `options`, then the three recordings.
    int run(Cli& c, std::vector<std::string> options) const {
        options.insert(options.begin(), "measure");
        options.insert(options.end(), {soundcard, receiver, external});
        return c.run(options);
    }
};

std::map<std::string, std::string> fields(const std::string& text) {
    std::map<std::string, std::string> f;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (const auto tab = line.find('\t'); tab != std::string::npos)
            f[line.substr(0, tab)] = line.substr(tab + 1);
    return f;
}

// The number after "key": in `json`, from `from` on.
double jsonNumber(const std::string& json, const std::string& key, std::size_t from = 0) {
    const auto at = json.find("\"" + key + "\":", from);
    EXPECT_NE(at, std::string::npos) << key;
    return at == std::string::npos ? NAN : std::strtod(json.c_str() + at + key.size() + 3, nullptr);
}

} // namespace

TEST(MeasureCalibrate, NoiseDiodeRoundTripAndItsSiteComparison) {
    const Recordings r(316);
    const std::string before = r.profile("8.00", "3.0", "1.0");
    Cli json;
    ASSERT_EQ(r.run(json, {"--profile", before, "--json"}), kExitOk) << json.err.str();
    const double y = jsonNumber(json.out.str(), "yfact");
    ASSERT_GT(y, 5);

    Cli cal;
    ASSERT_EQ(r.run(cal, {"--profile", before, "--calibrate", "enr:15"}), kExitOk) << cal.err.str();
    auto f = fields(cal.out.str());
    ASSERT_EQ(f.size(), 4u) << cal.out.str(); // the figures instead of the report
    // Y-factor method and the Friis cascade: NF = ENR − 10·log10(Y − 1) − loss ahead.
    const double nf = 15 - 10 * std::log10(y - 1) - 4.0;
    EXPECT_EQ(f["RxNF"], Format(nf, "0.00"));
    EXPECT_EQ(f["SystemNF"], Format(nf + 4.0, "0.00"));
    EXPECT_EQ(f["YFactorDb"], Format(10 * std::log10(y), "0.00"));
    EXPECT_EQ(f["NoiseFloor"],
              Format(nf + 10 * std::log10(1.3806504e-23 * 290 * 2700 * 1000), "0.00"));
    // The same source described as a density or a carrier in the set-up bandwidth.
    const double density = NoiseDensity + 15;
    for (const std::string& option :
         {"density:" + Format(density, "0.000000"),
          "carrier:" + Format(density + 10 * std::log10(2700.0), "0.000000")}) {
        Cli other;
        ASSERT_EQ(r.run(other, {"--profile", before, "--calibrate", option}), kExitOk);
        EXPECT_EQ(fields(other.out.str())["RxNF"], f["RxNF"]) << option;
    }
    Cli both; // with --json, the figures at full precision
    ASSERT_EQ(r.run(both, {"--profile", before, "--json", "--calibrate", "enr:15"}), kExitOk);
    const auto calibration = both.out.str().find("\"calibration\":{");
    ASSERT_NE(calibration, std::string::npos);
    EXPECT_NEAR(jsonNumber(both.out.str(), "RxNF", calibration), nf, 1e-9);

    // Applied by hand, the external noise is now the diode's own, T0·(1 + ENR), so
    // Fa = 10·log10(1 + 10^1.5) to within the two decimals of RxNF.
    Cli again;
    ASSERT_EQ(r.run(again, {"--profile", r.profile(f["RxNF"], "3.0", "1.0"), "--json"}), kExitOk);
    const std::string out = again.out.str();
    const double fa = jsonNumber(out, "Fa");
    EXPECT_NEAR(fa, 10 * std::log10(1 + std::pow(10.0, 1.5)), 0.0051);
    EXPECT_NEAR(fa, 10 * std::log10(jsonNumber(out, "Text") / 290), 1e-9);
    const auto p372 = out.find("\"P372\":{");
    ASSERT_NE(p372, std::string::npos);
    EXPECT_NE(out.find("\"environment\":\"Rural\"", p372), std::string::npos);
    const double fam = 67.2 - 27.7 * std::log10(7.1);
    for (const auto& [key, value] : {std::pair{"Fam", fam},
                                     {"lower", fam - 4.6},
                                     {"upper", fam + 9.2},
                                     {"delta", fa - fam},
                                     {"galactic", 52 - 23 * std::log10(7.1)}})
        EXPECT_NEAR(jsonNumber(out, key, p372), value, 1e-9) << key;
    EXPECT_NE(out.find("\"inRange\":true", p372), std::string::npos);
}

TEST(MeasureCalibrate, ASourceBelowTheReceiverNoiseIsTooWeak) {
    // With a noiseless, lossless receiver the calculation still gives results, but the
    // source made no rise.
    const Recordings weak(95);
    Cli w;
    EXPECT_EQ(weak.run(w, {"--profile", weak.profile("0.00", "0.0", "0.0"), "--calibrate",
                           "carrier:-100"}),
              kExitFailed);
    EXPECT_NE(w.err.str().find("Source too weak: no rise over the receiver noise."),
              std::string::npos);
    auto f = fields(w.out.str());
    EXPECT_LT(std::strtod(f["YFactorDb"].c_str(), nullptr), 0);
    EXPECT_EQ(f["RxNF"], "");
}
