// The audio adapters with no sound system: recording fails in words, the rest is silent at once.
#include "measure/WaveRecorder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

using namespace zav;

// Before anything talks to a sound system: none is found, and none may be started on demand.
const bool kNoSoundSystem = setenv("PULSE_SERVER", "unix:/nonexistent/zav-none", 1) == 0 &&
                            setenv("PULSE_CLIENTCONFIG", "/nonexistent/zav.conf", 1) == 0;

TEST(NoSoundSystem, RecordingFailsAtOnceInWordsAndPlayingAndBeepingAreSilent) {
    ASSERT_TRUE(kNoSoundSystem && AudioInputNames().empty());
    const std::string templ = testing::TempDir() + "zav-silent.wav";
    test::WriteWave(templ, test::Sine(10000, 440, 44100, 44100 * 5), 44100);
    QtAudioCapture capture;
    test::FakeDialogs dialogs;
    const auto start = std::chrono::steady_clock::now();
    WaveRecorder({capture, dialogs, nullptr}, templ, [] {
        return "";
    }).RecordWave({templ + ".step", 1000, false});
    EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Error: recording wave file: No audio "
                                                        "input device is available.(5)."});
    EXPECT_FALSE(QtAudioOutput().PlayWave(templ)); // five seconds, not waited for
    QtBeeper().Beep(2000, 100);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}
