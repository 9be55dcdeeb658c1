#pragma once

#include "testsupport/QtWait.h"
#include "testsupport/TestWave.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace zav::test {

// A private PulseAudio server (the audio scripts' harness, stopped by process id) with a null sink
// "zavsink" and a source "zavmic" recording what it plays, in this program's environment.
class PulseServer {
public:
    PulseServer() {
        qputenv("XDG_RUNTIME_DIR", m_dir.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:" + m_dir.path().toUtf8() + "/pulse/native");
        m_why = !sh("pulse_start") ? "PulseAudio could not be started" : "";
    }
    ~PulseServer() { StopPlaying(), sh("pulse_stop"); }
    bool ok() const { return m_why.empty(); }
    const std::string& why() const { return m_why; }
    std::string Pactl(const QStringList& args) const { // its standard output
        QProcess p;
        p.start("pactl", args);
        p.waitForFinished(10000);
        return p.readAllStandardOutput().toStdString();
    }
    void RemoveMicrophone() { sh("pactl unload-module module-remap-source"); } // pulled out
    // Plays `samples` (mono, 44.1 kHz) into the sink until StopPlaying, once the server plays.
    bool Play(const std::vector<std::int16_t>& samples) {
        StopPlaying();
        WriteWave(m_dir.filePath("played.wav").toStdString(), samples, 44100);
        m_player = std::make_unique<QProcess>();
        m_player->start("paplay", {"-d", "zavsink", m_dir.filePath("played.wav")});
        return m_player->waitForStarted(5000) && sh("pulse_wait_playing");
    }
    void StopPlaying() {
        if (m_player)
            m_player->kill(), m_player->waitForFinished(3000), m_player.reset();
    }

private:
    bool sh(const QString& command) const { // with the harness; its errors go to the test output
        QProcess sh;
        sh.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        sh.setStandardOutputFile(QProcess::nullDevice());
        sh.start("sh",
                 {"-c", "PULSE_DIR='" + m_dir.path() +
                            "'; . " ZAV_SOURCE_DIR "/tests/cli/pulse-server.sh && " + command});
        return sh.waitForFinished(30000) && sh.exitStatus() == QProcess::NormalExit &&
               sh.exitCode() == 0;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<QProcess> m_player;
    std::string m_why = "not started";
};

} // namespace zav::test
