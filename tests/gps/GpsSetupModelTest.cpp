#include "gps/GpsSetupModel.h"

#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using zav::GpsSettings;
using zav::GpsSetupModel;
using zav::test::FakeDialogs;

TEST(GpsSetup, OkConvertsOrReportsWhatDoesNotFit) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {}, ',');
    setup.open();
    setup.port = "7";
    setup.speed = "5000000"; // past any serial line
    setup.parity = "O";
    setup.dataBits = "eight";
    setup.stopBits = "1.5"; // a 16-bit count: rounds half to even
    setup.acc = "40000";
    setup.Device = "/dev/ttyUSB1";
    const std::pair<std::string*, const char*> fixes[] = {
        {&setup.speed, "9600"}, {&setup.dataBits, "7"}, {&setup.acc, "2,5"}};
    const char* const errors[] = {"Error: Overflow (Speed \"5000000\")",
                                  "Error: Type mismatch (Dbits \"eight\")",
                                  "Error: Overflow (Acc \"40000\")"};
    for (std::size_t i = 0; i < 3; ++i) {
        setup.okPressed();
        EXPECT_EQ(dialogs.texts().back(), errors[i]);
        EXPECT_TRUE(setup.Visible());
        EXPECT_EQ(settings.Port, 1) << "nothing stored";
        *fixes[i].first = fixes[i].second;
    }
    setup.okPressed();
    EXPECT_FALSE(setup.Visible());
    EXPECT_EQ(dialogs.messages.size(), 3u);
    // Not validated first, Acc rounds half to even as well.
    EXPECT_EQ(std::vector<int>(
                  {settings.Port, settings.Speed, settings.Dbits, settings.Sbits, settings.Acc}),
              std::vector<int>({7, 9600, 7, 2, 2}));
    EXPECT_EQ(settings.Parity + settings.Device, "O/dev/ttyUSB1");
}

TEST(GpsSetup, AccuracyIsTidiedAndThePortPicksADeviceOrANumber) {
    GpsSettings settings;
    FakeDialogs dialogs;
    GpsSetupModel setup(settings, dialogs, {{"/dev/ttyACM0", "u-blox"}, {"/dev/ttyUSB0", ""}}, ',');
    setup.open();
    EXPECT_EQ(setup.portList.front(), "/dev/ttyACM0 \xE2\x80\x94 u-blox");
    for (const auto& [typed, shown] : {std::pair{"-3", "0"}, {"12,5", "13"}, {"2,4", "2"}}) {
        setup.acc = typed;
        setup.accuracyLeft();
        EXPECT_EQ(setup.acc, shown) << typed;
    }
    // {picked or typed, Device, port}
    const char* const picks[][3] = {{"/dev/ttyACM0 \xE2\x80\x94 u-blox", "/dev/ttyACM0", "1"},
                                    {"/dev/ttyUSB0", "/dev/ttyUSB0", "1"},
                                    {"5", "", "5"},
                                    {"/dev/rfcomm0", "/dev/rfcomm0", "5"}};
    for (const auto& [text, device, port] : picks) {
        setup.portChanged(text);
        EXPECT_EQ(setup.Device + "|" + setup.port, std::string(device) + "|" + port) << text;
        EXPECT_EQ(setup.PortShown(), text);
    }
    setup.cancelPressed(); // nothing of it is kept
    EXPECT_FALSE(setup.Visible() || setup.Stored());
    EXPECT_EQ(settings.Device + std::to_string(settings.Port) + std::to_string(settings.Acc),
              "110");
}
