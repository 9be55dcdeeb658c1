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
    std::string text(const char* label) const { return find<QLabel>(label)->text().toStdString(); }
    QLineEdit* level() const { return find<QLineEdit>("CalLevel"); }
    // A click on the button's mark: the widget may be wider than its caption.
    void pick(const char* option) const {
        QRadioButton* b = find<QRadioButton>(option);
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
    QPushButton* apply() const { return find<QPushButton>("Apply"); }
};

} // namespace

// The figures follow each keystroke and each source picked (the calculation itself is the
// model's test); a refusal disables Apply; Apply writes the figure back, Cancel nothing.
TEST(CalRxDialog, FiguresFollowTheLevelAndSourceAndApplyWritesTheNoiseFigure) {
    Desk d;
    EXPECT_EQ(d.text("lblYFactor"), "10.00");
    EXPECT_FALSE(d.apply()->isEnabled());
    EXPECT_TRUE(d.level()->hasFocus());
    d.pick("OptionEnr");
    EXPECT_TRUE(d.level()->hasFocus()); // picking a source leaves the focus in the level
    QTest::keyClicks(d.level(), "1");
    EXPECT_EQ(d.text("lblReceiverNF"), "-8.54"); // 1 - 9.54
    QTest::keyClicks(d.level(), "5");
    EXPECT_EQ(d.text("lblSystemNF") + d.text("lblNoiseFloor"), "5.46-134.20");
    d.pick("OptionCarrier"); // the same 15 as dBm of carrier in 2700 Hz
    EXPECT_EQ(d.text("lblSystemNF"), "145.12");
    d.pick("OptionEnr");
    QTest::mouseClick(d.apply(), Qt::LeftButton);
    EXPECT_EQ(d.setup.RxNF, "5.46");
    EXPECT_EQ(d.recalculations, 1);
    EXPECT_EQ(d.dialog->result(), QDialog::Accepted);

    Desk cold; // a refusal (the model's) disables Apply until a sensible level lifts it
    cold.pick("OptionEnr");
    QTest::keyClicks(cold.level(), "-4000");
    EXPECT_FALSE(cold.apply()->isEnabled());
    cold.level()->selectAll();
    QTest::keyClicks(cold.level(), "15");
    EXPECT_TRUE(cold.apply()->isEnabled());

    // Leaving a bad level keeps the focus there; Cancel changes nothing.
    Desk bad;
    QTest::keyClicks(bad.level(), "abc");
    QTest::keyClick(bad.level(), Qt::Key_Tab);
    QTest::qWait(20);
    EXPECT_EQ(bad.dialogs.messages.size(), 1u);
    EXPECT_TRUE(bad.level()->hasFocus());
    QTest::mouseClick(bad.find<QPushButton>("Cancel"), Qt::LeftButton);
    EXPECT_EQ(bad.dialog->result(), QDialog::Rejected);
    EXPECT_EQ(bad.setup.RxNF + std::to_string(bad.recalculations), "9.990");
}
