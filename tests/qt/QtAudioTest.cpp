// The sound-card adapters against a real sound system: a private PulseAudio server whose null
// sink plays what the test (or the adapter) plays, and whose remapped monitor is the input.
#include "PulseServer.h"

#include "measure/BinaryFile.h"
#include "measure/WaveDeviceMessages.h"
#include "measure/WaveHeader.h"
#include "measure/WaveRecorder.h"
#include "qt/services/AudioDevices.h"
#include "qt/services/QtAudioCapture.h"
#include "qt/services/QtAudioOutput.h"
#include "qt/services/QtBeeper.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include "testsupport/QtWait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>

using namespace zav;

namespace {

test::PulseServer* server = nullptr;

// Stops the server once, when the whole program is done with it.
class ServerEnvironment : public ::testing::Environment {
public:
    void TearDown() override {
        delete server;
        server = nullptr;
    }
};
[[maybe_unused]] const auto* kEnvironment =
    ::testing::AddGlobalTestEnvironment(new ServerEnvironment);

std::vector<std::int16_t> waveSamples(const std::string& path, WaveInfo* info = nullptr) {
    test::FakeDialogs dialogs;
    BinaryFile f(path);
    const WaveInfo w = ReadWaveHeader(f, dialogs);
    if (info)
        *info = w;
    std::vector<std::int16_t> s(static_cast<std::size_t>(std::max(0, w.Samples)));
    f.Read(s.data(), s.size() * 2);
    return s;
}

double rmsDbfs(const std::vector<std::int16_t>& s, std::size_t from, std::size_t to) {
    double sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += (s[i] / 32768.0) * (s[i] / 32768.0);
    return 10 * std::log10(sum / static_cast<double>(to - from));
}

int signChanges(const std::vector<std::int16_t>& s, std::size_t from, std::size_t to) {
    int n = 0;
    for (std::size_t i = from + 1; i < to; ++i)
        n += (s[i - 1] < 0) != (s[i] < 0);
    return n;
}

// The stretch from the first to the last sample above `threshold`.
std::pair<std::size_t, std::size_t> loudPart(const std::vector<std::int16_t>& s, int threshold) {
    auto loud = [threshold](std::int16_t v) { return std::abs(int{v}) > threshold; };
    const auto first = std::find_if(s.begin(), s.end(), loud);
    if (first == s.end())
        return {0, 0};
    const auto last = std::find_if(s.rbegin(), s.rend(), loud);
    return {static_cast<std::size_t>(first - s.begin()), static_cast<std::size_t>(s.rend() - last)};
}

std::string fileBytes(const std::string& path) {
    QFile f(QString::fromStdString(path));
    f.open(QIODevice::ReadOnly);
    return f.readAll().toStdString();
}

struct Progress : CaptureProgress {
    std::int64_t last = 0;
    double level = 0;
    std::function<bool()> cancel = [] { return false; };
    std::function<void()> firstSamples = [] {};
    void Begin(std::int64_t) override {}
    void Update(std::int64_t n, double dbfs) override {
        if (last == 0 && n > 0)
            firstSamples();
        last = n;
        level = dbfs;
    }
    bool CancelRequested() override { return cancel(); }
    void End() override {}
};

class SoundCard : public ::testing::Test {
public:
    static void SetUpTestSuite() {
        if (!server)
            server = new test::PulseServer;
    }

    void SetUp() override {
        ASSERT_TRUE(server->ok()) << "PulseAudio could not be started for the audio tests: "
                                  << server->why();
        ASSERT_TRUE(server->EnsureMicrophone());
        ASSERT_TRUE(zav::test::WaitFor([] { return FindAudioInput("zavmic").has_value(); }))
            << "Qt does not list the remapped source zavmic";
        ASSERT_TRUE(m_dir.isValid());
    }

    void TearDown() override {
        for (QProcess* p : m_tools) {
            p->kill();
            p->waitForFinished(3000);
            delete p;
        }
    }

    std::string path(const char* name) const { return m_dir.filePath(name).toStdString(); }

    // Plays a long sine into the null sink, and waits until the server plays it.
    void playSine(double amplitude, double frequencyHz) {
        const std::string file = path("played.wav");
        test::WriteWave(file, test::Sine(amplitude, frequencyHz, 44100, 44100 * 30), 44100);
        start("paplay", {"-d", "zavsink", QString::fromStdString(file)});
        ASSERT_TRUE(zav::test::WaitFor([] {
            return !server->Pactl({"list", "short", "sink-inputs"}).empty();
        })) << "paplay did not start playing";
    }

    // Records the null sink's monitor with parec, raw 16-bit mono at 44100 Hz, into `file`.
    QProcess* recordMonitor(const std::string& file) {
        QProcess* p = start("parec", {"-d", "zavsink.monitor", "--raw", "--format=s16le",
                                      "--channels=1", "--rate=44100", "--latency-msec=20"});
        p->setStandardOutputFile(QString::fromStdString(file));
        p->start();
        EXPECT_TRUE(p->waitForStarted(5000)) << "parec did not start";
        // The remapped source reads the monitor too; parec is the client that does.
        EXPECT_TRUE(zav::test::WaitFor([] {
            return server->Pactl({"list", "short", "source-outputs"}).find("protocol-native") !=
                   std::string::npos;
        })) << "parec did not start recording";
        return p;
    }

    static std::vector<std::int16_t> rawSamples(const std::string& file) {
        const std::string bytes = fileBytes(file);
        std::vector<std::int16_t> s(bytes.size() / 2);
        for (std::size_t i = 0; i < s.size(); ++i)
            s[i] = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                             (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
        return s;
    }

    QProcess* start(const QString& program, const QStringList& args) {
        auto* p = new QProcess;
        m_tools.push_back(p);
        p->setProgram(program);
        p->setArguments(args);
        if (program == "parec")
            return p; // started once its output file is set
        p->start();
        EXPECT_TRUE(p->waitForStarted(5000)) << program.toStdString() << " did not start";
        return p;
    }

    QTemporaryDir m_dir;
    std::vector<QProcess*> m_tools;
};

struct Recorder {
    QtAudioCapture capture;
    test::FakeDialogs dialogs;
    Progress progress;
    std::string device;
    WaveRecorder recorder;
    Recorder(const std::string& templatePath, std::string dev,
             QtAudioCapture::Timeouts timeouts = {})
        : capture(timeouts), device(std::move(dev)),
          recorder({capture, dialogs, &progress}, templatePath, [this] { return device; }) {}
};

} // namespace

// Plays a sine, records it through `device` with a template at `rate`, and finds in the
// step's file the count asked for, at the template's rate, with the sine's level and
// frequency (a sine of f Hz changes sign 2f times a second).
void expectRecordsTheTone(SoundCard& t, int rate, const std::string& device, int interval,
                          bool samples, double amplitude, double frequencyHz,
                          std::size_t expected) {
    t.playSine(amplitude * 32768, frequencyHz);
    test::WriteWave(t.path("ZAV.wav"), {}, rate);
    Recorder r(t.path("ZAV.wav"), device);
    const Recording rec = r.recorder.RecordWave({t.path("step.wav"), interval, samples});
    ASSERT_EQ(rec.status, RecordingStatus::Recorded) << ::testing::PrintToString(r.dialogs.texts());
    EXPECT_EQ(rec.samples, static_cast<std::int64_t>(expected));
    EXPECT_EQ(rec.sampleRate, rate);
    EXPECT_EQ(fileBytes(t.path("step.wav")).size(), 44 + 2 * expected);
    WaveInfo info;
    const auto kept = waveSamples(t.path("step.wav"), &info);
    EXPECT_EQ(info.SampleRate, rate);
    ASSERT_EQ(kept.size(), expected);
    const double levelDbfs = 20 * std::log10(amplitude / std::sqrt(2.0));
    EXPECT_NEAR(rmsDbfs(kept, 0, kept.size()), levelDbfs, 0.5);
    EXPECT_NEAR(r.progress.level, levelDbfs, 0.5);
    EXPECT_NEAR(signChanges(kept, 0, kept.size()),
                2 * frequencyHz * static_cast<double>(expected) / rate, 20);
    EXPECT_TRUE(r.dialogs.messages.empty());
}

TEST_F(SoundCard, MillisecondsModeKeepsOneSecondOfWhatWasPlayed) {
    expectRecordsTheTone(*this, 44100, "zavmic", 1000, false, 0.3, 1000, 44100);
}

TEST_F(SoundCard, SamplesModeRecordsAtTheTemplatesOwnRateFromTheDefaultInput) {
    expectRecordsTheTone(*this, 48000, "", 64, true, 0.5, 440, 65536);
}

TEST_F(SoundCard, ListsTheInputsAndFindsThemByNameOrId) {
    const auto names = AudioInputNames();
    const auto byId = FindAudioInput("zavmic");
    ASSERT_TRUE(byId);
    const std::string name = byId->description().toStdString();
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end());
    const auto byName = FindAudioInput(name);
    ASSERT_TRUE(byName);
    EXPECT_EQ(byName->id(), "zavmic");
    EXPECT_TRUE(FindAudioInput("")); // the default
    EXPECT_FALSE(FindAudioInput("No Such Input"));
}

TEST_F(SoundCard, AMissingOrVanishingInputEndsInTheErrorPathNotAHang) {
    test::WriteWave(path("ZAV.wav"), {}, 44100);
    std::ofstream(path("step.wav")) << "previous";
    Recorder unknown(path("ZAV.wav"), "No Such Input");
    EXPECT_EQ(unknown.recorder.RecordWave({path("step.wav"), 1000, false}).status,
              RecordingStatus::Failed);
    EXPECT_EQ(unknown.dialogs.texts(),
              std::vector<std::string>{"Error: recording wave file: The audio input \"No Such "
                                       "Input\" is not available.(5)."});

    // Pulled out a second into a ten-second recording.
    Recorder r(path("ZAV.wav"), "zavmic");
    QTimer::singleShot(1000, [] { server->RemoveMicrophone(); });
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(r.recorder.RecordWave({path("step.wav"), 10000, false}).status,
              RecordingStatus::Failed);
    EXPECT_LT(clock.elapsed(), 6000);
    EXPECT_EQ(
        r.dialogs.texts(),
        std::vector<std::string>{"Error: recording wave file: The audio input was removed.(7)."});
    EXPECT_EQ(fileBytes(path("step.wav")), "previous");
}

TEST_F(SoundCard, AnInputThatStopsDeliveringTimesOut) {
    test::WriteWave(path("ZAV.wav"), {}, 44100);
    playSine(0.2 * 32768, 1000);
    // Suspended once the samples flow: the input stays listed but delivers nothing more.
    Recorder r(path("ZAV.wav"), "zavmic", {10000, 1000});
    r.progress.firstSamples = [] { server->Pactl({"suspend-source", "zavmic", "1"}); };
    QElapsedTimer clock;
    clock.start();
    const Recording rec = r.recorder.RecordWave({path("step.wav"), 20000, false});
    server->Pactl({"suspend-source", "zavmic", "0"});
    EXPECT_EQ(rec.status, RecordingStatus::Failed);
    EXPECT_LT(clock.elapsed(), 8000);
    EXPECT_EQ(r.dialogs.texts(),
              std::vector<std::string>{
                  "Error: recording wave file: The audio input stopped delivering samples.(6)."});
}

TEST_F(SoundCard, CancelStopsTheRecordingPromptly) {
    playSine(0.2 * 32768, 1000);
    test::WriteWave(path("ZAV.wav"), {}, 44100);
    Recorder r(path("ZAV.wav"), "zavmic");
    QElapsedTimer clock;
    clock.start();
    r.progress.cancel = [&clock] { return clock.elapsed() > 800; };
    EXPECT_EQ(r.recorder.RecordWave({path("step.wav"), 30000, false}).status,
              RecordingStatus::Cancelled);
    EXPECT_LT(clock.elapsed(), 2000);
    EXPECT_TRUE(r.dialogs.messages.empty());
}

TEST_F(SoundCard, PlayWavePlaysTheWholeRecording) {
    // A second of 440 Hz whose amplitude rises from 0.1 to 0.5 of full scale: the last peak
    // heard tells whether the end was played. (The null sink's monitor itself loses a few
    // milliseconds at the start of every stream.)
    std::vector<std::int16_t> tone(44100);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<std::int16_t>(
            (0.1 + 0.4 * static_cast<double>(i) / 44100) * 32767 *
            std::sin(2 * std::acos(-1.0) * 440 * static_cast<double>(i) / 44100));
    const std::string wav = path("tone.wav");
    test::WriteWave(wav, tone, 44100);
    QProcess* parec = recordMonitor(path("monitor.raw"));
    QElapsedTimer clock;
    clock.start();
    QtAudioOutput output;
    const std::optional<DeviceError> error = output.PlayWave(wav);
    const qint64 tookMs = clock.elapsed();
    EXPECT_FALSE(error) << (error ? PlayingErrorMessage(*error) : "");
    EXPECT_GE(tookMs, 1000); // it waits for the end
    zav::test::WaitFor([] { return false; }, 300);
    parec->terminate();
    parec->waitForFinished(3000);

    const auto heard = rawSamples(path("monitor.raw"));
    const auto [from, to] = loudPart(heard, static_cast<int>(0.05 * 32768));
    ASSERT_GT(to, from + 4410) << "nothing was heard";
    EXPECT_NEAR(static_cast<double>(to - from), 44100, 2205);
    int lastPeak = 0;
    for (std::size_t i = to - 200; i < to; ++i)
        lastPeak = std::max(lastPeak, std::abs(int{heard[i]}));
    EXPECT_NEAR(lastPeak / 32767.0, 0.5, 0.01);
    EXPECT_NEAR(signChanges(heard, from, to) * 44100.0 / 2 / static_cast<double>(to - from), 440,
                5);
}

TEST_F(SoundCard, PlayWaveReportsAnUnusableFile) {
    QtAudioOutput output;
    const auto missing = output.PlayWave(path("absent.wav"));
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->number, kDeviceBadFile);
    std::ofstream(path("text.wav")) << "not a wave file";
    const auto bad = output.PlayWave(path("text.wav"));
    ASSERT_TRUE(bad);
    EXPECT_EQ(PlayingErrorMessage(*bad),
              "Error: playing wave file: Unsupported WAVE file format.(8).");
}

TEST_F(SoundCard, TheBeepIsATenthOfASecondAtTwoKilohertz) {
    QProcess* parec = recordMonitor(path("monitor.raw"));
    QtBeeper beeper;
    QElapsedTimer clock;
    clock.start();
    beeper.Beep(2000, 100);
    EXPECT_LT(clock.elapsed(), 500); // the caller goes on at once
    // The stream may take a second or two to start; then let the tone end.
    const std::string monitor = path("monitor.raw");
    zav::test::WaitFor([&] { return loudPart(rawSamples(monitor), 3277).second > 0; }, 5000);
    zav::test::WaitFor([] { return false; }, 500);
    parec->terminate();
    parec->waitForFinished(3000);

    const auto heard = rawSamples(monitor);
    const auto [from, to] = loudPart(heard, static_cast<int>(0.1 * 32768));
    ASSERT_GT(to, from) << "nothing was heard in " << heard.size() << " samples, loudest "
                        << (heard.empty() ? 0 : *std::max_element(heard.begin(), heard.end()));
    // The null sink's monitor loses the first few tens of milliseconds of every stream, so
    // the beep is heard shortened, but never longer than it is.
    EXPECT_GE(to - from, 4410u / 2);
    EXPECT_LE(to - from, 4410u + 441);
    EXPECT_NEAR(signChanges(heard, from, to) * 44100.0 / 2 / static_cast<double>(to - from), 2000,
                60);
}
