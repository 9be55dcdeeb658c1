// Makes docs/screenshots/input-level.png: the input level meter reading a sine played into a
// private PulseAudio server's null sink, as the receiver's noise would arrive.
// Usage: zav_input_level_screenshot OUT.png
#include "../PulseServer.h"

#include "qt/services/QtAudioCapture.h"
#include "qt/widgets/InputLevelDialog.h"
#include "testsupport/TestWave.h"

#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include <iostream>

using namespace zav;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2) {
        std::cerr << "usage: zav_input_level_screenshot OUT.png\n";
        return 2;
    }
    test::PulseServer server;
    if (!server.ok()) {
        std::cerr << server.why() << "\n";
        return 1;
    }
    // Noise-like level: a sine 20 dB below full scale.
    server.Play(test::Sine(0.1 * 32767, 700, 44100, 44100 * 20));

    QtAudioCapture capture;
    InputLevelDialog dialog(capture, "zavmic");
    int status = 1;
    QTimer::singleShot(2500, &dialog, [&] {
        status = dialog.grab().save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
        dialog.reject();
    });
    dialog.exec();
    return status;
}
