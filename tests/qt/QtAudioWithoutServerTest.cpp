// The audio adapters on a machine without any sound system: recording fails with its
// message, playing and beeping are silent, and nothing waits.
#include "measure/WaveRecorder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace zav;

namespace {

// Before anything in the program talks to a sound system: there is none to be found (and
// none may be started on demand).
const bool kNoSoundSystem = [] {
    setenv("PULSE_SERVER", "unix:/nonexistent/zav-no-sound-system", 1);
    setenv("PULSE_CLIENTCONFIG", "/nonexistent/zav-client.conf", 1);
    return true;
}();

} // namespace

TEST(NoSoundSystem, RecordingFailsAtOnceInWordsAndPlayingAndBeepingAreSilent) {
    ASSERT_TRUE(kNoSoundSystem);
    EXPECT_TRUE(AudioInputNames().empty());
    EXPECT_FALSE(FindAudioInput(""));
    QTemporaryDir dir;
    const std::string templ = dir.filePath("ZAV.wav").toStdString();
    test::WriteWave(templ, test::Sine(10000, 440, 44100, 44100 * 5), 44100);
    QtAudioCapture capture;
    test::FakeDialogs dialogs;
    WaveRecorder recorder({capture, dialogs, nullptr}, templ, [] { return std::string(); });
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(recorder.RecordWave({dir.filePath("step.wav").toStdString(), 1000, false}).status,
              RecordingStatus::Failed);
    EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Error: recording wave file: No audio "
                                                        "input device is available.(5)."});
    // Five seconds of sound, not waited for; nothing to play a missing file on anyway.
    QtAudioOutput output;
    EXPECT_FALSE(output.PlayWave(templ));
    EXPECT_FALSE(output.PlayWave("/nonexistent/x.wav"));
    QtBeeper().Beep(2000, 100);
    QCoreApplication::processEvents();
    EXPECT_LT(clock.elapsed(), 3000);
}
