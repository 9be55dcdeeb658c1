#include "gps/GpsSetupModel.h"

#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::FakeDialogs;

TEST(GpsSetup, ShowsTheSettingsAndOkStoresThemBack) {
    GpsSettings settings;
    settings.Port = 3;
    settings.Parity = "E";
    settings.Acc = 25;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {"/dev/ttyUSB0", "/dev/ttyACM0"});
    setup.Form_Load();
    EXPECT_EQ(setup.port + setup.speed + setup.parity + setup.dbits + setup.sbits + setup.acc,
              "34800E8125");
    EXPECT_EQ(setup.portList.size(), 99u);
    EXPECT_EQ(setup.portList.back(), "99");
    EXPECT_EQ(setup.speedList,
              (std::vector<std::string>{"1200", "2400", "4800", "9600", "19200", "38400"}));
    EXPECT_EQ(setup.DeviceList, (std::vector<std::string>{"", "/dev/ttyUSB0", "/dev/ttyACM0"}));
    setup.OKButton_Click();
    EXPECT_FALSE(setup.Visible());
    EXPECT_TRUE(setup.Stored());
    EXPECT_EQ(settings.Port, 3);
    EXPECT_EQ(settings.Acc, 25);
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST(GpsSetup, AccuracyValidation) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs);
    setup.Form_Load();
    for (auto [typed, shown] : {std::pair<std::string, std::string>{"-5", "0"},
                                {"12.5", "13"},
                                {"abc", "0"},
                                {" 7 ", "7"},
                                {"1e2", "100"}}) {
        setup.acc = typed;
        setup.acc_Validate();
        EXPECT_EQ(setup.acc, shown) << typed;
    }
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
    setup.speed = "38400"; // offered by the list, but the setting is 16-bit
    setup.parity = "O";
    setup.dbits = "eight";
    setup.sbits = "1.5"; // a 16-bit count: rounds half to even
    setup.acc = "40000";
    setup.Device = "/dev/ttyUSB1";
    const std::pair<std::string*, const char*> fixes[] = {
        {&setup.speed, "9600"}, {&setup.dbits, "7"}, {&setup.acc, "2.5"}};
    const char* const errors[] = {"Error: Overflow (Speed \"38400\")",
                                  "Error: Type mismatch (Dbits \"eight\")",
                                  "Error: Overflow (Acc \"40000\")"};
    for (std::size_t i = 0; i < 3; ++i) {
        setup.OKButton_Click();
        EXPECT_EQ(dialogs.texts().back(), errors[i]);
        EXPECT_EQ(dialogs.messages.back().icon, zav::MessageIcon::Critical);
        EXPECT_TRUE(setup.Visible());
        EXPECT_EQ(settings.Port, 1) << "nothing stored";
        *fixes[i].first = fixes[i].second;
    }
    setup.OKButton_Click();
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
    cancelled.Form_Load();
    cancelled.port = "9";
    cancelled.CancelButton_Click();
    EXPECT_FALSE(cancelled.Visible());
    EXPECT_EQ(settings.Port, 7);
}
