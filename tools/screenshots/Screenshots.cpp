// Not a test: makes the pictures in docs/screenshots, each window drawn by the platform it
// runs on (Xvfb in scripts/screenshot-*.sh).
//   zav_screenshot main OUT.png [WIDTHxHEIGHT] [verdict]
//       the main window after the demo observation; with "verdict" the loud external recording
//       measured as the sound card, so that the step's judgement shows in words, with its tooltip
//   zav_screenshot plot WAVEFORM.png SPECTRUM.png
//       the plot window on 256 k samples of synthetic external noise: the receiver's
//       300-2700 Hz pass band with mains hum, a birdie and a few clicks
//   zav_screenshot monitor OUT.png
//       a Monitor run on three frequencies tuned by Hamlib's dummy rig, the level differing by
//       frequency and drifting from cycle to cycle as band noise does
//   zav_screenshot input-level OUT.png
//       the input level meter on a sine played into a private PulseAudio server
#include "qt/PulseServer.h"
#include "qt/widgets/ExampleDesk.h"

#include "qt/services/QtAudioCapture.h"
#include "qt/widgets/InputLevelDialog.h"
#include "qt/widgets/MainWindow.h"
#include "qt/widgets/MonitorWindow.h"
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/ResultTable.h"
#include "qt/widgets/ZoomableChartView.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QChart>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <QTimer>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <deque>
#include <filesystem>
#include <iostream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

const std::string kExamples = std::string(ZAV_SOURCE_DIR) + "/examples/";
const double kPi = std::acos(-1.0);

// Saves `window` to `out` after `ms`, runs the event loop until then; the exit status.
int grabAfter(QWidget& window, const char* out, int ms) {
    int status = 1;
    QTimer::singleShot(ms, [&] {
        status = window.grab().save(QString::fromLocal8Bit(out)) ? 0 : 1;
        QApplication::quit();
    });
    QApplication::exec();
    return status;
}

int mainWindow(const char* out, const QString& size, bool verdict) {
    test::ExampleDesk o(fs::temp_directory_path() / "zav-screenshot-main");
    std::deque<std::string> files = {kExamples + "soundcard.wav", kExamples + "receiver.wav",
                                     kExamples + "external.wav"};
    if (verdict)
        files = {kExamples + "external.wav"};
    o.model->chooseRecording = [&files]() -> std::optional<std::string> {
        auto next = files.front();
        files.pop_front();
        return next;
    };
    if (!verdict) {
        o.model->Step1();
        o.model->Step2();
        o.model->Step3();
    }
    MainWindow window(*o.model, o.dialogs, o.settings, o.desktop, nullptr);
    if (verdict)
        window.stepButton(1)->click(); // from its button, so that the status bar tells it
    window.resize(window.sizeHint());
    if (!size.isEmpty())
        window.resize(size.section('x', 0, 0).toInt(), size.section('x', 1, 1).toInt());
    window.move(0, 0);
    window.show();
    std::cout << "main window minimum size " << window.minimumSizeHint().width() << "x"
              << window.minimumSizeHint().height() << " logical pixels at scale "
              << window.devicePixelRatioF() << "\n";
    if (!verdict)
        return grabAfter(window, out, 900);
    QTableWidget* grid = window.measurementsGrid();
    QTimer::singleShot(300, [grid] {
        const QRect cell = grid->visualItemRect(grid->item(1, 0));
        QToolTip::showText(grid->viewport()->mapToGlobal(cell.center()),
                           grid->item(1, 0)->toolTip(), grid);
    });
    int status = 1;
    QTimer::singleShot(900, [&] { // the screen, so that the tooltip is in the picture
        const QRect frame = window.frameGeometry();
        status = window.screen()->grabWindow(0, 0, 0, frame.width(), frame.height()).save(out);
        status = status ? 0 : 1;
        QApplication::quit();
    });
    QApplication::exec();
    return status;
}

// Noise through four high- and low-pass sections (audio-EQ cookbook, Q = 0.707), with hum,
// a birdie and decaying clicks.
std::vector<std::int16_t> externalNoise() {
    struct Biquad {
        double b0, b1, b2, a1, a2, x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        Biquad(double cornerHz, bool highPass) {
            const double w = 2 * kPi * cornerHz / 44100, alpha = std::sin(w) / 1.414;
            const double c = std::cos(w), a0 = 1 + alpha, k = highPass ? (1 + c) / 2 : (1 - c) / 2;
            b0 = b2 = k / a0;
            b1 = (highPass ? -2 * k : 2 * k) / a0;
            a1 = -2 * c / a0;
            a2 = (1 - alpha) / a0;
        }
        double operator()(double x) {
            const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
            x2 = x1, x1 = x, y2 = y1, y1 = y;
            return y;
        }
    };
    const auto noise = test::Noise(9000, 262144, 2024);
    std::vector<Biquad> band;
    for (int i = 0; i < 4; ++i)
        band.emplace_back(300, true), band.emplace_back(2700, false);
    std::vector<std::int16_t> out(noise.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = static_cast<double>(i) / 44100;
        double v = noise[i];
        for (Biquad& section : band)
            v = section(v);
        v += 2500 * std::sin(2 * kPi * 50 * t) + 900 * std::sin(2 * kPi * 150 * t + 0.4) +
             700 * std::sin(2 * kPi * 1234 * t);
        out[i] = static_cast<std::int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
    }
    for (std::size_t click : {40000u, 120500u, 121300u, 200000u})
        for (std::size_t k = 0; k < 60; ++k)
            out[click + k] = static_cast<std::int16_t>(26000 * std::exp(-0.12 * k) *
                                                       std::cos(2 * kPi * 1500.0 * k / 44100));
    return out;
}

int plotWindow(const char* waveform, const char* spectrum) {
    const auto wav = fs::temp_directory_path() / "zav-plot-screenshot.wav";
    test::WriteWave(wav.string(), externalNoise(), 44100);
    test::FakeDialogs dialogs;
    auto plot = LoadWavePlot(wav.string(), "External Noise", "20240501120000", dialogs);
    fs::remove(wav);
    if (!plot)
        return 1;
    PlotWindow window(std::move(*plot), dialogs);
    window.resize(1000, 640);
    window.show();
    int status = 1;
    QTimer::singleShot(300, [&] {
        status = window.grab().save(QString::fromLocal8Bit(waveform)) ? 0 : 1;
        window.tabs()->setCurrentIndex(1);
        // The receiver's pass band and the hum below it, as an operator would zoom in.
        window.spectrumView()->chart()->axes(Qt::Horizontal).first()->setRange(0, 4000);
    });
    return std::max(status, grabAfter(window, spectrum, 500));
}

int monitorWindow(const char* out) {
    test::ExampleDesk o(fs::temp_directory_path() / "zav-monitor-screenshot");
    o.model->state.transfer.URL.clear(); // nothing to post
    constexpr int kCycles = 12;
    const double levels[] = {600, 420, 300}; // RMS counts: lower bands are noisier
    auto wave = [&](const std::string& name, double rms, unsigned seed) {
        const std::string path = (o.dir / name).string();
        test::WriteWave(path, test::Noise(rms, 4 * 8000, seed), 8000);
        o.dialogs.files.push_back(path);
    };
    wave("soundcard.wav", 3, 1);
    for (int f = 0; f < 3; ++f)
        wave("receiver" + std::to_string(f) + ".wav", 100, 10 + f);
    for (int c = 0; c < kCycles; ++c)
        for (int f = 0; f < 3; ++f)
            wave("external-" + std::to_string(c) + "-" + std::to_string(f) + ".wav",
                 levels[f] * (1 + 0.35 * std::sin(c / 2.0 + f)), 100 + 3 * c + f);
    MonitorWindow window(*o.model, o.dialogs);
    window.frequencies()->setText("3.5, 5.3, 7.0");
    window.every()->setText("1s");
    window.cycles()->setText(QString::number(kCycles));
    window.rigModel()->setText("1");
    window.resize(1000, 820);
    window.show();
    window.start();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window.viewModel().running)
            poll.stop(), QApplication::quit();
    });
    poll.start(100);
    QApplication::exec();
    return grabAfter(window, out, 300);
}

int inputLevel(const char* out) {
    test::PulseServer server;
    if (!server.ok()) {
        std::cerr << server.why() << "\n";
        return 1;
    }
    server.Play(test::Sine(0.1 * 32767, 700, 44100, 44100 * 20)); // 20 dB below full scale
    QtAudioCapture capture;
    InputLevelDialog dialog(capture, "zavmic");
    int status = 1;
    QTimer::singleShot(2500, &dialog, [&] {
        status = dialog.grab().save(QString::fromLocal8Bit(out)) ? 0 : 1;
        dialog.reject();
    });
    dialog.exec();
    return status;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const std::string what = argc > 2 ? argv[1] : "";
    if (what == "main")
        return mainWindow(argv[2], argc > 3 ? QString::fromLocal8Bit(argv[3]) : QString(),
                          argc > 4 && std::string(argv[4]) == "verdict");
    if (what == "plot" && argc > 3)
        return plotWindow(argv[2], argv[3]);
    if (what == "monitor")
        return monitorWindow(argv[2]);
    if (what == "input-level")
        return inputLevel(argv[2]);
    std::cerr << "usage: zav_screenshot main OUT.png [WIDTHxHEIGHT] [verdict]\n"
                 "       zav_screenshot plot WAVEFORM.png SPECTRUM.png\n"
                 "       zav_screenshot monitor|input-level OUT.png\n";
    return 2;
}
