// zavcli gps --file on the real receiver captures, checked against a capture worked out here
// on its own from the dialog's rules (whole lines, GGA of any system only, HDOP as shown, the
// timer rule).
#include "CliRun.h"
#include "cli/Commands.h"
#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

using namespace zav;
using zav::test::Cli;

namespace {

const std::string kCaptures = std::string(ZAV_SHARED_DATA_DIR) + "/nmea/";

struct Expected {
    int count = 0;
    double sumLat = 0, sumLon = 0, sumH2 = 0;
};

std::vector<std::string> split(const std::string& text, const std::string& by) {
    std::vector<std::string> parts;
    std::size_t from = 0, at;
    while ((at = text.find(by, from)) != std::string::npos) {
        parts.push_back(text.substr(from, at - from));
        from = at + by.size();
    }
    parts.push_back(text.substr(from));
    return parts;
}

bool checksumOk(const std::string& s) {
    unsigned sum = 0;
    for (char c : s) {
        if (c == '*')
            break;
        if (c != '$')
            sum ^= static_cast<unsigned char>(c);
    }
    char hex[8];
    std::snprintf(hex, sizeof hex, "%02X", sum);
    return s.size() >= 2 && s.compare(s.size() - 2, 2, hex) == 0;
}

// The capture of `file` with wanted accuracy `acc`, worked out independently.
Expected capture(const std::string& file, int acc) {
    const double maxHdop = acc > 0 ? acc / 3.0 : 0.0;
    Expected e;
    bool fixValid = false;
    std::string hdopShown;

    auto gga = [&](const std::string& s) {
        if (!checksumOk(s))
            return;
        const std::vector<std::string> f = split(s.size() > 3 ? s.substr(0, s.size() - 3) : s, ",");
        static const std::string talkers = "GP GN GL GA GB BD GQ QZ";
        if (f[0].size() != 6 || f[0].compare(3, 3, "GGA") != 0 ||
            talkers.find(f[0].substr(1, 2)) == std::string::npos || f.size() < 9)
            return; // too short: the interpreter stops before the HDOP
        if (!f[6].empty()) {
            fixValid = f[6] == "1" || f[6] == "2" || f[6] == "3";
            if (!fixValid)
                hdopShown.clear();
        }
        if (!f[8].empty()) {
            char* end = nullptr;
            std::strtod(f[8].c_str(), &end);
            if (*end != '\0' || f[8].find_first_not_of("0123456789.+-eE ") != std::string::npos)
                return; // not a number: the interpreter stops here
            char shown[32];
            std::snprintf(shown, sizeof shown, "%.1f", std::atof(f[8].c_str()));
            hdopShown = shown;
        }
        if (f[2].empty() || f[3].empty() || f[4].empty() || f[5].empty())
            return;
        const double h = hdopShown.empty() ? 0 : std::atof(hdopShown.c_str());
        if (!(h <= maxHdop && fixValid))
            return;
        double lat = std::atof(f[2].substr(0, 2).c_str()) + std::atof(f[2].c_str() + 2) / 60;
        double lon = std::atof(f[4].substr(0, 3).c_str()) + std::atof(f[4].c_str() + 3) / 60;
        if (f[3][0] == 'S')
            lat = -lat;
        if (f[5][0] == 'W')
            lon = -lon;
        e.count++, e.sumLat += lat, e.sumLon += lon, e.sumH2 += h * h;
    };

    std::ifstream in(file, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t a = line.find_first_not_of(' ');
        const std::string t =
            a == std::string::npos ? "" : line.substr(a, line.find_last_not_of(' ') - a + 1);
        if (t.size() > 6 && t[0] == '$')
            gga(t);
        if (e.count > 1 && acc > 0) {
            char shown[32];
            std::snprintf(shown, sizeof shown, "%.2f", 4 * std::sqrt(e.sumH2 / e.count));
            if (std::atof(shown) <= acc)
                break;
        }
    }
    return e;
}

} // namespace

TEST(GpsCommand, RealCapturesAgreeWithAnIndependentCapture) {
    ZAV_NEED_SHARED_DATA();
    int averaged = 0;
    for (const char* name :
         {"haicom-305N.nmea", "garmin48.nmea", "magellan315.nmea", "nmea-fuzzy-cases.nmea",
          "gp-320fw-2019-04-07-coldboot.nmea", "eXplorist110.nmea", "firefly-II.nmea",
          "garmin-geko201.nmea", "quectel-l76k-gnss.nmea"}) {
        for (int acc : {0, 3, 4, 5, 7, 8, 10, 30}) {
            const std::string file = kCaptures + name;
            const Expected e = capture(file, acc);
            Cli c;
            const int status = c.run({"gps", "--file", file, "--acc", std::to_string(acc)});
            SCOPED_TRACE(std::string(name) + " --acc " + std::to_string(acc));
            if (e.count == 0) {
                EXPECT_EQ(status, kExitFailed);
                EXPECT_EQ(c.out.str(), "");
                EXPECT_EQ(c.err.str(), "zavcli gps: no fix met the accuracy before the time-out\n");
                continue;
            }
            ++averaged;
            const std::vector<std::string> got = split(c.out.str(), "\t");
            ASSERT_EQ(got.size(), 4u) << c.out.str();
            EXPECT_EQ(status, kExitOk);
            EXPECT_EQ(got[2], std::to_string(e.count));
            EXPECT_NEAR(std::stod(got[0]), e.sumLat / e.count, 5.01e-7);
            EXPECT_NEAR(std::stod(got[1]), e.sumLon / e.count, 5.01e-7);
            EXPECT_NEAR(std::stod(got[3]), 4 * std::sqrt(e.sumH2 / e.count), 0.00501);
        }
    }
    EXPECT_GE(averaged, 27); // most runs average something: the check is not vacuous
}
