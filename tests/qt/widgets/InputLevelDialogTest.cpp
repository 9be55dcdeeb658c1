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

// Runs the meter until `done` holds (or 15 s pass), then closes it.
bool meterUntil(InputLevelDialog& dialog, const std::function<bool()>& done) {
    bool met = false;
    QElapsedTimer clock;
    clock.start();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        met = done();
        if (met || clock.elapsed() > 15000)
            dialog.reject();
    });
    poll.start(50);
    dialog.exec();
    return met;
}

double shownDb(const QLabel* label) { // "RMS -15.1 dBFS": the number between the words
    return label->text().section(' ', 1, 1).toDouble();
}

} // namespace

TEST(InputLevelDialog, ShowsTheLiveLevelOfAPulseAudioSourceAndAdvisesOnTheGain) {
    test::PulseServer server;
    ASSERT_TRUE(server.ok()) << server.why();
    ASSERT_TRUE(test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }));
    QtAudioCapture capture;
    for (const auto& [amplitude, advice] :
         {std::pair{0.25, "Level good for measuring"},
          {0.7, "Little headroom: turn the receiver's audio gain down a little"},
          {1.0, "Clipping: turn the receiver's audio gain or the recording level down"}}) {
        ASSERT_TRUE(server.Play(test::Sine(amplitude * 32767, 1000, 44100, 44100 * 30)));
        InputLevelDialog dialog(capture, "zavmic");
        const double rms = 20 * std::log10(amplitude / std::sqrt(2.0)); // -15.1 dBFS at 0.25
        EXPECT_TRUE(meterUntil(dialog,
                               [&] {
                                   return dialog.readings() > 5 &&
                                          std::abs(shownDb(dialog.rmsLabel()) - rms) < 0.6 &&
                                          dialog.adviceLabel()->text() == advice;
                               }))
            << amplitude << ": " << dialog.rmsLabel()->text().toStdString() << ", "
            << dialog.adviceLabel()->text().toStdString();
        if (amplitude > 0.5)
            continue;
        EXPECT_NEAR(shownDb(dialog.peakLabel()), 20 * std::log10(amplitude), 0.6);
        // From the peak up to the steps' clipping limit, 0.7·√2 of full scale.
        EXPECT_NEAR(shownDb(dialog.headroomLabel()),
                    20 * std::log10(0.7 * std::sqrt(2.0) / amplitude), 0.6);
        EXPECT_NEAR(dialog.meter()->value(), rms, 1.0);
    }
    server.StopPlaying();
    // A missing input says so in the window instead of hanging.
    InputLevelDialog missing(capture, "no such input");
    meterUntil(missing, [&] { return missing.adviceLabel()->text().startsWith("The input"); });
    EXPECT_TRUE(missing.adviceLabel()->text().startsWith("The input cannot be read: "))
        << missing.adviceLabel()->text().toStdString();
}
