#pragma once

// A JACK server of the test's own on the dummy driver, started as a plain
// background process under a name of its own, so that it meets no other
// server; every JACK client of this process talks to it. The end-to-end
// MIDI test and the MIDI input benchmark share it.

#include "midi/JackServer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

#include <sys/prctl.h>

#include <csignal>

namespace tonaro::test {

class PrivateJackServer
{
public:
    explicit PrivateJackServer(int periodFrames = 256) : m_period(periodFrames) {}
    ~PrivateJackServer() { stop(); }

    // Starts jackd and waits for its socket. On failure error() says why.
    bool start()
    {
        const QByteArray name = "tonaro-test-" + QByteArray::number(QCoreApplication::applicationPid());
        qputenv("JACK_DEFAULT_SERVER", name);
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        // The server dies with the test, however the test ends.
        m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_server.start("jackd", {"-n", name, "-d", "dummy", "-r", "48000", "-p", QString::number(m_period)});
        // Up once its socket is there; given 15 s on a busy machine.
        const QString socket = QString::fromStdString(JackServer::socketPath());
        for (int tries = 0; tries < 300 && m_server.waitForStarted(5000) && !QFileInfo::exists(socket); ++tries)
            m_server.waitForFinished(50);
        if (QFileInfo::exists(socket) && m_server.state() == QProcess::Running)
            return true;
        // Not installed (Debian package jackd2), refused, or still not there.
        m_error = "jackd: " + m_server.errorString() + ": " + QString::fromLocal8Bit(m_server.readAll());
        stop();
        return false;
    }

    // Stopped by its process id, as any background process is.
    void stop()
    {
        m_server.terminate();
        if (!m_server.waitForFinished(5000))
            m_server.kill();
        m_server.waitForFinished(3000);
    }
    QString error() const { return m_error; }

private:
    int m_period;
    QProcess m_server;
    QString m_error;
};

} // namespace tonaro::test
