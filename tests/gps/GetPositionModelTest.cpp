#include "gps/GetPositionModel.h"

#include "NmeaTestSupport.h"
#include "config/SetupRecord.h"
#include "gps/RuntimeError.h"
#include "gps/SerialErrorMessage.h"
#include "platform/Beeper.h"
#include "platform/SerialPort.h"

#include "testsupport/SharedData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>

using zav::CellColour;
using zav::GetPositionModel;
using zav::GpsSettings;
using zav::test::Sentence;

namespace {

// A serial port that records what it was asked and refuses to open with `openError`.
class FakeSerialPort : public zav::SerialPort {
public:
    int openError = 0;
    std::string settings, device;
    int commPort = 0;
    bool open = false;
    ReceiveHandler receive;
    ErrorHandler error;

    int SetSettings(const std::string& s) override { return settings = s, 0; }
    int SetCommPort(int n) override { return commPort = n, 0; }
    int SetDevice(const std::string& d) override { return device = d, 0; }
    int SetPortOpen(bool o) override { return o && openError ? openError : (open = o, 0); }
    bool PortOpen() const override { return open; }
    void SetReceiveHandler(ReceiveHandler h) override { receive = std::move(h); }
    void SetErrorHandler(ErrorHandler h) override { error = std::move(h); }
    std::vector<std::string> ListPorts() const override { return {}; }
};

class FakeBeeper : public zav::Beeper {
public:
    std::vector<std::pair<int, int>> beeps;
    void Beep(int frequencyHz, int durationMs) override {
        beeps.emplace_back(frequencyHz, durationMs);
    }
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
    explicit Dialog(std::int16_t acc = 10, bool beepOption = true, char separator = '.') {
        settings.Acc = acc;
        model = std::make_unique<GetPositionModel>(settings, port, beeper, beepOption, separator);
        model->open();
    }
    // Sends through the port as the serial control would.
    void receive(const std::string& chunk) { port.receive(chunk); }

    GpsSettings settings;
    FakeSerialPort port;
    FakeBeeper beeper;
    std::unique_ptr<GetPositionModel> model;
};

} // namespace

TEST(GetPosition, LoadOpensThePortWithTheSettings) {
    Dialog d;
    EXPECT_EQ(d.port.settings, "4800,N,8,1");
    EXPECT_EQ(d.port.commPort, 1);
    EXPECT_TRUE(d.port.open);
    EXPECT_EQ(d.model->fixText, "Fix lost");

    FakeSerialPort busy;
    busy.openError = 8005;
    FakeBeeper beeper;
    GpsSettings settings;
    settings.Device = "/dev/ttyACM0";
    GetPositionModel model(settings, busy, beeper, true);
    model.open();
    EXPECT_EQ(busy.device, "/dev/ttyACM0");
    EXPECT_EQ(model.record, "Error: Port In Use");
    EXPECT_EQ(model.result(), GetPositionModel::Result::Open);
    model.okPressed(); // OK then copies the empty averages
    zav::SetupRecord setup;
    setup.lat = "1.000000";
    model.ApplyTo(setup);
    EXPECT_EQ(setup.lat + setup.lon, "");

    // No permission is not "in use": it says what mends it.
    FakeSerialPort refusing;
    refusing.openError = zav::kSerialPermissionDenied;
    settings.Speed = 115200;
    GetPositionModel denied(settings, refusing, beeper, true);
    denied.open();
    EXPECT_EQ(refusing.settings, "115200,N,8,1");
    EXPECT_EQ(denied.record, "Error: Permission denied on /dev/ttyACM0: add your user to the "
                             "dialout group (sudo usermod -aG dialout $USER), then log out and "
                             "in again");
}

TEST(GetPosition, OpenPortWithoutDataForFiveSecondsSaysSo) {
    Dialog d;
    const std::string silent = "Error: No data from port 1 for 5 s: check that the receiver is "
                               "on, on this port, at 4800 baud";
    for (int second = 1; second <= 4; ++second)
        d.model->onClockTick();
    d.receive("$GP"); // anything at all is data
    for (int second = 0; second <= 4; ++second)
        d.model->onClockTick();
    EXPECT_EQ(d.model->ErrorsShown(), 0u);
    d.model->onClockTick();
    EXPECT_EQ(d.model->record, silent);
    for (int second = 1; second <= 10; ++second)
        d.model->onClockTick();
    EXPECT_EQ(d.model->ErrorsShown(), 1u); // said once, not every second
    EXPECT_EQ(d.model->result(), GetPositionModel::Result::Open);
}

TEST(GetPosition, HdopColoursAndAcceptance) {
    Dialog d; // Acc 10: red above 3.333, normal up to 2.5
    d.receive(gga(48.1, 11.5, 3.0));
    EXPECT_EQ(d.model->HDOP, "3.0");
    EXPECT_EQ(d.model->HDOPColour, CellColour::Orange);
    EXPECT_EQ(d.model->fixCount, "1");
    d.receive(gga(48.1, 11.5, 2.5));
    EXPECT_EQ(d.model->HDOPColour, CellColour::WindowText);
    d.receive(gga(48.1, 11.5, 3.4));
    EXPECT_EQ(d.model->HDOPColour, CellColour::Red);
    EXPECT_EQ(d.model->Count, 2); // 3.4 is not averaged

    Dialog off(0); // Acc 0: red above 5, normal up to 2, and only HDOP 0 is accepted
    for (auto [hdop, colour] : {std::pair{5.1, CellColour::Red},
                                {5.0, CellColour::Orange},
                                {2.1, CellColour::Orange},
                                {2.0, CellColour::WindowText}}) {
        off.receive(gga(1, 1, hdop));
        EXPECT_EQ(off.model->HDOPColour, colour) << hdop;
    }
    EXPECT_EQ(off.model->Count, 0);
    off.receive(gga(1, 1, 0.0));
    EXPECT_EQ(off.model->Count, 1);
    off.model->onClockTick();
    EXPECT_EQ(off.model->result(), GetPositionModel::Result::Open); // never closes by itself

    // The shown, rounded HDOP decides: 3.34 shows as 3.3, under 10/3.
    Dialog rounded;
    rounded.receive(Sentence("GPGGA,1,4807.038,N,01131.000,E,1,08,3.34,,,,,,") + "\r\n");
    EXPECT_EQ(rounded.model->Count, 1);
}

TEST(GetPosition, InvalidFixClearsHdopAndStopsAveraging) {
    Dialog d;
    d.receive(gga(10, 10, 1.0, 0));
    EXPECT_EQ(d.model->fixText, "Fix lost");
    EXPECT_EQ(d.model->HDOP, "1.0"); // the quality comes first, then the HDOP again
    EXPECT_EQ(d.model->Count, 0);
    d.receive(Sentence("GPGGA,1,,,,,0,,,,,,,,") + "\r\n");
    EXPECT_EQ(d.model->HDOP, "");
    EXPECT_FALSE(d.model->FixValid);
    d.receive(gga(10, 10, 1.0, 2));
    EXPECT_EQ(d.model->fixText, "Fix obtained");
    EXPECT_EQ(d.model->Count, 1);
    // RMC and GLL are shown but never parsed: neither their status nor their position counts.
    d.receive(Sentence("GPGLL,1000.000,N,01000.000,E,225444,A") + "\r\n");
    d.receive(Sentence("GPRMC,1,V,1000.000,N,01000.000,E,,,,") + "\r\n");
    EXPECT_EQ(d.model->Count, 1);
    EXPECT_TRUE(d.model->FixValid);
    EXPECT_EQ(d.model->record.substr(0, 6), "$GPRMC");
}

TEST(GetPosition, AveragesAgainstIndependentSums) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> latD(-89, 89), lonD(-179, 179), spread(-0.01, 0.01);
    std::uniform_int_distribution<int> tenths(5, 40);
    for (int run = 0; run < 20; ++run) {
        Dialog d(30); // MaxHdop 10: all accepted; closes only when asked
        const double lat0 = latD(rng), lon0 = lonD(rng);
        double sumLat = 0, sumLon = 0, sumH2 = 0;
        int n = 0;
        for (int i = 0; i < 12; ++i) {
            // Positions on the 1e-4 minute grid the sentence carries, so nothing is lost.
            const double la = std::round((lat0 + spread(rng)) * 600000) / 600000;
            const double lo = std::round((lon0 + spread(rng)) * 600000) / 600000;
            const double h = tenths(rng) / 10.0;
            d.receive(gga(la, lo, h));
            sumLat += la, sumLon += lo, sumH2 += h * h, ++n;
        }
        ASSERT_EQ(d.model->Count, n);
        EXPECT_NEAR(std::stod(d.model->lat), sumLat / n, 5.1e-7);
        EXPECT_NEAR(std::stod(d.model->lon), sumLon / n, 5.1e-7);
        EXPECT_NEAR(std::stod(d.model->acc), 4 * std::sqrt(sumH2 / n), 0.0051);
        EXPECT_EQ(d.model->lon.find('.'), d.model->lon[0] == '-' ? 4u : 3u); // "000.000000"
    }

    Dialog south;
    south.receive(Sentence("GPGGA,1,3351.1234,S,00023.0832,W,1,08,1.0,,,,,,") + "\r\n");
    EXPECT_EQ(south.model->currentLat, "-33.852057");
    EXPECT_EQ(south.model->currentLon, "-000.384720");
}

TEST(GetPosition, TimerEndsTheCaptureOverTwoFixes) {
    Dialog d;
    d.receive(gga(48.1, 11.5, 1.0));
    d.model->onClockTick();
    EXPECT_EQ(d.model->result(), GetPositionModel::Result::Open); // one fix is not enough
    d.receive(gga(48.2, 11.6, 1.0));
    EXPECT_EQ(d.model->acc, "4.00");
    EXPECT_TRUE(d.beeper.beeps.empty());
    d.model->onClockTick();
    EXPECT_EQ(d.model->result(), GetPositionModel::Result::Ok);
    EXPECT_FALSE(d.port.open);
    EXPECT_EQ(d.beeper.beeps, (std::vector<std::pair<int, int>>{{2000, 100}}));
    zav::SetupRecord setup;
    d.model->ApplyTo(setup);
    EXPECT_EQ(setup.lat + " " + setup.lon, "48.150000 011.550000");

    // The Beep option off: acc 8.00 is still within 10, silently. Acc 12.00 stays open.
    Dialog quiet(10, false), cancel;
    for (int i = 0; i < 2; ++i) {
        quiet.receive(gga(1, 1, 2.0));
        cancel.receive(gga(1, 1, 3.0));
    }
    quiet.model->onClockTick();
    cancel.model->onClockTick();
    EXPECT_EQ(quiet.model->result(), GetPositionModel::Result::Ok);
    EXPECT_TRUE(quiet.beeper.beeps.empty());
    EXPECT_EQ(cancel.model->result(), GetPositionModel::Result::Open);
    cancel.model->cancelPressed();
    EXPECT_FALSE(cancel.port.open);
    zav::SetupRecord untouched;
    cancel.model->ApplyTo(untouched);
    EXPECT_EQ(untouched.lat, "");
}

std::string readCapture(const std::string& name) {
    std::ifstream in(std::string(ZAV_SHARED_DATA_DIR) + "/nmea/" + name, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), {});
}

// What a capture leaves in the dialog, for comparing two ways of feeding it.
std::string outcome(const GetPositionModel& m) {
    return m.fixCount + "|" + m.lat + "|" + m.lon + "|" + m.acc + "|" + m.HDOP + "|" + m.fixText +
           "|" + m.record + "|" + std::to_string(m.ErrorsShown());
}

TEST(GetPosition, SameBytesGiveTheSameFixesHoweverTheyAreSplit) {
    for (const char* name :
         {"quectel-l76k-gnss.nmea", "gp-320fw-2019-04-07-coldboot.nmea", "haicom-305N.nmea"}) {
        const std::string text = readCapture(name);
        ASSERT_GT(text.size(), 1000u) << name;
        Dialog whole(30);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at);
            const std::size_t next = end == std::string::npos ? text.size() : end + 1;
            whole.receive(text.substr(at, next - at));
            at = next;
        }
        ASSERT_GT(whole.model->Count, 1) << name;
        for (std::size_t piece : {1, 7, 64, 4096}) {
            Dialog split(30);
            for (std::size_t at = 0; at < text.size(); at += piece)
                split.receive(text.substr(at, piece));
            EXPECT_EQ(outcome(*split.model), outcome(*whole.model)) << name << " in " << piece;
        }
    }

    // A burst per second, RMC first, read in 8- and 64-byte pieces: every fix arrives.
    std::string bursts;
    for (int second = 0; second < 6; ++second)
        bursts += Sentence("GNRMC,1200" + std::to_string(10 + second) +
                           ".00,A,4807.038,N,01131.000,E,0.0,0.0,050826,,,A") +
                  "\r\n" + gga(48.1 + second * 1e-4, 11.5, 0.9) +
                  Sentence("GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,0.9,2.1") + "\r\n";
    for (std::size_t piece : {8, 64}) {
        Dialog d(30);
        for (std::size_t at = 0; at < bursts.size(); at += piece)
            d.receive(bursts.substr(at, piece));
        EXPECT_EQ(d.model->Count, 6) << piece;
    }

    // Blanks around a sentence are trimmed; endless input without a line end is cut rather
    // than kept, and the next sentence still counts.
    Dialog d(30);
    d.receive("  " + gga(10, 20, 1.0).substr(0, 60));
    d.receive(gga(10, 20, 1.0).substr(60) + "  \r\n");
    EXPECT_EQ(d.model->Count, 1);
    for (int i = 0; i < 1000; ++i)
        d.receive(std::string(100, 'x'));
    d.receive("\r\n" + gga(11, 22, 1.0));
    const std::string last = gga(11, 22, 1.0);
    EXPECT_EQ(d.model->record, last.substr(0, last.size() - 2));
    EXPECT_EQ(d.model->Count, 2);
}

TEST(GetPosition, ReceiverNumbersUsePointInEveryLocale) {
    // A comma locale shows the dialog's numbers with "," but reads the receiver's with ".".
    Dialog d(10, false, ',');
    d.receive(gga(48.1, 11.5, 1.0) + gga(48.2, 11.6, 1.0));
    EXPECT_EQ(d.model->ErrorsShown(), 0u) << d.model->record;
    EXPECT_EQ(d.model->HDOP, "1,0");
    EXPECT_EQ(d.model->acc, "4,00");
    EXPECT_EQ(d.model->lat + " " + d.model->lon, "48,150000 011,550000");
    d.model->onClockTick();
    EXPECT_EQ(d.model->result(), GetPositionModel::Result::Ok);
}

TEST(NmeaLineAssembler, LinesWhateverTheReadsAndBoundedWithoutLineEnds) {
    zav::NmeaLineAssembler lines;
    EXPECT_TRUE(lines.Add("$GP").empty());
    EXPECT_EQ(lines.Add("A\r\n\r\nB\nC\r"), (std::vector<std::string>{"$GPA", "", "B"}));
    EXPECT_EQ(lines.Add("\n"), (std::vector<std::string>{"C"}));
    lines.Add(std::string(50000, 'x'));
    EXPECT_EQ(lines.Pending().size(), zav::NmeaLineAssembler::kMaxLineBytes);
    const std::vector<std::string> cut = lines.Add("yy\r\n$GPB\r\n");
    ASSERT_EQ(cut.size(), 2u);
    EXPECT_EQ(cut[0], std::string(zav::NmeaLineAssembler::kMaxLineBytes, 'x'));
    EXPECT_EQ(cut[1], "$GPB");
}

TEST(GetPosition, ErrorsShowInRecordAndTheCaptureGoesOn) {
    Dialog d(30);
    d.receive(Sentence("GPGGA,1,4807.038,N,01131.000,E,1,08,1.0") + "\r\n");
    EXPECT_EQ(d.model->record, "Error: Subscript out of range");
    EXPECT_EQ(d.model->ErrorsShown(), 1u);
    EXPECT_EQ(d.model->Count, 1); // the position came before the missing fields
    d.receive(Sentence("GPGGA,1,4807.038,N,01131.000,E,1,08,x,,,,,,") + "\r\n");
    EXPECT_EQ(d.model->record, "Error: Type mismatch");
    d.receive(gga(48, 11, 1.0));
    EXPECT_EQ(d.model->Count, 2);
    EXPECT_EQ(d.model->ErrorsShown(), 2u);

    // A failing sentence costs only itself: the fix after it in the same read still counts.
    d.model->handleInput(Sentence("GPGGA,1") + "\r\n" + gga(48, 11, 1.0));
    EXPECT_EQ(d.model->ErrorsShown(), 3u);
    EXPECT_EQ(d.model->Count, 3);

    // A port failing mid-capture.
    d.port.error(8018);
    EXPECT_EQ(d.model->record, "Error: Operation valid only when the port is open");
    // The count cannot pass the 16-bit limit.
    d.model->Count = 32767;
    d.receive(gga(48, 11, 1.0));
    EXPECT_EQ(d.model->record, "Error: Overflow");
    EXPECT_EQ(d.model->Count, 32767);
}

TEST(GetPosition, SerialErrorMessages) {
    const std::pair<long, const char*> texts[] = {
        {8021, "Internal error retrieving device control block for the port"},
        {394, "Property is write-only"},
        {380, "Invalid property value"},
        {8005, "Port In Use"},
        {8012, "Port In Use"},
        {8002, "Invalid port number"},
        {8018, "Operation valid only when the port is open"},
        {8000, "Operation not valid while the port is opened"},
        {383, "Property is read-only"},
        {80208015, "Port ERROR"},
        {8015, "Other error..."}};
    for (const auto& [number, text] : texts)
        EXPECT_EQ(zav::SerialErrorMessage(number), text) << number;
}

TEST(GetPosition, HostileChunksNeverEscapeTheDialog) {
    ZAV_NEED_SHARED_DATA();
    // A real capture cut into random chunks, with random bytes dropped in: whatever happens
    // shows in `record`; nothing is thrown out of the receive path.
    std::ifstream capture(std::string(ZAV_SHARED_DATA_DIR) +
                              "/nmea/gp-320fw-2019-04-07-coldboot.nmea",
                          std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(capture)), {});
    ASSERT_GT(text.size(), 1000u);
    std::mt19937 rng(9);
    for (int run = 0; run < 50; ++run) {
        Dialog d(static_cast<std::int16_t>(rng() % 40));
        for (std::size_t at = 0; at < text.size();) {
            std::string chunk = text.substr(at, 1 + rng() % 120);
            at += chunk.size();
            if (rng() % 3 == 0)
                chunk[rng() % chunk.size()] = static_cast<char>(rng() % 256);
            EXPECT_NO_THROW(d.receive(chunk));
            d.model->onClockTick();
        }
    }
}
