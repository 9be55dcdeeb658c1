// zavcli measure --calibrate and the P.372 keys of --json, in-process on generated recordings.
#include "CliRun.h"
#include "cli/Commands.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

using namespace zav;
using zav::test::Cli;
namespace fs = std::filesystem;

namespace {

struct Recordings {
    fs::path dir = fs::path(ZAV_BINARY_DIR) / "test-scratch" / "cli-calibrate";
    std::string soundcard, receiver, external;

    // Noise of the given RMS in counts: a quiet sound card, the receiver, the external step.
    explicit Recordings(double externalRms, const std::string& name) {
        fs::create_directories(dir);
        soundcard = write("soundcard.wav", 3, 1);
        receiver = write("receiver.wav", 100, 2);
        external = write(name, externalRms, 3);
    }
    std::string write(const std::string& name, double rms, unsigned seed) const {
        const std::string path = (dir / name).string();
        if (!fs::exists(path))
            test::WriteWave(path, test::Noise(rms, 16000, seed), 8000);
        return path;
    }
    std::string profile(const std::string& name, const std::string& rxNf, const char* attenuator,
                        const char* loss) const {
        const std::string path = (dir / name).string();
        std::ofstream out(path, std::ios::binary);
        out << "[conditions]\r\nReceiver=Test\r\nAntenna=Whip\r\nFeedline=Coax\r\nTester=T\r\n"
               "Location=Here\r\nLat=\r\nLon=\r\nRxNF="
            << rxNf
            << "\r\nBandwidth=2700\r\nFrequency=7.100\r\nAntGain=0.00\r\nAttenuator=" << attenuator
            << "\r\nAGC=20\r\nLoss=" << loss
            << "\r\nEnvironment=Rural\r\nAntFilename=\r\n[options]\r\nVerbose=True\r\n"
               "Samples=False\r\nInterval=1500\r\nAntFact=False\r\nAutoTsv=False\r\n";
        return path;
    }
};

std::map<std::string, std::string> fields(const std::string& text) {
    std::map<std::string, std::string> f;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        const auto tab = line.find('\t');
        if (tab != std::string::npos)
            f[line.substr(0, tab)] = line.substr(tab + 1);
    }
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
    const Recordings r(316, "external-316.wav");
    const std::string before = r.profile("before.zav", "8.00", "3.0", "1.0");

    Cli json;
    ASSERT_EQ(
        json.run({"measure", "--profile", before, "--json", r.soundcard, r.receiver, r.external}),
        kExitOk)
        << json.err.str();
    const double y = jsonNumber(json.out.str(), "yfact");
    ASSERT_GT(y, 5);

    Cli cal;
    ASSERT_EQ(cal.run({"measure", "--profile", before, "--calibrate", "enr:15", r.soundcard,
                       r.receiver, r.external}),
              kExitOk)
        << cal.err.str();
    auto f = fields(cal.out.str());
    ASSERT_EQ(f.size(), 4u) << cal.out.str();
    EXPECT_EQ(cal.out.str().find("Program"), std::string::npos); // figures instead of the report
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
        ASSERT_EQ(other.run({"measure", "--profile", before, "--calibrate", option, r.soundcard,
                             r.receiver, r.external}),
                  kExitOk);
        EXPECT_EQ(fields(other.out.str())["RxNF"], f["RxNF"]) << option;
    }

    // Apply by hand and measure again: the external noise is now the diode's own,
    // T0·(1 + ENR), so Fa = 10·log10(1 + 10^1.5) to within the two decimals of RxNF.
    const std::string after = r.profile("after.zav", f["RxNF"], "3.0", "1.0");
    Cli again;
    ASSERT_EQ(
        again.run({"measure", "--profile", after, "--json", r.soundcard, r.receiver, r.external}),
        kExitOk);
    const std::string out = again.out.str();
    const double fa = jsonNumber(out, "Fa");
    EXPECT_NEAR(fa, 10 * std::log10(1 + std::pow(10.0, 1.5)), 0.0051);
    EXPECT_NEAR(fa, 10 * std::log10(jsonNumber(out, "Text") / 290), 1e-9);
    const auto p372 = out.find("\"P372\":{");
    ASSERT_NE(p372, std::string::npos);
    EXPECT_NE(out.find("\"environment\":\"Rural\"", p372), std::string::npos);
    const double fam = 67.2 - 27.7 * std::log10(7.1);
    EXPECT_NEAR(jsonNumber(out, "Fam", p372), fam, 1e-9);
    EXPECT_NEAR(jsonNumber(out, "lower", p372), fam - 4.6, 1e-9);
    EXPECT_NEAR(jsonNumber(out, "upper", p372), fam + 9.2, 1e-9);
    EXPECT_NEAR(jsonNumber(out, "delta", p372), fa - fam, 1e-9);
    EXPECT_NEAR(jsonNumber(out, "galactic", p372), 52 - 23 * std::log10(7.1), 1e-9);
    EXPECT_NE(out.find("\"inRange\":true", p372), std::string::npos);

    // --json with --calibrate carries the figures at full precision.
    Cli both;
    ASSERT_EQ(both.run({"measure", "--profile", before, "--json", "--calibrate", "enr:15",
                        r.soundcard, r.receiver, r.external}),
              kExitOk);
    const auto calibration = both.out.str().find("\"calibration\":{");
    ASSERT_NE(calibration, std::string::npos);
    EXPECT_NEAR(jsonNumber(both.out.str(), "RxNF", calibration), nf, 1e-9);
    EXPECT_NE(both.out.str().find("\"refusal\":\"\"", calibration), std::string::npos);
}

TEST(MeasureCalibrate, RefusalsAndBadValues) {
    // External below the receiver's own noise with a noiseless, lossless receiver: the
    // calculation still gives results, but the source made no rise.
    const Recordings weak(95, "external-95.wav");
    const std::string plain = weak.profile("plain.zav", "0.00", "0.0", "0.0");
    Cli w;
    EXPECT_EQ(w.run({"measure", "--profile", plain, "--calibrate", "carrier:-100", weak.soundcard,
                     weak.receiver, weak.external}),
              kExitFailed);
    EXPECT_NE(w.err.str().find("Source too weak: no rise over the receiver noise."),
              std::string::npos);
    auto f = fields(w.out.str());
    EXPECT_LT(std::strtod(f["YFactorDb"].c_str(), nullptr), 0);
    EXPECT_EQ(f["RxNF"], "");

    // A bandwidth of 0 is refused before anything is measured, and the reason is said.
    std::ifstream plainIn(plain, std::ios::binary);
    std::string zeroText((std::istreambuf_iterator<char>(plainIn)), {});
    zeroText.replace(zeroText.find("Bandwidth=2700"), 14, "Bandwidth=0");
    const std::string zeroPath = plain + ".zero.zav";
    std::ofstream(zeroPath, std::ios::binary) << zeroText;
    Cli zero;
    EXPECT_EQ(
        zero.run({"measure", "--profile", zeroPath, weak.soundcard, weak.receiver, weak.external}),
        kExitFailed);
    EXPECT_NE(zero.err.str().find("Value error: Bandwidth must be > 0"), std::string::npos)
        << zero.err.str();

    // Limits off: the dialog is not offered.
    Cli off;
    EXPECT_EQ(off.run({"measure", "--profile", plain, "--limits", "off", "--calibrate", "enr:15",
                       weak.soundcard, weak.receiver, weak.external}),
              kExitFailed);
    EXPECT_NE(off.err.str().find("no results to calibrate from"), std::string::npos);
    EXPECT_TRUE(off.out.str().empty());

    // No calculation, no P.372 comparison in the JSON.
    Cli none;
    EXPECT_EQ(none.run({"measure", "--json", weak.external, weak.soundcard, weak.receiver}),
              kExitFailed);
    EXPECT_NE(none.out.str().find("\"Fa\":null,\"P372\":null"), std::string::npos);

    Cli nan;
    EXPECT_EQ(nan.run({"measure", "--calibrate", "enr:abc", weak.soundcard, weak.receiver,
                       weak.external}),
              kExitUsage);
    EXPECT_NE(nan.err.str().find("Value error: Level must be a number"), std::string::npos);
    EXPECT_TRUE(nan.out.str().empty());
    for (const char* bad : {"watts:3", "enr", "15", ""}) {
        Cli u;
        EXPECT_EQ(
            u.run({"measure", "--calibrate", bad, weak.soundcard, weak.receiver, weak.external}),
            kExitUsage)
            << bad;
        EXPECT_NE(u.err.str().find("--calibrate takes"), std::string::npos) << bad;
    }
    Cli missing;
    EXPECT_EQ(missing.run({"measure", weak.soundcard, weak.receiver, weak.external, "--calibrate"}),
              kExitUsage);
}
