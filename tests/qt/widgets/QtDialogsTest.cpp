#include "qt/widgets/QtDialogs.h"

#include "platform/MemorySettingsStore.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

using namespace zav;

namespace {

// While it lives, does `act` to any chooser on screen (again while it stays there: it may
// show before its event loop runs).
struct ChooserAnswer {
    QTimer poll;
    explicit ChooserAnswer(std::function<void(QFileDialog*)> act) {
        QObject::connect(&poll, &QTimer::timeout, [act] {
            for (QWidget* w : QApplication::topLevelWidgets())
                if (auto* chooser = qobject_cast<QFileDialog*>(w); chooser && chooser->isVisible())
                    act(chooser);
        });
        poll.start(20);
    }
};

} // namespace

TEST(QtDialogs, FilterListsBecomeQtFilters) {
    EXPECT_EQ(QtFilterFromList("ZAV files (*.zav)|*.zav").toStdString(), "ZAV files (*.zav)");
    EXPECT_EQ(
        QtFilterFromList("All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab").toStdString(),
        "All Files (*.*);;Text files (*.txt *.tab)");
    EXPECT_EQ(QtFilterFromList("Gnuplot|*.plt").toStdString(), "Gnuplot (*.plt)");
    EXPECT_EQ(QtFilterFromList("").toStdString(), "");
}

// The real chooser, answered by typing a bare name as the operator would: the type's suffix
// is added, and the next chooser for that kind of file opens where this one ended.
TEST(QtDialogs, SaveChooserAddsTheSuffixAndRemembersTheFolderPerKind) {
    QTemporaryDir start, elsewhere;
    MemorySettingsStore kept;
    QtDialogs dialogs(nullptr, &kept);
    auto save = [&dialogs](const FileDialogRequest& request, const QString& typed) {
        ChooserAnswer answer([typed](QFileDialog* chooser) {
            chooser->selectFile(typed);
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

    // The next run opens the text kind where this one left it.
    QtDialogs nextRun(nullptr, &kept);
    ChooserAnswer answer([&](QFileDialog* chooser) {
        EXPECT_EQ(chooser->directory().absolutePath(), QDir(elsewhere.path()).absolutePath());
        chooser->reject();
    });
    EXPECT_EQ(nextRun.SaveFileName(text), std::nullopt);
}
