#include "qt/widgets/frmGpsSetup.h"

#include "config/GpsSettings.h"
#include "gps/GpsSetupModel.h"
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
    std::unique_ptr<frmGpsSetup> dialog;

    void open(const std::vector<SerialDevice>& devices = {}) {
        dialog.reset();
        model = std::make_unique<GpsSetupModel>(settings, dialogs, devices);
        dialog = std::make_unique<frmGpsSetup>(*model);
        dialog->show();
        QApplication::setActiveWindow(dialog.get());
        QTest::qWait(20);
    }
    QComboBox* list(const char* name) const { return dialog->findChild<QComboBox*>(name); }
    QLineEdit* acc() const { return dialog->findChild<QLineEdit*>("acc"); }
    std::string shown(const char* name) const { return list(name)->currentText().toStdString(); }
    // Replaces the text of an editable list by typing.
    void type(const char* name, const QString& text) const {
        list(name)->setFocus();
        list(name)->lineEdit()->selectAll();
        QTest::keyClicks(list(name)->lineEdit(), text);
    }
    // Picks an entry of a fixed list as the keyboard does: focus it and type its start.
    void pick(const char* name, const QString& entry) const {
        list(name)->setFocus();
        QTest::qWait(QApplication::keyboardInputInterval() + 50); // a new search
        QTest::keyClicks(list(name), entry);
        EXPECT_EQ(list(name)->currentText(), entry);
    }
    void click(const char* name) const {
        QTest::mouseClick(dialog->findChild<QPushButton*>(name), Qt::LeftButton);
    }
    auto stored() const {
        const GpsSettings& s = settings;
        return std::make_tuple(s.Port, s.Speed, s.Parity, s.Dbits, s.Sbits, s.Acc, s.Device);
    }
};

} // namespace

TEST(GpsSetupDialog, ShowsTheSettingsWithTheDevicesFoundBeforeThePortNumbers) {
    Desk d;
    d.settings.Port = 3;
    d.settings.Parity = "E";
    d.settings.Sbits = 2;
    d.settings.Acc = 25;
    d.settings.Speed = 300; // unusual, but shown rather than replaced
    d.open({{"/dev/ttyUSB0", ""}, {"/dev/ttyACM0", "u-blox GNSS receiver"}});
    EXPECT_EQ(d.shown("port") + d.shown("speed") + d.shown("parity") + d.shown("dbits") +
                  d.shown("sbits") + " " + d.acc()->text().toStdString(),
              "3300E82 25");
    QComboBox* port = d.list("port");
    ASSERT_EQ(port->count(), 101);
    EXPECT_EQ(port->itemText(0), "/dev/ttyUSB0");
    EXPECT_EQ(port->itemText(1), QString::fromUtf8("/dev/ttyACM0 \u2014 u-blox GNSS receiver"));
    EXPECT_EQ(port->itemText(100), "99");
    bool labelled = false;
    for (QLabel* label : d.dialog->findChildren<QLabel*>())
        labelled |= label->text() == "Accuracy (m)" && label->buddy() == d.acc();
    EXPECT_TRUE(labelled);

    // A device, when set, is what the port list shows, described when it was found.
    d.settings.Device = "/dev/ttyACM0";
    d.open({{"/dev/ttyUSB0", ""}});
    EXPECT_EQ(d.shown("port"), "/dev/ttyACM0");
    d.open({{"/dev/ttyACM0", "u-blox GNSS receiver"}});
    EXPECT_EQ(d.shown("port"), "/dev/ttyACM0 \u2014 u-blox GNSS receiver");
}

TEST(GpsSetupDialog, OkStoresWhatWasTypedAndPickedAndCancellingStoresNothing) {
    Desk d;
    const auto untouched = d.stored();
    const std::function<void(QDialog&)> leaves[] = {
        [](QDialog& dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton*>("CancelButton"), Qt::LeftButton);
        },
        [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); },
        [](QDialog& dialog) { dialog.close(); }};
    for (const auto& leave : leaves) {
        d.open();
        d.type("port", "9");
        d.pick("speed", "2400");
        leave(*d.dialog);
        EXPECT_EQ(d.dialog->result(), QDialog::Rejected);
        EXPECT_EQ(d.stored(), untouched);
    }

    d.open();
    d.type("port", "7");
    d.pick("speed", "115200");
    d.type("parity", "O");
    d.type("dbits", "7");
    d.type("sbits", "2");
    d.acc()->setFocus();
    QTest::keyClicks(d.acc(), "12.6");
    // Enter checks the box and selects it again; it does not press OK.
    QTest::keyClick(d.acc(), Qt::Key_Return);
    EXPECT_EQ(d.acc()->selectedText(), "13");
    EXPECT_TRUE(d.dialog->isVisible());
    d.click("OKButton");
    EXPECT_EQ(d.dialog->result(), QDialog::Accepted);
    EXPECT_TRUE(d.dialogs.messages.empty());
    const auto typed = std::make_tuple(7, 115200, std::string("O"), 7, 2, 13, std::string());
    EXPECT_EQ(d.stored(), typed);
    d.open(); // and untouched the next time, OK stores the same
    d.click("OKButton");
    EXPECT_EQ(d.stored(), typed);

    // Clicking OK straight from a bad accuracy checks it first.
    d.open();
    d.acc()->setFocus();
    d.acc()->selectAll();
    QTest::keyClicks(d.acc(), "-5");
    d.click("OKButton");
    EXPECT_EQ(d.settings.Acc, 0);
}

TEST(GpsSetupDialog, ADevicePickedOrTypedWinsUntilANumberIsChosen) {
    Desk d;
    const std::pair<const char*, std::pair<std::string, int>> steps[] = {
        {nullptr, {"/dev/ttyUSB0", 1}}, // the first entry as the drop-down picks it
        {"/tmp/gps-out", {"/tmp/gps-out", 1}},
        {"5", {"", 5}}};
    for (const auto& [typed, stored] : steps) {
        d.open({{"/dev/ttyUSB0", ""}});
        if (typed)
            d.type("port", typed);
        else
            d.list("port")->setCurrentIndex(0);
        d.click("OKButton");
        EXPECT_EQ(std::make_pair(d.settings.Device, int{d.settings.Port}), stored);
    }
}

TEST(GpsSetupDialog, EditRunsModallyOverTheSettings) {
    GpsSettings settings;
    test::FakeDialogs dialogs;
    auto answer = [](const char* button) {
        QTimer::singleShot(0, [button] {
            QWidget* open = nullptr;
            (void)QTest::qWaitFor([&] { return (open = QApplication::activeModalWidget()); });
            ASSERT_NE(open, nullptr);
            auto* speed = open->findChild<QComboBox*>("speed");
            speed->setCurrentIndex(speed->findText("1200"));
            QTest::mouseClick(open->findChild<QPushButton*>(button), Qt::LeftButton);
        });
    };
    answer("CancelButton");
    EXPECT_FALSE(frmGpsSetup::Edit(settings, dialogs));
    EXPECT_EQ(settings.Speed, 4800);
    answer("OKButton");
    EXPECT_TRUE(frmGpsSetup::Edit(settings, dialogs));
    EXPECT_EQ(settings.Speed, 1200);
}
