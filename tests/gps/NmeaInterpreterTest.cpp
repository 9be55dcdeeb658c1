// The example sentences: `zavcli nmea` against an expected file.
#include "gps/NmeaInterpreter.h"

#include "NmeaTestSupport.h"
#include "gps/NmeaEventText.h"
#include "gps/RuntimeError.h"
#include "platform/TextHelpers.h"

#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <tuple>

using zav::test::Sentence;

namespace {

const std::string kGga = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47";

struct Interpreter : zav::NmeaInterpreter {
    std::ostringstream m_out;
    zav::NmeaEventText m_text{m_out};
    Interpreter() : NmeaInterpreter(m_text) {}
    std::string events() { // those raised since the last call
        const std::string s = m_out.str();
        return m_out.str(""), s;
    }
    // The number of the error thrown, else 0 parsed, -1 refused.
    int outcome(const std::string& sentence) {
        try {
            return parseSentence(sentence) ? 0 : -1;
        } catch (const zav::RuntimeError& e) {
            return e.Number();
        }
    }
};

std::string valuesOf(const std::string& events, const std::string& prefix) {
    std::istringstream in(events);
    std::string out;
    for (std::string line; std::getline(in, line);)
        if (line.rfind(prefix, 0) == 0)
            out += (out.empty() ? "" : " ") + line.substr(line.find('\t') + 1);
    return out;
}

} // namespace

TEST(NmeaInterpreter, ChecksumRules) {
    Interpreter nmea;
    ASSERT_TRUE(nmea.parseSentence(kGga));
    EXPECT_EQ(nmea.Words().size(), 15u);
    EXPECT_EQ(nmea.Latitude(), "N 48\u00B0 07.038'");
    nmea.events();
    // A wrong digit, a missing or one-digit checksum: all refused; "$" is left out of the sum.
    const std::string body = kGga.substr(0, kGga.size() - 2);
    for (const std::string& bad : {body + "48", kGga.substr(0, kGga.size() - 3), body + "4",
                                   std::string(), std::string("$")})
        EXPECT_FALSE(nmea.parseSentence(bad)) << bad;
    EXPECT_EQ(nmea.events(), "");
    EXPECT_TRUE(nmea.parseSentence(std::string(kGga).insert(10, "$")));

    // With a "*", capital hex; without, the last two are summed too and compared with.
    const std::string lettered = Sentence("GPGLL,4916.45,S,12311.12,W,225444,A"); // "*2C"
    EXPECT_TRUE(nmea.parseSentence(lettered) &&
                !nmea.parseSentence(lettered.substr(0, lettered.size() - 2) +
                                    zav::LowerAscii(lettered.substr(lettered.size() - 2))));
    int accepted = 0;
    for (int second = 10; second < 60; ++second) {
        const std::string fields =
            "GPGLL,4916.45,N,12311.12,W,2254" + std::to_string(second) + ",A";
        for (int code = 0; code < 256; ++code) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02X", code);
            const std::string s = "$" + fields + "," + hex;
            const bool matches = Sentence(s.substr(1)).substr(s.size() + 1) == hex;
            nmea.events();
            ASSERT_EQ(nmea.parseSentence(s), matches) << s;
            accepted += matches;
            EXPECT_EQ(nmea.events().find("FixObtained\n") != std::string::npos, matches) << s;
        }
    }
    EXPECT_GT(accepted, 0);
}

TEST(NmeaInterpreter, ErrorsLeaveParseSentenceAfterTheEventsBeforeThem) {
    Interpreter nmea;
    using C = std::tuple<const char*, int, const char*>;
    for (const auto& [body, error, events] :
         {C{"GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,3", 9, nullptr},
          C{"GPGGA,123519,4807.038,N,01131.000,E,1,08,O.9,,,,,,", 13,
            "PositionFixReceived\tValid SPS\nTimeChanged\t12:35:19 GMT\n"},
          C{"GPGGA,1,2,N,3,E,1,70000,1,,,,,,", 6, nullptr},
          C{"GPGGA,,,,,,,2.5,,,,,,3.5,", 0, "SatellitesUsedReceived\t2\nDGPSageReceived\t4\n"},
          C{"GPGGA,123519,4807.038,N", 9, ""},
          C{"GPGSA,A,3,04,05", 9,
            "AutoManModeReceived\tAuto 2D/3D\nMode3DReceived\t3D\nCh1SatReceived\t4\n"
            "Ch2SatReceived\t5\n"},
          C{"GPGSV,1,1,01,x7,10,100,40", 13, nullptr}, C{"GPGSV,1,9000,01", 6, nullptr},
          C{"GPGSV,1", 9, nullptr}}) {
        EXPECT_EQ(nmea.outcome(Sentence(body)), error) << body;
        const std::string raised = nmea.events();
        EXPECT_EQ(raised, events ? events : raised) << body;
    }
    EXPECT_EQ(nmea.TotalMessages() * 10000 + nmea.MessageNumber(), 19000);
}

TEST(NmeaInterpreter, HostileInputOnlyEverEndsInItsOwnErrors) {
    ZAV_NEED_SHARED_DATA();
    // Real sentences cut, glued and sprinkled with any bytes, with checksums the parsers pass.
    std::vector<std::string> seeds;
    std::ifstream capture(std::string(ZAV_SHARED_DATA_DIR) + "/nmea/haicom-305N.nmea");
    for (std::string line; std::getline(capture, line) && seeds.size() < 200;)
        if (line.size() > 10 && line[0] == '$' && line.find('*') != std::string::npos)
            seeds.push_back(line.substr(1, line.find('*') - 1));
    ASSERT_GT(seeds.size(), 50u);
    std::mt19937 rng(5);
    Interpreter nmea;
    int parsed = 0, errors = 0;
    for (int i = 0; i < 10000; ++i) {
        std::string body = seeds[rng() % seeds.size()];
        const unsigned how = rng() % 4;
        if (how == 0)
            body.resize(rng() % (body.size() + 1));
        else if (how == 1)
            body += "," + seeds[rng() % seeds.size()];
        else
            for (int k = rng() % 4; k >= 0; --k)
                body[rng() % body.size()] = static_cast<char>(rng() % 256);
        const int outcome = nmea.outcome(Sentence(body)); // any other exception fails
        parsed += outcome == 0, errors += outcome > 0;
        nmea.events();
    }
    EXPECT_TRUE(parsed > 500 && errors > 50) << parsed << " " << errors;
}

TEST(NmeaInterpreter, EverySatelliteSystemAndOneEpochOfSeveral) {
    Interpreter nmea;
    const std::string fix = "GGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,";
    for (const char* talker : {"GP", "GN", "GL", "GA", "GB", "BD", "GQ", "QZ"}) {
        EXPECT_TRUE(nmea.parseSentence(Sentence(talker + fix))) << talker;
        EXPECT_EQ(nmea.Talker() + valuesOf(nmea.events(), "HDOP"), talker + std::string("0.9"));
    }
    for (const char* other : {"XX", "GPX", "gp"})
        EXPECT_FALSE(nmea.parseSentence(Sentence(other + fix))) << other;
    nmea.events();

    // One epoch: GPS in two messages, then BeiDou; GPS again begins the next.
    Interpreter sky;
    sky.parseSentence(
        Sentence("GPGSV,2,1,05,01,10,100,40,02,20,200,41,03,30,300,42,04,40,40,43,0"));
    sky.parseSentence(Sentence("GPGSV,2,2,05,05,50,50,44,0"));
    sky.parseSentence(Sentence("BDGSV,1,1,03,01,11,110,30,07,21,210,31,13,31,310,32,0"));
    EXPECT_EQ(sky.CurrentSatellite().talker, "BD");
    std::string events = sky.events();
    EXPECT_EQ(valuesOf(events, "SatellitesInView"), "5 5 8");
    EXPECT_EQ(valuesOf(events, "SatelliteReceived"),
              "1\t1\t100\t10\t40 2\t2\t200\t20\t41 3\t3\t300\t30\t42 4\t4\t40\t40\t43 "
              "5\t5\t50\t50\t44 6\t1\t110\t11\t30 7\t7\t210\t21\t31 8\t13\t310\t31\t32");
    sky.parseSentence(Sentence("GPGSV,1,1,02,01,10,100,40,02,20,200,41"));
    events = sky.events();
    EXPECT_EQ(valuesOf(events, "SatellitesInView") + " " + valuesOf(events, "SatelliteReceived"),
              "2 1\t1\t100\t10\t40 2\t2\t200\t20\t41");
    EXPECT_EQ(sky.SatellitesInView(), 2);

    // One GSA per system fills the channels on; the same system again begins the next epoch.
    using P = std::pair<std::string, const char*>;
    for (const auto& [body, channels] :
         {P{"GNGSA,A,3,01,02,,04,,,,,,,,,1.5,0.9,1.2,1", "1 2 0 4 0 0 0 0 0 0 0 0"},
          P{"GNGSA,A,3,01,07,,,,,,,,,,,1.5,0.9,1.2,4", "1 2 0 4 1 7 0 0 0 0 0 0"},
          P{"GNGSA,A,3,65,66,67,68,69,70,71,72,,,,,1.5,0.9,1.2,2", "1 2 0 4 1 7 65 66 67 68 69 70"},
          P{"GNGSA,A,3,03,,,,,,,,,,,,1.5,0.9,1.2,2", "3 0 0 0 0 0 0 0 0 0 0 0"}, P{"GP" + fix, ""},
          P{"GPGSA,A,3,,09,,,,,,,,,,,1.5,0.9,1.2", "0 9 0 0 0 0 0 0 0 0 0 0"}}) {
        nmea.parseSentence(Sentence(body));
        EXPECT_EQ(valuesOf(nmea.events(), "Ch"), channels) << body;
    }
}
