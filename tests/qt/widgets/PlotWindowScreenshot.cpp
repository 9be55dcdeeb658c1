// Makes docs/screenshots/plot-window.png (the waveform tab) and plot-window-spectrum.png: the
// plot window on a synthetic external-noise recording of 256 k samples at 44.1 kHz, the
// receiver's 300-2700 Hz pass band of noise with mains hum, a birdie and a few clicks.
#include "qt/widgets/PlotWindow.h"
#include "qt/widgets/ZoomableChartView.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QChart>
#include <QPixmap>
#include <QTabWidget>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>

using namespace zav;

namespace {

// A second-order section from the audio-EQ cookbook, high- or low-pass, Q = 0.707.
struct Biquad {
    double b0, b1, b2, a1, a2, x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    Biquad(double cornerHz, double rateHz, bool highPass) {
        const double w = 2 * std::acos(-1.0) * cornerHz / rateHz, alpha = std::sin(w) / 1.414;
        const double c = std::cos(w), a0 = 1 + alpha;
        const double k = highPass ? (1 + c) / 2 : (1 - c) / 2;
        b0 = k / a0;
        b1 = (highPass ? -2 * k : 2 * k) / a0;
        b2 = k / a0;
        a1 = -2 * c / a0;
        a2 = (1 - alpha) / a0;
    }
    double operator()(double x) {
        const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1, x1 = x, y2 = y1, y1 = y;
        return y;
    }
};

std::vector<std::int16_t> externalNoise() {
    const int rate = 44100;
    const auto noise = test::Noise(9000, 262144, 2024);
    std::vector<Biquad> band;
    for (int i = 0; i < 4; ++i) {
        band.emplace_back(300, rate, true);
        band.emplace_back(2700, rate, false);
    }
    const double pi = std::acos(-1.0);
    std::vector<std::int16_t> out(noise.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = static_cast<double>(i) / rate;
        double v = noise[i];
        for (Biquad& section : band)
            v = section(v);
        v += 2500 * std::sin(2 * pi * 50 * t) + 900 * std::sin(2 * pi * 150 * t + 0.4);
        v += 700 * std::sin(2 * pi * 1234 * t);
        out[i] = static_cast<std::int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
    }
    for (std::size_t click : {40000u, 120500u, 121300u, 200000u})
        for (std::size_t k = 0; k < 60; ++k)
            out[click + k] = static_cast<std::int16_t>(26000 * std::exp(-0.12 * k) *
                                                       std::cos(2 * pi * 1500.0 * k / rate));
    return out;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 3) {
        std::cerr << "usage: zav_plot_window_screenshot WAVEFORM.png SPECTRUM.png\n";
        return 2;
    }
    const auto wav = std::filesystem::temp_directory_path() / "zav-plot-screenshot.wav";
    test::WriteWave(wav.string(), externalNoise(), 44100);
    test::FakeDialogs dialogs;
    auto plot = LoadWavePlot(wav.string(), "External Noise", "20240501120000", dialogs);
    std::filesystem::remove(wav);
    if (!plot)
        return 1;
    PlotWindow window(std::move(*plot), dialogs);
    window.resize(1000, 640);
    window.show();
    int status = 1;
    QTimer::singleShot(300, [&] {
        status = window.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
        window.tabs()->setCurrentIndex(1);
        // The receiver's pass band and the hum below it, as an operator would zoom in.
        window.spectrumView()->chart()->axes(Qt::Horizontal).first()->setRange(0, 4000);
        QTimer::singleShot(200, [&] {
            if (!window.grab().save(QString::fromLocal8Bit(argv[2])))
                status = 1;
            QApplication::quit();
        });
    });
    QApplication::exec();
    return status;
}
