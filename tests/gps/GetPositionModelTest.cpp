#include "gps/GetPositionModel.h"
#include "gps/GpsSetupModel.h"

#include "NmeaTestSupport.h"
#include "config/SetupRecord.h"
#include "platform/Beeper.h"
#include "platform/SerialPort.h"

#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <tuple>

using zav::CellColour;
using zav::GetPositionModel;
using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::Sentence;
using Result = GetPositionModel::Result;

namespace {

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

struct FakeBeeper : zav::Beeper {
    std::vector<std::pair<int, int>> beeps;
    void Beep(int hz, int ms) override { beeps.emplace_back(hz, ms); }
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
        while (n-- > 0)
            model->onClockTick();
    }
};

} // namespace

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
