#include "qt/widgets/WorkingDialog.h"

#include "measure/WaveRecorder.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace zav;

TEST(WorkingDialog, ShowsProgressAndLevelWhileShownAndModalInTheLocalesNumbers) {
    WorkingDialog dialog;
    dialog.Begin(92610);
    EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
    EXPECT_EQ(dialog.levelLabel()->text(), "-inf dBFS");
    dialog.Update(46305, -12.34);
    EXPECT_EQ(dialog.progressBar()->value(), dialog.progressBar()->maximum() / 2);
    EXPECT_EQ(dialog.countLabel()->text() + " " + dialog.levelLabel()->text(),
              "46305 of 92610 samples -12.3 dBFS");
    EXPECT_EQ(dialog.levelMeter()->value(), -12);
    dialog.Update(92610, -80);
    EXPECT_EQ(dialog.levelMeter()->value(), dialog.levelMeter()->minimum()); // below the floor
    dialog.End();
    EXPECT_FALSE(dialog.isVisible());
    WorkingDialog comma(nullptr, ',');
    comma.Begin(10);
    comma.Update(5, -3.25);
    EXPECT_EQ(comma.levelLabel()->text(), "-3,3 dBFS");
    comma.End();
}

TEST(WorkingDialog, CancelEndsTheRecordingAsCancelled) {
    // A device that hands over a block whenever the event loop has run, as the real one does.
    struct SlowCapture : AudioCapture {
        WorkingDialog* dialog = nullptr;
        int blocks = 0;
        CaptureOutcome Capture(const CaptureRequest& request, CaptureSink& sink) override {
            std::vector<std::int16_t> block(1000, 100);
            for (std::int64_t done = 0; done < request.samples; done += 1000) {
                QApplication::processEvents();
                if (++blocks == 3) // the operator clicks Cancel
                    QTest::mouseClick(dialog->cancelButton(), Qt::LeftButton);
                if (!sink.Continue() || !sink.Samples(block.data(), block.size()))
                    return {CaptureStatus::Stopped, {}, 0};
            }
            return {CaptureStatus::Completed, {}, 0};
        }
    };
    QTemporaryDir dir;
    const std::string templ = dir.filePath("ZAV.wav").toStdString();
    test::WriteWave(templ, {}, 8000);
    WorkingDialog dialog;
    SlowCapture capture;
    capture.dialog = &dialog;
    test::FakeDialogs dialogs;
    WaveRecorder recorder({capture, dialogs, &dialog}, templ, [] { return std::string(); });
    const Recording rec =
        recorder.RecordWave({dir.filePath("step.wav").toStdString(), 1000, false});
    EXPECT_EQ(rec.status, RecordingStatus::Cancelled);
    EXPECT_EQ(capture.blocks, 3);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.countLabel()->text(), "2000 of 16800 samples");

    // The next recording starts afresh; Esc (as the window's close button) cancels too.
    dialog.Begin(10);
    EXPECT_FALSE(dialog.CancelRequested());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.CancelRequested());
    EXPECT_TRUE(dialog.isVisible()); // until the recording has stopped
    dialog.End();
}
