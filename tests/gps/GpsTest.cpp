#include "NmeaTestSupport.h"
#include "config/SetupRecord.h"
#include "gps/GetPositionModel.h"
#include "gps/GpsSetupModel.h"
#include "gps/NmeaEventText.h"
#include "gps/NmeaInterpreter.h"
#include "gps/RuntimeError.h"
#include "platform/SerialPort.h"
#include "platform/TextHelpers.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <tuple>

using zav::CellColour;
using zav::GetPositionModel;
using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::FakeBeeper;
using zav::test::Sentence;
using Result = GetPositionModel::Result;

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

struct FakeSerialPort : zav::SerialPort {
    int openError = 0, commPort = 0;
    std::string settings, device;
    bool open = false;
    ReceiveHandler receive;
    int SetSettings(const std::string& s) override { return settings = s, 0; }
    int SetCommPort(int n) override { return commPort = n, 0; }
    int SetDevice(const std::string& d) override { return device = d, 0; }
    int SetPortOpen(bool o) override { return o && openError ? openError : (open = o, 0); }
    bool PortOpen() const override { return open; }
    void SetReceiveHandler(ReceiveHandler h) override { receive = std::move(h); }
    void SetErrorHandler(ErrorHandler) override {}
    std::vector<std::string> ListPorts() const override { return {}; }
};

// A GGA fix at signed decimal degrees, written as a receiver writes it.
std::string gga(double latDeg, double lonDeg, double hdop, int quality = 1) {
    char body[160];
    const double alat = std::fabs(latDeg), alon = std::fabs(lonDeg);
    std::snprintf(body, sizeof body,
                  "GPGGA,123519.00,%02d%07.4f,%c,%03d%07.4f,%c,%d,08,%.1f,545.4,M,46.9,M,,",
                  static_cast<int>(alat), (alat - std::floor(alat)) * 60, latDeg < 0 ? 'S' : 'N',
                  static_cast<int>(alon), (alon - std::floor(alon)) * 60, lonDeg < 0 ? 'W' : 'E',
                  quality, hdop);
    return Sentence(body) + "\r\n";
}

struct Dialog {
    GpsSettings settings;
    FakeSerialPort port;
    FakeBeeper beeper;
    std::unique_ptr<GetPositionModel> model;
    explicit Dialog(std::int16_t acc = 10, bool beepOption = true, char separator = '.') {
        settings.Acc = acc;
        model = std::make_unique<GetPositionModel>(settings, port, beeper, beepOption, separator);
        model->open();
    }
    void receive(const std::string& chunk) { port.receive(chunk); } // as the serial control
    void send(const std::string& body) { receive(Sentence(body) + "\r\n"); }
    void ticks(int n) {
        for (; n > 0; --n)
            model->onClockTick();
    }
};

} // namespace

// The example sentences: `zavcli nmea` against an expected file.
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
          C{"GPGSV,1", 9, nullptr}, C{"GPRMC,,,,,,,,,230394", 0, "DateChanged\t23/03/94\n"}}) {
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
        parsed += outcome == 0, errors += outcome > 0, nmea.events();
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

TEST(GetPosition, APortThatCannotBeOpenedOrStaysSilentSaysWhy) {
    using P = std::pair<int, std::string>;
    for (const auto& [error, said] :
         {P{zav::kSerialPortInUse, "Error: Port In Use"},
          P{zav::kSerialPermissionDenied, "Error: Permission denied on /dev/ttyACM0: add your user "
                                          "to the dialout group (sudo usermod -aG dialout $USER), "
                                          "then log out and in again"}}) {
        FakeSerialPort refusing;
        refusing.openError = error;
        FakeBeeper beeper;
        GpsSettings settings;
        settings.Device = "/dev/ttyACM0", settings.Speed = 115200;
        GetPositionModel denied(settings, refusing, beeper, true);
        denied.open();
        EXPECT_EQ(refusing.settings + " " + refusing.device + " " + denied.record,
                  "115200,N,8,1 /dev/ttyACM0 " + said);
    }
    Dialog d;
    d.ticks(4), d.receive("$GP"), d.ticks(5); // anything at all is data
    EXPECT_EQ(d.model->ErrorsShown(), 0u);
    d.ticks(10);
    EXPECT_EQ(d.model->record, "Error: No data from port 1 for 5 s: check that the receiver is "
                               "on, on this port, at 4800 baud");
    EXPECT_TRUE(d.model->ErrorsShown() == 1 && d.model->result() == Result::Open);
}

TEST(GetPosition, HdopColoursAndAcceptance) {
    // Acc 10: red above 3.333, normal to 2.5; Acc 0: red above 5, normal to 2, only 0 taken.
    using C = std::tuple<std::int16_t, const char*, CellColour, bool>;
    const CellColour red = CellColour::Red, orange = CellColour::Orange,
                     normal = CellColour::WindowText;
    for (const auto& [acc, hdop, colour, averaged] :
         {C{10, "3.0", orange, true}, C{10, "2.5", normal, true}, C{10, "3.4", red, false},
          C{10, "3.34", red, true}, C{0, "5.1", red, false}, C{0, "5.0", orange, false},
          C{0, "2.1", orange, false}, C{0, "2.0", normal, false}, C{0, "0.0", normal, true},
          C{30, "10.0", orange, true}}) {
        Dialog d(acc);
        d.send(std::string("GPGGA,1,4807.038,N,01131.000,E,1,08,") + hdop + ",,,,,,");
        EXPECT_EQ(d.model->HDOPColour, colour) << acc << " " << hdop;
        EXPECT_EQ(d.model->fixCount + std::to_string(d.model->Count), averaged ? "11" : "0")
            << acc << " " << hdop;
    }
    Dialog off(0);
    off.receive(gga(1, 1, 0.0) + gga(1, 1, 0.0)), off.ticks(1);
    EXPECT_EQ(off.model->result(), Result::Open); // never closes by itself
}

TEST(GetPosition, InvalidFixesAndErrorsStopNothingButThemselves) {
    Dialog d(30);
    d.receive(gga(10, 10, 1.0, 0));
    EXPECT_EQ(d.model->fixText + d.model->HDOP + std::to_string(d.model->Count), "Fix lost1.00");
    d.send("GPGGA,1,,,,,0,,,,,,,,");
    EXPECT_EQ(d.model->HDOP, "");
    d.receive(gga(10, 10, 1.0, 2));
    EXPECT_EQ(d.model->fixText + std::to_string(d.model->Count), "Fix obtained1");
    // RMC and GLL are shown but never parsed: neither their status nor their position counts.
    d.send("GPGLL,1000.000,N,01000.000,E,225444,A");
    d.send("GPRMC,1,V,1000.000,N,01000.000,E,,,,");
    EXPECT_TRUE(d.model->Count == 1 && d.model->FixValid);
    EXPECT_EQ(d.model->record.substr(0, 6), "$GPRMC");

    d.send("GPGGA,1,4807.038,N,01131.000,E,1,08,1.0");
    EXPECT_EQ(d.model->record, "Error: Subscript out of range");
    EXPECT_EQ(d.model->Count, 2); // the position came before the missing fields
    // A failing sentence costs only itself: the fix after it in the same read still counts.
    d.model->handleInput(Sentence("GPGGA,1") + "\r\n" + gga(48, 11, 1.0));
    EXPECT_EQ(d.model->ErrorsShown() * 10 + d.model->Count, 23u);
    d.model->Count = 32767; // the 16-bit limit
    d.receive(gga(48, 11, 1.0));
    EXPECT_EQ(d.model->record + " " + std::to_string(d.model->Count), "Error: Overflow 32767");
}

TEST(GetPosition, AveragesAgainstIndependentSums) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> latD(-89, 89), lonD(-179, 179), spread(-0.01, 0.01);
    for (int run = 0; run < 10; ++run) {
        Dialog d(30); // MaxHdop 10: all accepted; closes only when asked
        const double lat0 = latD(rng), lon0 = lonD(rng);
        double sumLat = 0, sumLon = 0, sumH2 = 0;
        for (int i = 0; i < 12; ++i) {
            // on the 1e-4 minute grid the sentence carries
            const double la = std::round((lat0 + spread(rng)) * 600000) / 600000;
            const double lo = std::round((lon0 + spread(rng)) * 600000) / 600000;
            const double h = (5 + rng() % 36) / 10.0;
            d.receive(gga(la, lo, h));
            sumLat += la, sumLon += lo, sumH2 += h * h;
        }
        ASSERT_EQ(d.model->Count, 12);
        EXPECT_NEAR(std::stod(d.model->lat), sumLat / 12, 5.1e-7);
        EXPECT_NEAR(std::stod(d.model->lon), sumLon / 12, 5.1e-7);
        EXPECT_NEAR(std::stod(d.model->acc), 4 * std::sqrt(sumH2 / 12), 0.0051);
        EXPECT_EQ(d.model->lon.find('.'), d.model->lon[0] == '-' ? 4u : 3u); // "000.000000"
    }
    Dialog south;
    south.send("GPGGA,1,3351.1234,S,00023.0832,W,1,08,1.0,,,,,,");
    EXPECT_EQ(south.model->currentLat + " " + south.model->currentLon, "-33.852057 -000.384720");
}

TEST(GetPosition, TimerEndsTheCaptureOverTwoFixesWithinTheAccuracy) {
    Dialog d, quiet(10, false), open, comma(10, false, ',');
    d.receive(gga(48.1, 11.5, 1.0)), d.ticks(1);
    EXPECT_EQ(d.model->result(), Result::Open); // one fix is not enough
    d.receive(gga(48.2, 11.6, 1.0)), d.ticks(1);
    EXPECT_TRUE(d.model->result() == Result::Ok && !d.port.open);
    EXPECT_EQ(d.beeper.beeps, (decltype(d.beeper.beeps){{2000, 100}}));
    zav::SetupRecord setup;
    d.model->ApplyTo(setup);
    EXPECT_EQ(setup.lat + " " + setup.lon, "48.150000 011.550000");
    // The Beep option off: acc 8.00 is still within 10, silently. Acc 12.00 stays open.
    quiet.receive(gga(1, 1, 2.0) + gga(1, 1, 2.0)), quiet.ticks(1);
    open.receive(gga(1, 1, 3.0) + gga(1, 1, 3.0)), open.ticks(1);
    EXPECT_TRUE(quiet.model->result() == Result::Ok && quiet.beeper.beeps.empty());
    EXPECT_EQ(open.model->result(), Result::Open);
    // A comma locale shows the dialog's numbers with "," but reads the receiver's with ".".
    comma.receive(gga(48.1, 11.5, 1.0) + gga(48.2, 11.6, 1.0));
    const GetPositionModel& m = *comma.model;
    EXPECT_EQ(m.HDOP + " " + m.acc + " " + m.lat + " " + m.lon + m.record.substr(0, 6),
              "1,0 4,00 48,150000 011,550000$GPGGA");
}

TEST(GetPosition, RealCapturesGiveTheSameFixesHoweverTheyAreSplit) {
    ZAV_NEED_SHARED_DATA();
    const auto outcome = [](const GetPositionModel& m) {
        return m.fixCount + "|" + m.lat + "|" + m.lon + "|" + m.acc + "|" + m.HDOP + "|" +
               m.fixText + "|" + m.record + "|" + std::to_string(m.ErrorsShown());
    };
    for (const char* name : {"gp-320fw-2019-04-07-coldboot.nmea", "haicom-305N.nmea"}) {
        const std::string text =
            zav::test::ReadFile(std::string(ZAV_SHARED_DATA_DIR) + "/nmea/" + name);
        std::vector<std::string> outcomes;
        for (std::size_t piece : {text.size(), std::size_t{1}, std::size_t{7}, std::size_t{4096}}) {
            Dialog d(30);
            for (std::size_t at = 0; at < text.size(); at += piece)
                d.receive(text.substr(at, piece));
            outcomes.push_back(outcome(*d.model));
            EXPECT_GT(d.model->Count, 1) << name;
        }
        EXPECT_EQ(outcomes, std::vector<std::string>(4, outcomes[0])) << name;
    }
}

TEST(NmeaLineAssembler, LinesWhateverTheReadsAndBoundedWithoutLineEnds) {
    using Lines = std::vector<std::string>;
    zav::NmeaLineAssembler lines;
    const std::size_t max = zav::NmeaLineAssembler::kMaxLineBytes;
    EXPECT_TRUE(lines.Add("$GP").empty());
    EXPECT_EQ(lines.Add("A\r\n\r\nB\nC\r"), (Lines{"$GPA", "", "B"}));
    EXPECT_EQ(lines.Add("\n"), (Lines{"C"}));
    lines.Add(std::string(50000, 'x'));
    EXPECT_EQ(lines.Pending().size(), max);
    EXPECT_EQ(lines.Add("yy\r\n$GPB\r\n"), (Lines{std::string(max, 'x'), "$GPB"}));
}

TEST(GpsSetup, OkConvertsOrReportsWhatDoesNotFit) {
    GpsSettings settings;
    zav::test::FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {}, ',');
    setup.open();
    setup.port = "7", setup.parity = "O", setup.Device = "/dev/ttyUSB1";
    // Speed past any serial line; Sbits a 16-bit count that rounds half to even.
    setup.speed = "5000000", setup.dataBits = "eight", setup.stopBits = "1.5", setup.acc = "40000";
    using C = std::tuple<std::string*, const char*, const char*>; // field, said, then typed
    for (const auto& [field, said, fix] :
         {C{&setup.speed, "Error: Overflow (Speed \"5000000\")", "9600"},
          C{&setup.dataBits, "Error: Type mismatch (Dbits \"eight\")", "7"},
          C{&setup.acc, "Error: Overflow (Acc \"40000\")", "2,5"}}) {
        setup.okPressed();
        EXPECT_EQ(dialogs.texts().back(), said);
        EXPECT_TRUE(setup.Visible() && settings.Port == 1) << "nothing stored";
        *field = fix;
    }
    setup.okPressed();
    EXPECT_TRUE(!setup.Visible() && dialogs.messages.size() == 3);
    // Not validated first, Acc rounds half to even as well.
    EXPECT_EQ(std::vector<int>(
                  {settings.Port, settings.Speed, settings.Dbits, settings.Sbits, settings.Acc}),
              std::vector<int>({7, 9600, 7, 2, 2}));
    EXPECT_EQ(settings.Parity + settings.Device, "O/dev/ttyUSB1");
}

TEST(GpsSetup, AccuracyIsTidiedAndThePortPicksADeviceOrANumber) {
    GpsSettings settings;
    zav::test::FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {{"/dev/ttyACM0", "u-blox"}, {"/dev/ttyUSB0", ""}}, ',');
    setup.open();
    const std::string ublox = "/dev/ttyACM0 \xE2\x80\x94 u-blox";
    EXPECT_EQ(setup.portList.front(), ublox);
    setup.acc = "-3", setup.accuracyLeft(); // rounding it: the dialog's test
    EXPECT_EQ(setup.acc, "0");
    using P = std::pair<const char*, const char*>;
    for (const auto& [text, chosen] :
         {P{ublox.c_str(), "/dev/ttyACM0|1"}, P{"/dev/ttyUSB0", "/dev/ttyUSB0|1"}, P{"5", "|5"},
          P{"/dev/rfcomm0", "/dev/rfcomm0|5"}}) {
        setup.portChanged(text);
        EXPECT_EQ(setup.Device + "|" + setup.port + "|" + setup.PortShown(),
                  chosen + std::string("|") + text);
    }
    setup.cancelPressed(); // nothing of it is kept
    EXPECT_EQ(settings.Device + std::to_string(settings.Port) + std::to_string(settings.Acc),
              "110");
}
