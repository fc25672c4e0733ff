#pragma once

// A JACK server of the test's own on the dummy driver, started as a plain
// background process under a name of its own, so that it meets no other
// server; every JACK client of this process talks to it. The end-to-end
// MIDI test and the MIDI input benchmark share it.

#include "midi/JackServer.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <sys/prctl.h>

#include <csignal>

namespace tonaro::test {

class PrivateJackServer
{
public:
    explicit PrivateJackServer(int periodFrames = 256)
        : m_period(periodFrames)
    {
    }
    ~PrivateJackServer() { stop(); }

    // Starts jackd and waits for its socket. On failure error() says why.
    bool start()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("jackd")).isEmpty()) {
            m_error = QStringLiteral("jackd is not installed (Debian package jackd2)");
            return false;
        }
        const QByteArray name = "tonaro-test-" + QByteArray::number(QCoreApplication::applicationPid());
        qputenv("JACK_DEFAULT_SERVER", name);
        // No JACK client may start a server of its own.
        qputenv("JACK_NO_START_SERVER", "1");
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_server.start(QStringLiteral("jackd"), {"-n", QString::fromLatin1(name), "-d", "dummy", "-r", "48000", "-p",
                                                 QString::number(m_period)});
        if (!m_server.waitForStarted(5000)) {
            m_error = QStringLiteral("jackd did not start: ") + m_server.errorString();
            return false;
        }
        const QString socket = QString::fromStdString(JackServer::socketPath());
        QElapsedTimer clock;
        clock.start();
        while (!QFileInfo::exists(socket) && m_server.state() == QProcess::Running && clock.elapsed() < 15000) {
            m_server.waitForReadyRead(50);
            QThread::msleep(20);
        }
        if (!QFileInfo::exists(socket) || m_server.state() != QProcess::Running) {
            m_error = QStringLiteral("jackd did not come up: ") + QString::fromLocal8Bit(m_server.readAll());
            stop();
            return false;
        }
        return true;
    }

    // Stopped by its process id, as any background process is.
    void stop()
    {
        if (m_server.state() == QProcess::NotRunning)
            return;
        m_server.terminate();
        if (!m_server.waitForFinished(5000)) {
            m_server.kill();
            m_server.waitForFinished(3000);
        }
    }

    qint64 processId() const { return m_server.processId(); }
    QString error() const { return m_error; }

private:
    int m_period;
    QProcess m_server;
    QString m_error;
};

} // namespace tonaro::test
