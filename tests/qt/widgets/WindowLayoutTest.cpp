// Every window of the program, reached from the main window as the operator would: it fits
// a laptop's screen (1366x768 at 100 %, 1920x1080 at 150 %: about 690 and 650 logical pixels
// of height once the title bar and a panel are off), no two of its items share an access key,
// and every control has a name a screen reader can say. The same program runs again under
// QT_SCALE_FACTOR=1.5.
#include "MainWindowDesk.h"
#include "qt/widgets/ResultTable.h"
#include "qt/widgets/WorkingDialog.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QStatusBar>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <map>

using namespace zav;
using zav::test::Desk;
using zav::test::kExamples;

namespace {

// Logical pixels left at 1920x1080 and 150 % (the tighter of the two screens).
constexpr int kBudgetWidth = 1280, kBudgetHeight = 650;
constexpr int kMainWindowMinHeight = 620;

// The access key of a caption: the letter after a single "&" ("&&" is a literal one).
QChar accessKey(const QString& text) {
    static const QRegularExpression single("(?<!&)&(?!&)");
    const auto at = text.indexOf(single);
    return at < 0 || at + 1 >= text.size() ? QChar() : text[at + 1].toLower();
}

// The captions that share an access key among `captions`, as text.
std::string clashes(const QStringList& captions) {
    std::map<QChar, QStringList> keys;
    for (const QString& caption : captions)
        if (const QChar key = accessKey(caption); !key.isNull())
            keys[key] << caption;
    std::string out;
    for (const auto& [key, same] : keys)
        if (same.size() > 1)
            out += QString("'%1': %2; ").arg(key, same.join(" / ")).toStdString();
    return out;
}

// The captions with access keys in one window: buttons, group boxes, labels for their boxes,
// and for a main window its menu titles, which Alt opens from anywhere in it.
QStringList windowCaptions(QWidget* window) {
    QStringList captions;
    for (QWidget* w : window->findChildren<QWidget*>()) {
        if (!w->isVisibleTo(window) || w->window() != window)
            continue;
        if (auto* button = qobject_cast<QAbstractButton*>(w))
            captions << button->text();
        else if (auto* box = qobject_cast<QGroupBox*>(w))
            captions << box->title();
        else if (auto* label = qobject_cast<QLabel*>(w); label && label->buddy())
            captions << label->text();
    }
    if (auto* main = qobject_cast<QMainWindow*>(window))
        for (QAction* menu : main->menuBar()->actions())
            captions << menu->text();
    return captions;
}

// Controls the keyboard reaches whose accessible name is empty.
std::string unnamed(QWidget* window) {
    std::string out;
    for (QWidget* w : window->findChildren<QWidget*>()) {
        if (!w->isVisibleTo(window) || w->window() != window || !(w->focusPolicy() & Qt::TabFocus))
            continue;
        if (w->focusProxy())
            continue; // the proxy answers for it
        QAccessibleInterface* a = QAccessible::queryAccessibleInterface(w);
        if (!a || a->text(QAccessible::Name).trimmed().isEmpty())
            out += std::string(w->metaObject()->className()) + " " + w->objectName().toStdString() +
                   "; ";
    }
    return out;
}

// What the walk found in one window, as text; empty when it fits `heightBudget`, no two items
// share an access key and every control is named.
std::string faults(QWidget* window, int heightBudget) {
    const QSize minimum = window->minimumSizeHint().expandedTo(window->minimumSize());
    std::string out = clashes(windowCaptions(window)) + unnamed(window);
    if (minimum.width() > kBudgetWidth || minimum.height() > heightBudget)
        out += "minimum size " + std::to_string(minimum.width()) + "x" +
               std::to_string(minimum.height());
    return out.empty() ? out : window->windowTitle().toStdString() + ": " + out;
}

// Runs `open`, which shows a window (a modal one blocks in it), inspects the window that
// appeared and closes it.
std::optional<std::string> walkInto(const std::function<void()>& open) {
    const QWidgetList before = QApplication::topLevelWidgets();
    std::optional<std::string> found;
    auto look = [&] {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->isVisible() && !before.contains(w) && !qobject_cast<QMenu*>(w)) {
                found = faults(w, kBudgetHeight);
                w->close();
                return true;
            }
        return false;
    };
    // A modal window is closed only from its own event loop: closed while it is still being
    // shown, it would leave that loop waiting for ever.
    const int outerLoops = QThread::currentThread()->loopLevel();
    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QThread::currentThread()->loopLevel() > outerLoops && look())
            poll.stop();
    });
    poll.start();
    open();
    QTest::qWait(30);
    if (!found)
        look();
    return found;
}

} // namespace

TEST(WindowLayout, EveryWindowFitsHasUniqueAccessKeysAndNamedControls) {
    Desk d;
    d.model->options.Verbose = false;
    for (const char* f : {"soundcard.wav", "receiver.wav", "external.wav"})
        d.recordings.push_back(kExamples + f);
    for (int step = 1; step <= 3; ++step)
        QTest::mouseClick(d.window->stepButton(step), Qt::LeftButton);
    ASSERT_TRUE(d.window->action("Transfer results")->isEnabled());

    // The main window, with results in its grids and the comparison open; every set-up box,
    // grid heading and comparison figure says what it is.
    EXPECT_EQ(faults(d.window.get(), kMainWindowMinHeight), "");
    std::vector<QWidget*> explained;
    for (int i = 0; i < kSetupFieldCount; ++i)
        explained.push_back(d.window->setupPanel()->fieldWidget(static_cast<SetupField>(i)));
    for (const char* figure : {"lblFa", "lblFam", "lblDelta", "lblPlacement", "lblGalactic"})
        explained.push_back(d.window->findChild<QLabel*>(figure));
    std::string unexplained;
    for (QWidget* w : explained)
        if (w->toolTip().isEmpty())
            unexplained += w->objectName().toStdString() + "; ";
    for (ResultTable* grid : {d.window->measurementsGrid(), d.window->resultsGrid()}) {
        for (int c = 0; c < grid->columnCount(); ++c)
            if (grid->horizontalHeaderItem(c)->toolTip().isEmpty())
                unexplained += grid->horizontalHeaderItem(c)->text().toStdString() + "; ";
        for (int r = 0; r < grid->rowCount(); ++r)
            if (grid->verticalHeaderItem(r)->toolTip().isEmpty())
                unexplained += grid->verticalHeaderItem(r)->text().toStdString() + "; ";
    }
    EXPECT_EQ(unexplained, "");

    // Each menu on its own: no two visible entries share a key.
    for (QMenu* menu : d.window->findChildren<QMenu*>()) {
        QStringList captions;
        for (QAction* a : menu->actions())
            if (a->isVisible() && !a->isSeparator())
                captions << a->text();
        EXPECT_EQ(clashes(captions), "") << menu->title().toStdString();
    }

    // Every window a command opens, the position dialog and the recording's progress window.
    d.model->state.InputDevice = "no such input";
    std::vector<std::function<void()>> opens;
    for (const char* command : {"Transfer results", "CalibrateRx", "GPS setup...",
                                "Check for updates", "About ZAV", "Plot wave", "Input level..."})
        opens.push_back([&d, command] { d.window->action(command)->trigger(); });
    opens.push_back([&d] { d.window->findChild<QPushButton*>("getPositionButton")->click(); });
    for (std::size_t i = 0; i < opens.size(); ++i)
        EXPECT_EQ(walkInto(opens[i]), std::optional<std::string>("")) << "window " << i;
    WorkingDialog working(d.window.get());
    working.show();
    EXPECT_EQ(faults(&working, kBudgetHeight), "");
}

TEST(WindowLayout, MainWindowOpensWithinTheScreenAndFoldsTheComparison) {
    Desk d;
    const QRect screen = d.window->screen()->availableGeometry();
    EXPECT_LE(d.window->height(), screen.height());
    EXPECT_LE(d.window->width(), screen.width());

    // A place saved on a larger screen is brought within this one.
    d.settings.SaveSetting("window", "geometry", "");
    d.window->resize(screen.width() + 300, screen.height() + 400);
    d.window->close();
    MainWindow again(*d.model, d.dialogs, d.settings, d.desktop, nullptr);
    EXPECT_LE(again.height(), screen.height());

    // Folding the comparison away shrinks what the window needs.
    QGroupBox* p372 = nullptr;
    for (QGroupBox* box : d.window->findChildren<QGroupBox*>())
        if (box->title() == "Site against ITU-R P.372")
            p372 = box;
    ASSERT_NE(p372, nullptr);
    ASSERT_TRUE(p372->isCheckable());
    QWidget* content = static_cast<QScrollArea*>(d.window->centralWidget())->widget();
    const int open = content->sizeHint().height();
    p372->setChecked(false);
    QTest::qWait(10);
    EXPECT_LT(content->sizeHint().height(), open - 150);
}
