#include "PulseServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace zav::test {
namespace {

// A daemon that has exited but is not yet reaped (no init to do it in some containers)
// counts as gone.
bool alive(qint64 pid) {
    if (pid <= 0 || (::kill(static_cast<pid_t>(pid), 0) != 0 && errno != EPERM))
        return false;
    QFile stat(QString("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return true;
    const QByteArray text = stat.readAll();
    const qsizetype close = text.lastIndexOf(')');
    return close < 0 || text.mid(close + 2, 1) != "Z";
}

} // namespace

PulseServer::PulseServer() {
    if (!m_dir.isValid()) {
        m_why = "cannot make a runtime folder for PulseAudio";
        return;
    }
    const QString runtime = m_dir.path();
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString socket = runtime + "/pulse/native";
    qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
    qputenv("PULSE_SERVER", ("unix:" + socket).toUtf8());
    m_env = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment daemonEnv = m_env;
    daemonEnv.insert("HOME", runtime); // its cookie and state stay in the temporary folder

    QProcess daemon;
    daemon.setProcessEnvironment(daemonEnv);
    // It leaves by itself 20 s after its last client, should this program die before Stop.
    daemon.start("pulseaudio", {"-D", "-n", "--exit-idle-time=20", "--use-pid-file=yes",
                                "--load=module-native-protocol-unix auth-anonymous=1",
                                "--load=module-null-sink sink_name=zavsink"});
    if (!daemon.waitForStarted(5000)) {
        m_why = "pulseaudio could not be started (is the Debian package pulseaudio installed?)";
        return;
    }
    daemon.waitForFinished(15000);
    const QByteArray daemonErr = daemon.readAllStandardError();
    QElapsedTimer clock;
    clock.start();
    bool reachable = false;
    while (!(reachable = [this] {
        bool ok = false;
        Pactl({"info"}, &ok);
        return ok;
    }())) {
        if (clock.elapsed() > 10000)
            break;
        QThread::msleep(100);
    }
    QFile pidFile(runtime + "/pulse/pid");
    if (pidFile.open(QIODevice::ReadOnly))
        m_pid = pidFile.readAll().trimmed().toLongLong();
    if (!reachable) {
        m_why = "pulseaudio started but its socket " + socket.toStdString() +
                " does not answer; it said: " + daemonErr.toStdString();
        return;
    }
    m_ok = EnsureMicrophone();
    if (!m_ok)
        m_why = "the remapped source zavmic could not be loaded into PulseAudio";
    bool ok = false;
    Pactl({"set-default-sink", "zavsink"}, &ok);
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

void PulseServer::Stop() {
    if (m_pid <= 0)
        return;
    bool ok = false;
    Pactl({"exit"}, &ok);
    QElapsedTimer clock;
    clock.start();
    while (alive(m_pid) && clock.elapsed() < 5000)
        QThread::msleep(50);
    if (alive(m_pid))
        ::kill(static_cast<pid_t>(m_pid), SIGTERM);
    m_pid = 0;
}

} // namespace zav::test
