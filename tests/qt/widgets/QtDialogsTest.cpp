#include "qt/widgets/QtDialogs.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

using namespace zav;

namespace {

// While it lives, does `act` to any chooser on screen, once the chooser's own event loop runs:
// an answer given while it is still being shown (events are processed then too) would leave
// that loop waiting for ever.
struct ChooserAnswer {
    QTimer poll;
    explicit ChooserAnswer(std::function<void(QFileDialog*)> act) {
        const int outerLoops = QThread::currentThread()->loopLevel();
        QObject::connect(&poll, &QTimer::timeout, [act, outerLoops] {
            if (QThread::currentThread()->loopLevel() <= outerLoops)
                return;
            for (QWidget* w : QApplication::topLevelWidgets())
                if (auto* chooser = qobject_cast<QFileDialog*>(w); chooser && chooser->isVisible())
                    act(chooser);
        });
        poll.start(20);
    }
};

} // namespace

TEST(QtDialogs, FilterListsBecomeQtFilters) {
    for (const auto& [list, filter] :
         {std::pair<const char*, const char*>{"ZAV files (*.zav)|*.zav", "ZAV files (*.zav)"},
          {"All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab",
           "All Files (*.*);;Text files (*.txt *.tab)"},
          {"Gnuplot|*.plt", "Gnuplot (*.plt)"},
          {"", ""}})
        EXPECT_EQ(QtFilterFromList(list).toStdString(), filter);
}

// The real chooser, answered by typing a bare name as the operator would: the type's suffix
// is added, and the next chooser for that kind of file opens where this one ended.
TEST(QtDialogs, SaveChooserAddsTheSuffixAndRemembersTheFolderPerKind) {
    QTemporaryDir start, elsewhere;
    QtDialogs dialogs;
    auto save = [&dialogs](const FileDialogRequest& request, const QString& typed) {
        // Typed into the name box: selectFile() leaves that box alone once it has the focus.
        ChooserAnswer answer([typed](QFileDialog* chooser) {
            chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(typed);
            static_cast<QDialog*>(chooser)->accept(); // as the Save button does
        });
        return dialogs.SaveFileName(request);
    };
    // Where a chooser opens; it is cancelled.
    auto opensIn = [&dialogs](const FileDialogRequest& request) {
        QString shown;
        ChooserAnswer answer([&shown](QFileDialog* chooser) {
            shown = chooser->directory().absolutePath();
            chooser->reject();
        });
        EXPECT_EQ(dialogs.SaveFileName(request), std::nullopt);
        return shown;
    };
    FileDialogRequest text;
    text.initialDir = start.path().toStdString();
    text.filter = "All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab";
    text.filterIndex = 2;
    EXPECT_EQ(save(text, elsewhere.filePath("report")),
              elsewhere.filePath("report.txt").toStdString());

    // The text kind opens in the remembered folder; a wave file still where it is told.
    EXPECT_EQ(opensIn(text), QDir(elsewhere.path()).absolutePath());
    FileDialogRequest wave = text;
    wave.filter = "All Files (*.*)|*.*|Wave files (*.wav)|*.wav";
    EXPECT_EQ(opensIn(wave), QDir(start.path()).absolutePath());
}
