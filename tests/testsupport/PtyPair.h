#pragma once

#include "testsupport/QtWait.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace zav::test {

// A socat pair of pseudo-terminals: whatever is written to in() can be read from out().
class PtyPair {
public:
    PtyPair() {
        m_in = m_dir.filePath("gps-in").toStdString();
        m_out = m_dir.filePath("gps-out").toStdString();
        m_socat.start("socat", {"pty,raw,echo=0,link=" + QString::fromStdString(m_in),
                                "pty,raw,echo=0,link=" + QString::fromStdString(m_out)});
        m_socat.waitForStarted(5000);
        zav::test::WaitFor([&] {
            return QFileInfo::exists(QString::fromStdString(m_in)) &&
                   QFileInfo::exists(QString::fromStdString(m_out));
        });
    }
    ~PtyPair() {
        if (m_writer >= 0)
            ::close(m_writer);
        stop();
    }
    bool ready() const {
        return m_socat.state() == QProcess::Running &&
               QFileInfo::exists(QString::fromStdString(m_out));
    }
    const std::string& out() const { return m_out; }

    void write(const std::string& bytes) {
        if (m_writer < 0)
            m_writer = ::open(m_in.c_str(), O_RDWR | O_NOCTTY);
        ASSERT_GE(m_writer, 0) << std::strerror(errno);
        ASSERT_EQ(::write(m_writer, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    // Ends socat by its process id, as unplugging the receiver would end the line.
    void stop() {
        if (m_socat.state() == QProcess::NotRunning)
            return;
        ::kill(static_cast<pid_t>(m_socat.processId()), SIGTERM);
        m_socat.waitForFinished(5000);
    }

private:
    QTemporaryDir m_dir;
    QProcess m_socat;
    std::string m_in;
    std::string m_out;
    int m_writer = -1;
};

} // namespace zav::test
