#pragma once

#include "PrivateSoundServer.h"

#include <QStandardPaths>

namespace tonaro::test {

// PulseAudio with nothing but the null sink and its socket.
class PrivatePulseServer : public PrivateSoundServer
{
public:
    ~PrivatePulseServer() override { stop(); }

    QString name() const override { return QStringLiteral("PulseAudio"); }

    bool start() override
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty() || !m_dir.isValid()) {
            m_error = QStringLiteral("pulseaudio is not installed, or there is no temporary folder");
            return false;
        }
        // No default.pa (-n): only the null sink and the socket. A server
        // run as root warns that it is not meant to be; that is fine here.
        const QStringList arguments{
            "--daemonize=no", "--system=false", "--exit-idle-time=-1", "--use-pid-file=false", "-n", "--log-target=stderr",
            "-L", QStringLiteral("module-null-sink sink_name=%1 rate=%2").arg(SinkName).arg(SampleRate),
            "-L", "module-native-protocol-unix auth-anonymous=1 socket=" + socketPath()};
        if (startProcess(m_server, QStringLiteral("pulseaudio"), arguments, privateEnvironment())
            && waitForSocket({&m_server}))
            return true;
        stop();
        return false;
    }

    void stop() override
    {
        stopProcess(m_server);
        QFile::remove(socketPath());
    }

    std::vector<qint64> processIds() const override { return {m_server.processId()}; }
    QString socketPath() const override { return m_dir.filePath(QStringLiteral("native")); }

private:
    QProcess m_server;
};

} // namespace tonaro::test
