#pragma once

#include "testsupport/QtWait.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace zav::test {

// A socat pair of pseudo-terminals: whatever is written to in() can be read from out().
class PtyPair {
public:
    PtyPair() {
        m_socat.start("socat", {"pty,raw,echo=0,link=" + m_dir.filePath("in"),
                                "pty,raw,echo=0,link=" + m_dir.filePath("out")});
        WaitFor([&] { return QFileInfo::exists(m_dir.filePath("in")) && ready(); });
    }
    ~PtyPair() { (m_writer >= 0 && ::close(m_writer)), stop(); }
    bool ready() const {
        return m_socat.state() == QProcess::Running && QFileInfo::exists(m_dir.filePath("out"));
    }
    const std::string& out() const { return m_out; }
    void write(const std::string& bytes) {
        if (m_writer < 0)
            m_writer = ::open(m_dir.filePath("in").toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
        ASSERT_GE(m_writer, 0);
        ASSERT_EQ(::write(m_writer, bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    void stop() { m_socat.terminate(), m_socat.waitForFinished(5000); }

private:
    QTemporaryDir m_dir;
    QProcess m_socat;
    std::string m_out = m_dir.filePath("out").toStdString();
    int m_writer = -1;
};

} // namespace zav::test
