#include "qt/widgets/CalRxDialog.h"
#include "measure/CalRxModel.h"
#include "testsupport/FakeDialogs.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace zav;

namespace {

// The dialog over a real model: a Y factor of 10 dB, 2700 Hz, no loss.
struct Desk {
    SetupRecord setup;
    test::FakeDialogs dialogs;
    int recalculations = 0;
    std::unique_ptr<CalRxModel> model;
    std::unique_ptr<CalRxDialog> dialog;

    explicit Desk(double yfact = 10.0) {
        setup.Bandwidth = "2700";
        setup.Attenuator = "0.0";
        setup.Loss = "0.0";
        setup.RxNF = "9.99";
        model = std::make_unique<CalRxModel>(setup, yfact, dialogs, [this] { ++recalculations; });
        dialog = std::make_unique<CalRxDialog>(*model);
        dialog->show();
        QApplication::setActiveWindow(dialog.get());
        QTest::qWait(20);
    }

    template <class W> W* find(const char* name) const {
        W* w = dialog->findChild<W*>(QString::fromLatin1(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    QString text(const char* label) const { return find<QLabel>(label)->text(); }
    QLineEdit* level() const { return find<QLineEdit>("CalLevel"); }
    // A click on the button's mark: the widget may be wider than its caption.
    void pick(const char* option) const {
        QRadioButton* b = find<QRadioButton>(option);
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
    QPushButton* apply() const { return find<QPushButton>("Apply"); }
};

} // namespace

TEST(CalRxDialog, SourcesLiveFiguresAndApply) {
    Desk d;
    EXPECT_EQ(d.dialog->windowTitle().toStdString(), "ZAV - Calibrate receiver");
    for (auto [name, caption] :
         {std::pair<const char*, const char*>{"OptionCarrier", "Carrier (dBm)"},
          {"OptionDensity", "Noise density (dBm/Hz)"},
          {"OptionEnr", "Excess noise ratio (dB)"}})
        EXPECT_EQ(d.find<QRadioButton>(name)->text().toStdString(), caption);
    EXPECT_TRUE(d.find<QRadioButton>("OptionCarrier")->isChecked());
    EXPECT_EQ(d.text("lblYFactor").toStdString(), "10.00");
    EXPECT_TRUE(d.text("lblReceiverNF").isEmpty());
    EXPECT_FALSE(d.apply()->isEnabled());
    EXPECT_TRUE(d.level()->hasFocus());

    // Every keystroke recomputes: "1" and then "15" dB of ENR.
    d.pick("OptionEnr");
    EXPECT_TRUE(d.find<QRadioButton>("OptionEnr")->isChecked());
    EXPECT_FALSE(d.find<QRadioButton>("OptionCarrier")->isChecked());
    EXPECT_TRUE(d.level()->hasFocus()); // picking a source leaves the focus in the level
    QTest::keyClicks(d.level(), "1");
    EXPECT_EQ(d.text("lblReceiverNF").toStdString(), "-8.54"); // 1 − 9.54
    EXPECT_TRUE(d.apply()->isEnabled());
    QTest::keyClicks(d.level(), "5");
    EXPECT_EQ(d.text("lblSystemNF").toStdString(), "5.46");
    EXPECT_EQ(d.text("lblReceiverNF").toStdString(), "5.46");
    EXPECT_EQ(d.text("lblNoiseFloor").toStdString(), "-134.20");
    EXPECT_TRUE(d.text("lblStatus").isEmpty());

    // The same 15 read as dBm of carrier in 2700 Hz.
    d.pick("OptionCarrier");
    EXPECT_EQ(d.text("lblSystemNF").toStdString(), "145.12"); // 15 − 9.54 − 34.31 + 173.98

    // Back to ENR, and Apply writes the noise figure and recalculates.
    d.pick("OptionEnr");
    QTest::mouseClick(d.apply(), Qt::LeftButton);
    EXPECT_TRUE(d.dialogs.messages.empty());
    EXPECT_EQ(d.setup.RxNF, "5.46");
    EXPECT_EQ(d.recalculations, 1);
    EXPECT_FALSE(d.dialog->isVisible());
    EXPECT_EQ(d.dialog->result(), QDialog::Accepted);
}

TEST(CalRxDialog, RefusalsShowAndDisableApply) {
    Desk weak(0.9);
    EXPECT_EQ(weak.text("lblStatus").toStdString(), CalRxModel::kTooWeak);
    QTest::keyClicks(weak.level(), "-90");
    EXPECT_FALSE(weak.apply()->isEnabled());
    EXPECT_EQ(weak.text("lblYFactor").toStdString(), "-0.46");

    Desk cold;
    cold.pick("OptionEnr");
    QTest::keyClicks(cold.level(), "-4000");
    EXPECT_EQ(cold.text("lblStatus").toStdString(), CalRxModel::kNotPhysical);
    EXPECT_FALSE(cold.apply()->isEnabled());
    // Editing back to a sensible level lifts the refusal.
    cold.level()->selectAll();
    QTest::keyClicks(cold.level(), "15");
    EXPECT_TRUE(cold.text("lblStatus").isEmpty());
    EXPECT_TRUE(cold.apply()->isEnabled());
}

TEST(CalRxDialog, LeavingABadLevelKeepsTheFocus) {
    Desk d;
    QTest::keyClicks(d.level(), "abc");
    QTest::keyClick(d.level(), Qt::Key_Tab);
    QTest::qWait(20);
    ASSERT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_EQ(d.dialogs.messages[0].text, "Level must be a number");
    EXPECT_EQ(d.dialogs.messages[0].title, "Value error:");
    EXPECT_TRUE(d.level()->hasFocus());
    EXPECT_EQ(d.level()->text().toStdString(), "abc");

    // Cancel needs no valid level and changes nothing.
    QTest::mouseClick(d.find<QPushButton>("Cancel"), Qt::LeftButton);
    EXPECT_EQ(d.dialogs.messages.size(), 1u);
    EXPECT_FALSE(d.dialog->isVisible());
    EXPECT_EQ(d.dialog->result(), QDialog::Rejected);
    EXPECT_EQ(d.setup.RxNF, "9.99");
    EXPECT_EQ(d.recalculations, 0);
}
