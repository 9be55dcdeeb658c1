#include "gps/GpsSetupModel.h"

#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <tuple>

using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::FakeDialogs;

TEST(GpsSetup, ShowsTheSettingsAndOkStoresThemBack) {
    GpsSettings settings;
    settings.Port = 3;
    settings.Parity = "E";
    settings.Acc = 25;
    FakeDialogs dialogs;
    const std::string ublox = "/dev/serial/by-id/usb-u-blox_AG_GNSS_receiver-if00";
    GpsSetupModel setup(settings, dialogs, {{"/dev/ttyUSB0", ""}, {ublox, "u-blox GNSS receiver"}});
    setup.open();
    EXPECT_EQ(setup.port + setup.speed + setup.parity + setup.dataBits + setup.stopBits + setup.acc,
              "34800E8125");
    // The devices found come first, by name and what they are; the numbers follow.
    ASSERT_EQ(setup.portList.size(), 101u);
    EXPECT_EQ(setup.portList[0], "/dev/ttyUSB0");
    EXPECT_EQ(setup.portList[1], ublox + " \u2014 u-blox GNSS receiver");
    EXPECT_EQ(setup.portList[2], "1");
    EXPECT_EQ(setup.portList.back(), "99");
    EXPECT_EQ(setup.speedList, (std::vector<std::string>{"1200", "2400", "4800", "9600", "19200",
                                                         "38400", "57600", "115200"}));
    EXPECT_EQ(setup.PortShown(), "3");
    // A device is remembered by its name, whichever way it was chosen; a number is a port.
    for (const std::string& chosen : {setup.portList[1], ublox}) {
        setup.portChanged(chosen);
        EXPECT_EQ(setup.Device, ublox);
        EXPECT_EQ(setup.PortShown(), setup.portList[1]);
    }
    setup.portChanged("/tmp/gps-out");
    EXPECT_EQ(setup.PortShown(), "/tmp/gps-out");
    setup.portChanged("5");
    EXPECT_EQ(setup.Device + "|" + setup.PortShown(), "|5");
    setup.portChanged(ublox);
    setup.speed = "115200";
    setup.okPressed();
    EXPECT_EQ(settings.Device, ublox);
    EXPECT_EQ(settings.Speed, 115200);
    EXPECT_EQ(settings.Port, 5);
    EXPECT_FALSE(setup.Visible());
    EXPECT_TRUE(setup.Stored());
    EXPECT_EQ(settings.Acc, 25);
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST(GpsSetup, AccuracyValidation) {
    GpsSettings settings;
    FakeDialogs dialogs;
    // The box follows the operator's locale: "12,5" in a comma locale is what "12.5" is in a
    // point locale, whether validated first or stored straight from OK.
    for (const char separator : {'.', ','}) {
        for (auto [typed, shown, stored] :
             {std::tuple<std::string, std::string, int>{"-5", "0", -5},
              {"12.5", "13", 12},
              {"abc", "0", 0},
              {" 7 ", "7", 7},
              {"1e2", "100", 100}}) {
            if (separator == ',' && typed.find('.') != std::string::npos)
                typed.replace(typed.find('.'), 1, ",");
            GpsSetupModel setup(settings, dialogs, {}, separator);
            setup.open();
            setup.acc = typed;
            setup.okPressed();
            EXPECT_EQ(settings.Acc, stored) << typed;
            setup.acc = typed;
            setup.accuracyLeft();
            EXPECT_EQ(setup.acc, shown) << typed;
        }
    }
    GpsSetupModel setup(settings, dialogs);
    setup.open();
    setup.accSelected = false;
    setup.acc = "4.4";
    setup.accuracyKeyPressed(zav::Key::Other);
    EXPECT_EQ(setup.acc, "4.4");
    EXPECT_FALSE(setup.accSelected);
    setup.accuracyKeyPressed(zav::Key::Enter);
    EXPECT_EQ(setup.acc, "4");
    EXPECT_TRUE(setup.accSelected);
}

TEST(GpsSetup, OkConvertsOrReportsWhatDoesNotFitAndCancelDiscards) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs);
    setup.open();
    setup.port = "7";
    setup.speed = "5000000"; // past any serial line
    setup.parity = "O";
    setup.dataBits = "eight";
    setup.stopBits = "1.5"; // a 16-bit count: rounds half to even
    setup.acc = "40000";
    setup.Device = "/dev/ttyUSB1";
    const std::pair<std::string*, const char*> fixes[] = {
        {&setup.speed, "9600"}, {&setup.dataBits, "7"}, {&setup.acc, "2.5"}};
    const char* const errors[] = {"Error: Overflow (Speed \"5000000\")",
                                  "Error: Type mismatch (Dbits \"eight\")",
                                  "Error: Overflow (Acc \"40000\")"};
    for (std::size_t i = 0; i < 3; ++i) {
        setup.okPressed();
        EXPECT_EQ(dialogs.texts().back(), errors[i]);
        EXPECT_EQ(dialogs.messages.back().icon, zav::MessageIcon::Critical);
        EXPECT_TRUE(setup.Visible());
        EXPECT_EQ(settings.Port, 1) << "nothing stored";
        *fixes[i].first = fixes[i].second;
    }
    setup.okPressed();
    EXPECT_FALSE(setup.Visible());
    EXPECT_EQ(dialogs.messages.size(), 3u);
    EXPECT_EQ(settings.Port, 7);
    EXPECT_EQ(settings.Speed, 9600);
    EXPECT_EQ(settings.Parity, "O");
    EXPECT_EQ(settings.Dbits, 7);
    EXPECT_EQ(settings.Sbits, 2);
    EXPECT_EQ(settings.Acc, 2); // not validated first: rounds half to even as well
    EXPECT_EQ(settings.Device, "/dev/ttyUSB1");

    GpsSetupModel cancelled(settings, dialogs);
    cancelled.open();
    cancelled.port = "9";
    cancelled.cancelPressed();
    EXPECT_FALSE(cancelled.Visible());
    EXPECT_EQ(settings.Port, 7);
}
