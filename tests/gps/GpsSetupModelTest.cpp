#include "gps/GpsSetupModel.h"

#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::FakeDialogs;

TEST(GpsSetup, ShowsTheSettingsAndOffersTheLists) {
    GpsSettings settings;
    settings.Port = 3;
    settings.Parity = "E";
    settings.Acc = 25;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {"/dev/ttyUSB0", "/dev/ttyACM0"});
    setup.Form_Load();
    EXPECT_EQ(setup.port, "3");
    EXPECT_EQ(setup.speed, "4800");
    EXPECT_EQ(setup.parity, "E");
    EXPECT_EQ(setup.dbits, "8");
    EXPECT_EQ(setup.sbits, "1");
    EXPECT_EQ(setup.acc, "25");
    ASSERT_EQ(setup.portList.size(), 99u);
    for (int i = 0; i < 99; ++i)
        EXPECT_EQ(setup.portList[i], std::to_string(i + 1));
    EXPECT_EQ(setup.speedList,
              (std::vector<std::string>{"1200", "2400", "4800", "9600", "19200", "38400"}));
    EXPECT_EQ(setup.DeviceList, (std::vector<std::string>{"", "/dev/ttyUSB0", "/dev/ttyACM0"}));

    // OK with nothing changed stores the same settings back.
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
                                {"12.6", "13"},
                                {"12.5", "13"},
                                {"abc", "0"},
                                {"", "0"},
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

TEST(GpsSetup, OkConvertsCancelDiscards) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs);
    setup.Form_Load();
    setup.port = "7";
    setup.speed = "9600";
    setup.parity = "O";
    setup.dbits = "7";
    setup.sbits = "1.5"; // a 16-bit count: rounds half to even
    setup.acc = "2.5";   // not validated first: rounds half to even as well
    setup.Device = "/dev/ttyUSB1";
    setup.CancelButton_Click();
    EXPECT_FALSE(setup.Visible());
    EXPECT_EQ(settings.Port, 1);
    EXPECT_EQ(settings.Speed, 4800);

    setup.OKButton_Click();
    EXPECT_EQ(settings.Port, 7);
    EXPECT_EQ(settings.Speed, 9600);
    EXPECT_EQ(settings.Parity, "O");
    EXPECT_EQ(settings.Dbits, 7);
    EXPECT_EQ(settings.Sbits, 2);
    EXPECT_EQ(settings.Acc, 2);
    EXPECT_EQ(settings.Device, "/dev/ttyUSB1");
}

TEST(GpsSetup, SpeedThatOverflowsIsReportedAndNothingStored) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs);
    setup.Form_Load();
    setup.port = "4";
    setup.speed = "38400"; // offered by the list, but the setting is 16-bit
    setup.OKButton_Click();
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text, "Error: Overflow (Speed \"38400\")");
    EXPECT_EQ(dialogs.messages[0].icon, zav::MessageIcon::Critical);
    EXPECT_TRUE(setup.Visible());
    EXPECT_EQ(settings.Port, 1);
    EXPECT_EQ(settings.Speed, 4800);

    setup.speed = "19200";
    setup.dbits = "eight";
    setup.OKButton_Click();
    EXPECT_EQ(dialogs.messages.back().text, "Error: Type mismatch (Dbits \"eight\")");
    setup.dbits = "8";
    setup.acc = "40000";
    setup.OKButton_Click();
    EXPECT_EQ(dialogs.messages.back().text, "Error: Overflow (Acc \"40000\")");
    setup.acc = "40";
    setup.OKButton_Click();
    EXPECT_FALSE(setup.Visible());
    EXPECT_EQ(settings.Speed, 19200);
    EXPECT_EQ(settings.Port, 4);
}
