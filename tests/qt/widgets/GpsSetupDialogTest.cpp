#include "qt/widgets/GpsSetupDialog.h"

#include "config/GpsSettings.h"
#include "gps/GpsSetupModel.h"
#include "platform/Version.h"
#include "testsupport/FakeDialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>

using namespace zav;

namespace {

// The dialog over a real model and the settings it edits.
struct Desk {
    GpsSettings settings;
    test::FakeDialogs dialogs;
    std::unique_ptr<GpsSetupModel> model;
    std::unique_ptr<GpsSetupDialog> dialog;

    void open(const std::vector<std::string>& names = {}) {
        dialog.reset();
        std::vector<SerialDevice> devices;
        for (const std::string& name : names)
            devices.push_back({name, name == "/dev/ttyACM0" ? "u-blox GNSS receiver" : ""});
        model = std::make_unique<GpsSetupModel>(settings, dialogs, devices);
        dialog = std::make_unique<GpsSetupDialog>(*model);
        dialog->show();
        QApplication::setActiveWindow(dialog.get());
        QTest::qWait(20);
    }

    QComboBox* list(const char* name) const {
        auto* box = dialog->findChild<QComboBox*>(QString::fromLatin1(name));
        EXPECT_NE(box, nullptr) << name;
        return box;
    }
    QLineEdit* acc() const { return dialog->findChild<QLineEdit*>("acc"); }
    QPushButton* button(const char* name) const {
        return dialog->findChild<QPushButton*>(QString::fromLatin1(name));
    }
    std::string shown(const char* name) const { return list(name)->currentText().toStdString(); }

    // Replaces the text of an editable list by typing.
    void type(const char* name, const QString& text) const {
        QComboBox* box = list(name);
        box->setFocus();
        box->lineEdit()->selectAll();
        QTest::keyClicks(box->lineEdit(), text);
    }
    // Picks an entry of a list as the keyboard does: focus it and type its start.
    void pick(const char* name, const QString& entry) const {
        QComboBox* box = list(name);
        box->setFocus();
        // Keys typed within the interval continue the previous search.
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
        QTest::keyClicks(box, entry);
        EXPECT_EQ(box->currentText(), entry);
    }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
};

void expectSettings(const GpsSettings& s, const GpsSettings& expected) {
    EXPECT_EQ(std::tie(s.Port, s.Speed, s.Parity, s.Dbits, s.Sbits, s.Acc, s.Device),
              std::tie(expected.Port, expected.Speed, expected.Parity, expected.Dbits,
                       expected.Sbits, expected.Acc, expected.Device));
}

} // namespace

TEST(GpsSetupDialog, ShowsTheSettingsAndOffersNumbersAndDevices) {
    Desk d;
    d.settings.Port = 3;
    d.settings.Parity = "E";
    d.settings.Sbits = 2;
    d.settings.Acc = 25;
    d.open({"/dev/ttyUSB0", "/dev/ttyACM0"});
    EXPECT_EQ(d.dialog->windowTitle(), "GPS setup");
    for (auto [name, shown] : {std::pair<const char*, const char*>{"port", "3"},
                               {"speed", "4800"},
                               {"parity", "E"},
                               {"dbits", "8"},
                               {"sbits", "2"}})
        EXPECT_EQ(d.shown(name), shown) << name;
    EXPECT_EQ(d.acc()->text(), "25");

    // The devices found, then the 99 port numbers.
    QComboBox* port = d.list("port");
    ASSERT_EQ(port->count(), 101);
    EXPECT_EQ(port->itemText(0), "/dev/ttyUSB0");
    EXPECT_EQ(port->itemText(1), QString::fromUtf8("/dev/ttyACM0 \u2014 u-blox GNSS receiver"));
    EXPECT_EQ(port->itemText(100), "99");
    EXPECT_EQ(d.list("speed")->count(), 8);
    EXPECT_TRUE(d.list("parity")->isEditable() && d.list("dbits")->isEditable() &&
                d.list("sbits")->isEditable());
    bool labelled = false;
    for (QLabel* label : d.dialog->findChildren<QLabel*>())
        labelled |= label->text() == "Accuracy (m)" && label->buddy() == d.acc();
    EXPECT_TRUE(labelled);

    // A device, when set, is what the port list shows.
    d.settings.Device = "/dev/ttyACM0";
    d.open({"/dev/ttyUSB0"});
    EXPECT_EQ(d.shown("port"), "/dev/ttyACM0");
    d.open({"/dev/ttyACM0"});
    EXPECT_EQ(d.shown("port"), "/dev/ttyACM0 \u2014 u-blox GNSS receiver");
    // An unusual stored speed is still shown, not replaced by the first entry.
    d.settings.Speed = 300;
    d.open();
    EXPECT_EQ(d.shown("speed"), "300");
}

TEST(GpsSetupDialog, OkStoresTheSixSettingsAndTheyComeBack) {
    Desk d;
    d.open();
    d.type("port", "7");
    d.pick("speed", "9600");
    d.type("parity", "O");
    d.type("dbits", "7");
    d.type("sbits", "2");
    d.acc()->setFocus();
    QTest::keyClicks(d.acc(), "12.6");
    // Enter checks the box and selects it again; it does not press OK.
    QTest::keyClick(d.acc(), Qt::Key_Return);
    QTest::qWait(20);
    EXPECT_EQ(d.acc()->text(), "13");
    EXPECT_EQ(d.acc()->selectedText(), "13");
    EXPECT_TRUE(d.dialog->isVisible());
    expectSettings(d.settings, GpsSettings{});

    d.click("OKButton");
    EXPECT_FALSE(d.dialog->isVisible());
    EXPECT_EQ(d.dialog->result(), QDialog::Accepted);
    EXPECT_TRUE(d.dialogs.messages.empty());
    GpsSettings expected;
    expected.Port = 7;
    expected.Speed = 9600;
    expected.Parity = "O";
    expected.Dbits = 7;
    expected.Sbits = 2;
    expected.Acc = 13;
    expectSettings(d.settings, expected);

    // Opened again and left untouched, OK stores the same.
    d.open();
    EXPECT_EQ(d.shown("parity"), "O");
    d.click("OKButton");
    expectSettings(d.settings, expected);
}

TEST(GpsSetupDialog, CancelEscapeAndClosingStoreNothing) {
    const std::function<void(QDialog&)> ways[] = {
        [](QDialog& dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton*>("CancelButton"), Qt::LeftButton);
        },
        [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); },
        [](QDialog& dialog) { dialog.close(); }};
    Desk d;
    for (const auto& leave : ways) {
        d.open();
        d.type("port", "9");
        d.pick("speed", "2400");
        d.type("dbits", "5");
        leave(*d.dialog);
        EXPECT_FALSE(d.dialog->isVisible());
        EXPECT_EQ(d.dialog->result(), QDialog::Rejected);
        EXPECT_FALSE(d.model->Stored());
        expectSettings(d.settings, GpsSettings{});
    }
}

TEST(GpsSetupDialog, TodaysSpeedsAreOfferedAndStored) {
    Desk d;
    d.open();
    d.pick("speed", "115200");
    d.click("OKButton");
    EXPECT_TRUE(d.dialogs.messages.empty());
    EXPECT_FALSE(d.dialog->isVisible());
    EXPECT_EQ(d.settings.Speed, 115200);
}

TEST(GpsSetupDialog, DevicePickedOrTypedWinsUntilANumberIsChosen) {
    Desk d;
    d.open({"/dev/ttyUSB0"});
    // The first entry, as the drop-down picks it: the device before the 99 numbers.
    d.list("port")->setCurrentIndex(0);
    EXPECT_EQ(d.shown("port"), "/dev/ttyUSB0");
    d.click("OKButton");
    EXPECT_EQ(d.settings.Device, "/dev/ttyUSB0");
    EXPECT_EQ(d.settings.Port, 1);

    d.open();
    EXPECT_EQ(d.shown("port"), "/dev/ttyUSB0");
    d.type("port", "/tmp/gps-out");
    d.click("OKButton");
    EXPECT_EQ(d.settings.Device, "/tmp/gps-out");

    d.open();
    d.type("port", "5");
    d.click("OKButton");
    EXPECT_EQ(d.settings.Device, "");
    EXPECT_EQ(d.settings.Port, 5);
}

TEST(GpsSetupDialog, AccuracyIsSelectedOnEntryAndCheckedOnLeaving) {
    Desk d;
    d.settings.Acc = 10;
    d.open();
    QTest::mouseClick(d.acc(), Qt::LeftButton);
    QTest::qWait(20);
    EXPECT_TRUE(d.acc()->hasFocus());
    EXPECT_EQ(d.acc()->selectedText(), "10");
    QTest::keyClicks(d.acc(), "-5");
    QTest::keyClick(d.acc(), Qt::Key_Tab);
    EXPECT_EQ(d.acc()->text(), "0");

    // Clicking OK straight from the box checks it first.
    d.acc()->setFocus();
    d.acc()->selectAll();
    QTest::keyClicks(d.acc(), "7.4");
    d.click("OKButton");
    EXPECT_EQ(d.acc()->text(), "7");
    EXPECT_EQ(d.settings.Acc, 7);
}

TEST(GpsSetupDialog, EditRunsModallyOverTheSettings) {
    GpsSettings settings;
    test::FakeDialogs dialogs;
    auto answer = [](const char* buttonName, const QString& speed) {
        QTimer::singleShot(0, [buttonName, speed] {
            QWidget* open = nullptr;
            (void)QTest::qWaitFor(
                [&] { return (open = QApplication::activeModalWidget()) != nullptr; });
            ASSERT_NE(open, nullptr);
            EXPECT_EQ(open->objectName(), "frmGpsSetup");
            auto* box = open->findChild<QComboBox*>("speed");
            box->setCurrentIndex(box->findText(speed));
            QTest::mouseClick(open->findChild<QPushButton*>(buttonName), Qt::LeftButton);
        });
    };
    answer("CancelButton", "1200");
    EXPECT_FALSE(GpsSetupDialog::Edit(settings, dialogs));
    EXPECT_EQ(settings.Speed, 4800);
    answer("OKButton", "1200");
    EXPECT_TRUE(GpsSetupDialog::Edit(settings, dialogs));
    EXPECT_EQ(settings.Speed, 1200);
}
