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
    setup.Form_Load();
    EXPECT_EQ(setup.port + setup.speed + setup.parity + setup.dbits + setup.sbits + setup.acc,
              "34800E8125");
    // The devices found come first, by name and what they are; the numbers follow.
    ASSERT_EQ(setup.portList.size(), 101u);
    EXPECT_EQ(setup.portList[0], "/dev/ttyUSB0");
    EXPECT_EQ(setup.portList[1], ublox + " \u2014 u-blox GNSS receiver");
    EXPECT_EQ(setup.portList[2] + "-" + setup.portList.back(), "1-99");
    EXPECT_EQ(setup.PortShown(), "3");
    // A device is remembered by its name, whichever way it was chosen; a number is a port.
    for (const std::string& chosen : {setup.portList[1], ublox}) {
        setup.port_Change(chosen);
        EXPECT_EQ(setup.Device, ublox);
        EXPECT_EQ(setup.PortShown(), setup.portList[1]);
    }
    setup.port_Change("/tmp/gps-out");
    EXPECT_EQ(setup.PortShown(), "/tmp/gps-out");
    setup.port_Change("5");
    EXPECT_EQ(setup.Device + "|" + setup.PortShown(), "|5");
    setup.port_Change(ublox);
    setup.speed = "115200";
    setup.OKButton_Click();
    EXPECT_EQ(settings.Device, ublox);
    EXPECT_EQ(settings.Speed, 115200);
    EXPECT_EQ(settings.Port, 5);
    EXPECT_TRUE(!setup.Visible() && setup.Stored() && dialogs.messages.empty());
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
            setup.Form_Load();
            setup.acc = typed;
            setup.OKButton_Click();
            EXPECT_EQ(settings.Acc, stored) << typed;
            setup.acc = typed;
            setup.acc_Validate();
            EXPECT_EQ(setup.acc, shown) << typed;
        }
    }
    GpsSetupModel setup(settings, dialogs);
    setup.Form_Load();
    setup.accSelected = false;
    setup.acc = "4.4";
    setup.acc_KeyPress('a');
    EXPECT_EQ(setup.acc, "4.4");
    EXPECT_FALSE(setup.accSelected);
    setup.acc_KeyPress('\r');
    EXPECT_EQ(setup.acc, "4");
    EXPECT_TRUE(setup.accSelected);
}

TEST(GpsSetup, OkConvertsOrReportsWhatDoesNotFitAndCancelDiscards) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs);
    setup.Form_Load();
    setup.port = "7";
    setup.speed = "5000000"; // past any serial line
    setup.parity = "O";
    setup.dbits = "eight";
    setup.sbits = "1.5"; // a 16-bit count: rounds half to even
    setup.acc = "40000";
    setup.Device = "/dev/ttyUSB1";
    const std::pair<std::string*, const char*> fixes[] = {
        {&setup.speed, "9600"}, {&setup.dbits, "7"}, {&setup.acc, "2.5"}};
    const char* const errors[] = {"Error: Overflow (Speed \"5000000\")",
                                  "Error: Type mismatch (Dbits \"eight\")",
                                  "Error: Overflow (Acc \"40000\")"};
    for (std::size_t i = 0; i < 3; ++i) {
        setup.OKButton_Click();
        EXPECT_EQ(dialogs.texts().back(), errors[i]);
        EXPECT_TRUE(setup.Visible());
        EXPECT_EQ(settings.Port, 1) << "nothing stored";
        *fixes[i].first = fixes[i].second;
    }
    setup.OKButton_Click();
    EXPECT_FALSE(setup.Visible());
    EXPECT_EQ(dialogs.messages.size(), 3u);
    // Not validated first, Acc rounds half to even as well.
    EXPECT_EQ(std::vector<int>(
                  {settings.Port, settings.Speed, settings.Dbits, settings.Sbits, settings.Acc}),
              std::vector<int>({7, 9600, 7, 2, 2}));
    EXPECT_EQ(settings.Parity + settings.Device, "O/dev/ttyUSB1");

    GpsSetupModel cancelled(settings, dialogs);
    cancelled.Form_Load();
    cancelled.port = "9";
    cancelled.CancelButton_Click();
    EXPECT_FALSE(cancelled.Visible());
    EXPECT_EQ(settings.Port, 7);
}
