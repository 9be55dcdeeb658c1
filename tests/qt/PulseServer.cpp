#include "PulseServer.h"

#include "testsupport/QtWait.h"
#include "testsupport/TestWave.h"

#include <QProcess>

namespace zav::test {
namespace {

// Runs `command` in a shell that has the harness shared with the audio scripts sourced, with
// PULSE_DIR set to `dir`; its error output, or nothing when it succeeded.
std::optional<std::string> harness(const QString& dir, const QString& command) {
    QProcess sh;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("PULSE_DIR", dir);
    sh.setProcessEnvironment(env);
    sh.setStandardOutputFile(QProcess::nullDevice());
    sh.start("sh", {"-c", ". \"$0\" && " + command,
                    QString::fromUtf8(ZAV_SOURCE_DIR "/tests/cli/pulse-server.sh")});
    if (!sh.waitForStarted(5000) || !sh.waitForFinished(30000))
        return "the shell did not run";
    if (sh.exitStatus() != QProcess::NormalExit || sh.exitCode() != 0)
        return sh.readAllStandardError().toStdString();
    return std::nullopt;
}

} // namespace

PulseServer::PulseServer() {
    if (!m_dir.isValid()) {
        m_why = "cannot make a runtime folder for PulseAudio";
        return;
    }
    const QString runtime = m_dir.path();
    qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
    qputenv("PULSE_SERVER", ("unix:" + runtime + "/pulse/native").toUtf8());
    m_env = QProcessEnvironment::systemEnvironment();
    m_started = true; // whatever happens next, Stop ends what did start
    if (const auto failed = harness(runtime, "pulse_start")) {
        m_why = "PulseAudio could not be started: " + *failed;
        return;
    }
    m_ok = EnsureMicrophone();
    if (!m_ok)
        m_why = "the remapped source zavmic is not there";
}

PulseServer::~PulseServer() {
    Stop();
}

std::string PulseServer::Pactl(const QStringList& args, bool* ok) const {
    QProcess p;
    p.setProcessEnvironment(m_env);
    p.start("pactl", args);
    const bool ran = p.waitForStarted(5000) && p.waitForFinished(10000) &&
                     p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    if (ok)
        *ok = ran;
    return ran ? p.readAllStandardOutput().toStdString() : std::string();
}

bool PulseServer::EnsureMicrophone() {
    bool ok = false;
    const std::string sources = Pactl({"list", "short", "sources"}, &ok);
    if (!ok)
        return false;
    if (sources.find("zavmic") == std::string::npos) {
        Pactl({"load-module", "module-remap-source", "master=zavsink.monitor", "source_name=zavmic",
               "channels=1"},
              &ok);
        if (!ok)
            return false;
    }
    Pactl({"set-default-source", "zavmic"}, &ok);
    return ok;
}

bool PulseServer::RemoveMicrophone() {
    bool ok = false;
    const std::string modules = Pactl({"list", "short", "modules"}, &ok);
    for (const QString& line : QString::fromStdString(modules).split('\n'))
        if (line.contains("source_name=zavmic"))
            Pactl({"unload-module", line.section('\t', 0, 0)}, &ok);
    return ok;
}

bool PulseServer::Play(const std::vector<std::int16_t>& samples) {
    StopPlaying();
    const QString file = m_dir.filePath("played.wav");
    WriteWave(file.toStdString(), samples, 44100);
    m_player = std::make_unique<QProcess>();
    m_player->setProcessEnvironment(m_env);
    m_player->start("paplay", {"-d", "zavsink", file});
    return m_player->waitForStarted(5000) && WaitFor([this] {
               return !Pactl({"list", "short", "sink-inputs"}).empty();
           });
}

void PulseServer::StopPlaying() {
    if (m_player) {
        m_player->kill();
        m_player->waitForFinished(3000);
    }
    m_player.reset();
}

void PulseServer::Stop() {
    StopPlaying();
    if (m_started)
        harness(m_dir.path(), "pulse_stop");
    m_started = false;
}

} // namespace zav::test
