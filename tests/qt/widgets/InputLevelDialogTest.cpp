// The input level meter on a real sound system: a private PulseAudio server plays a sine into
// its null sink, and the meter reads the remapped source "zavmic" that records it.
#include "../PulseServer.h"

#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/widgets/InputLevelDialog.h"
#include "testsupport/QtWait.h"
#include "testsupport/TestWave.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>

using namespace zav;

namespace {

// Runs the meter until `done` holds for its labels (or 10 s pass), then closes it.
bool meterUntil(InputLevelDialog& dialog, const std::function<bool()>& done) {
    bool met = false;
    QElapsedTimer clock;
    clock.start();
    QTimer poll;
    poll.setInterval(50);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        met = dialog.readings() > 5 && done();
        if (met || clock.elapsed() > 10000)
            dialog.reject();
    });
    poll.start();
    dialog.exec();
    return met;
}

double shownDb(const QLabel* label) {
    // "RMS -15.1 dBFS": the number between the words.
    return label->text().section(' ', 1, 1).toDouble();
}

} // namespace

TEST(InputLevelDialog, ShowsTheLiveLevelOfAPulseAudioSourceAndWarnsOfClipping) {
    test::PulseServer server;
    ASSERT_TRUE(server.ok()) << server.why();
    ASSERT_TRUE(test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }));
    QtAudioCapture capture;
    {
        ASSERT_TRUE(server.Play(test::Sine(0.25 * 32767, 1000, 44100, 44100 * 30)));
        InputLevelDialog dialog(capture, "zavmic");
        const double rms = 20 * std::log10(0.25 / std::sqrt(2.0)); // -15.1 dBFS
        EXPECT_TRUE(meterUntil(dialog, [&] {
            return std::abs(shownDb(dialog.rmsLabel()) - rms) < 0.6;
        })) << dialog.rmsLabel()->text().toStdString();
        EXPECT_NEAR(shownDb(dialog.peakLabel()), 20 * std::log10(0.25), 0.6);
        // From the peak up to the steps' clipping limit, 0.7·√2 of full scale.
        EXPECT_NEAR(shownDb(dialog.headroomLabel()), 20 * std::log10(0.7 * std::sqrt(2.0) / 0.25),
                    0.6)
            << dialog.headroomLabel()->text().toStdString();
        EXPECT_NEAR(dialog.meter()->value(), rms, 1.0);
    }
    {
        ASSERT_TRUE(server.Play(test::Sine(32767, 1000, 44100, 44100 * 30)));
        InputLevelDialog dialog(capture, "zavmic");
        EXPECT_TRUE(meterUntil(dialog, [&] {
            return dialog.adviceLabel()->text().startsWith("Clipping");
        })) << dialog.adviceLabel()->text().toStdString();
    }
    server.StopPlaying();
    // A missing input says so in the window instead of hanging.
    InputLevelDialog missing(capture, "no such input");
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&missing] {
        if (missing.adviceLabel()->text().startsWith("The input"))
            missing.reject();
    });
    poll.start(50);
    QTimer::singleShot(15000, &missing, [&missing] { missing.reject(); });
    missing.exec();
    EXPECT_TRUE(missing.adviceLabel()->text().startsWith("The input cannot be read: "))
        << missing.adviceLabel()->text().toStdString();
}
