#include "PulseServer.h"

#include "testsupport/QtWait.h"
#include "testsupport/TestWave.h"

namespace zav::test {
namespace {

// Runs `command` in a shell with the audio scripts' harness sourced and PULSE_DIR set to
// `dir`; its error output when it failed.
std::string harness(const QString& dir, const QString& command) {
    QProcess sh;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("PULSE_DIR", dir);
    sh.setProcessEnvironment(env);
    sh.setStandardOutputFile(QProcess::nullDevice());
    sh.start("sh", {"-c", ". \"$0\" && " + command,
                    QString::fromUtf8(ZAV_SOURCE_DIR "/tests/cli/pulse-server.sh")});
    if (!sh.waitForFinished(30000) || sh.exitStatus() != QProcess::NormalExit)
        return "the shell did not run";
    return sh.exitCode() == 0 ? "" : sh.readAllStandardError().toStdString() + " ";
}

} // namespace

PulseServer::PulseServer() {
    qputenv("XDG_RUNTIME_DIR", m_dir.path().toUtf8());
    qputenv("PULSE_SERVER", ("unix:" + m_dir.path() + "/pulse/native").toUtf8());
    if (const std::string failed = harness(m_dir.path(), "pulse_start"); !failed.empty())
        m_why = "PulseAudio could not be started: " + failed;
    else
        m_why = EnsureMicrophone() ? "" : "the remapped source zavmic is not there";
}

PulseServer::~PulseServer() {
    StopPlaying();
    harness(m_dir.path(), "pulse_stop");
}

std::string PulseServer::Pactl(const QStringList& args, bool* ok) const {
    QProcess p;
    p.start("pactl", args);
    const bool ran =
        p.waitForFinished(10000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    if (ok)
        *ok = ran;
    return ran ? p.readAllStandardOutput().toStdString() : std::string();
}

bool PulseServer::EnsureMicrophone() {
    bool ok = false;
    if (Pactl({"list", "short", "sources"}, &ok).find("zavmic") == std::string::npos && ok)
        Pactl({"load-module", "module-remap-source", "master=zavsink.monitor", "source_name=zavmic",
               "channels=1"},
              &ok);
    if (ok)
        Pactl({"set-default-source", "zavmic"}, &ok);
    return ok;
}

void PulseServer::RemoveMicrophone() {
    for (const QString& line :
         QString::fromStdString(Pactl({"list", "short", "modules"})).split('\n'))
        if (line.contains("source_name=zavmic"))
            Pactl({"unload-module", line.section('\t', 0, 0)});
}

bool PulseServer::Play(const std::vector<std::int16_t>& samples) {
    StopPlaying();
    const QString file = m_dir.filePath("played.wav");
    WriteWave(file.toStdString(), samples, 44100);
    m_player = std::make_unique<QProcess>();
    m_player->start("paplay", {"-d", "zavsink", file});
    return m_player->waitForStarted(5000) && WaitFor([this] {
               return !Pactl({"list", "short", "sink-inputs"}).empty();
           });
}

void PulseServer::StopPlaying() {
    if (m_player)
        m_player->kill(), m_player->waitForFinished(3000);
    m_player.reset();
}

} // namespace zav::test
