// The receiver settings dialog over its real model (whose tests check the conversions and the
// accuracy's validation): what it shows, what typing and picking store, and Cancel.
#include "qt/widgets/GpsSetupDialog.h"

#include "config/GpsSettings.h"
#include "gps/GpsSetupModel.h"
#include "testsupport/FakeDialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <tuple>

using namespace zav;

TEST(GpsSetupDialog, ShowsTheSettingsWithTheDevicesFoundAndOkStoresWhatWasTypedOrPicked) {
    GpsSettings settings;
    settings.Port = 3;
    settings.Parity = "E";
    settings.Speed = 300; // unusual, but shown rather than replaced
    test::FakeDialogs dialogs;
    const auto stored = [&settings] {
        const GpsSettings& s = settings;
        return std::make_tuple(s.Port, s.Speed, s.Parity, s.Dbits, s.Sbits, s.Acc, s.Device);
    };
    const auto untouched = stored();
    for (const bool ok : {false, true}) {
        GpsSetupModel model(settings, dialogs,
                            {{"/dev/ttyUSB0", ""}, {"/dev/ttyACM0", "u-blox GNSS receiver"}});
        GpsSetupDialog dialog(model);
        dialog.show();
        QApplication::setActiveWindow(&dialog);
        auto* port = dialog.findChild<QComboBox*>("port");
        auto* speed = dialog.findChild<QComboBox*>("speed");
        auto* acc = dialog.findChild<QLineEdit*>("acc");
        EXPECT_EQ(port->currentText() + speed->currentText() +
                      dialog.findChild<QComboBox*>("parity")->currentText() + " " + acc->text(),
                  "3300E 10");
        ASSERT_EQ(port->count(), 101);
        EXPECT_EQ(port->itemText(1), QString::fromUtf8("/dev/ttyACM0 \u2014 u-blox GNSS receiver"));
        EXPECT_EQ(port->itemText(100), "99");
        port->setFocus();
        port->lineEdit()->selectAll();
        QTest::keyClicks(port->lineEdit(), "/tmp/gps-out");
        speed->setFocus(); // picked as the keyboard does: typing the entry's start
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
        QTest::keyClicks(speed, "115200");
        acc->setFocus();
        acc->selectAll();
        QTest::keyClicks(acc, "12.6");
        QTest::keyClick(acc, Qt::Key_Return); // checks the box; it does not press OK
        EXPECT_EQ(acc->selectedText(), "13");
        EXPECT_TRUE(dialog.isVisible());
        if (!ok) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
            EXPECT_EQ(dialog.result(), QDialog::Rejected);
            EXPECT_EQ(stored(), untouched);
            continue;
        }
        QTest::mouseClick(dialog.findChild<QPushButton*>("OKButton"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
    EXPECT_EQ(stored(),
              std::make_tuple(3, 115200, std::string("E"), 8, 1, 13, std::string("/tmp/gps-out")));
    EXPECT_TRUE(dialogs.messages.empty());
}
