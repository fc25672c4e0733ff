#pragma once

#include "PrivateSoundServer.h"

#include <QDir>
#include <QStandardPaths>

namespace tonaro::test {

// PipeWire as desktops run it: the server, its session manager and its
// PulseAudio server, on a session bus of their own (the session manager
// will not run without one), with a null sink made by PipeWire's
// support.null-audio-sink factory.
class PrivatePipeWireServer : public PrivateSoundServer
{
public:
    ~PrivatePipeWireServer() override { stop(); }

    QString name() const override { return QStringLiteral("PipeWire"); }

    bool start() override
    {
        for (const char *program : {"dbus-daemon", "pipewire", "wireplumber", "pipewire-pulse"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty()) {
                m_error = QString::fromLatin1(program) + QStringLiteral(" is not installed");
                return false;
            }
        }
        if (!writeSinkConfiguration())
            return false;
        QProcessEnvironment environment = privateEnvironment();
        const QString bus = QStringLiteral("unix:path=") + m_dir.filePath(QStringLiteral("bus"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus);
        // Each program comes up before the next needs it: the bus, the
        // server with the sink, then the two clients of the server.
        const bool started
            = startProcess(m_bus, QStringLiteral("dbus-daemon"),
                           {"--session", "--nofork", "--nopidfile", "--address=" + bus}, environment)
            && QTest::qWaitFor([this] { return QFile::exists(m_dir.filePath(QStringLiteral("bus"))); }, 5000)
            && startProcess(m_pipewire, QStringLiteral("pipewire"), {}, environment)
            && QTest::qWaitFor([this] { return QFile::exists(m_dir.filePath(QStringLiteral("pipewire-0"))); }, 5000)
            && startProcess(m_sessionManager, QStringLiteral("wireplumber"), {}, environment)
            && startProcess(m_pulse, QStringLiteral("pipewire-pulse"), {}, environment)
            && waitForSocket({&m_bus, &m_pipewire, &m_sessionManager, &m_pulse});
        if (started)
            return true;
        if (m_error.isEmpty())
            m_error = QStringLiteral("the session bus or pipewire did not come up");
        stop();
        return false;
    }

    void stop() override
    {
        for (QProcess *process : {&m_pulse, &m_sessionManager, &m_pipewire, &m_bus})
            stopProcess(*process);
        QFile::remove(socketPath());
        QFile::remove(m_dir.filePath(QStringLiteral("bus")));
    }

    std::vector<qint64> processIds() const override
    {
        return {m_pipewire.processId(), m_pulse.processId(), m_sessionManager.processId()};
    }
    // PULSE_RUNTIME_PATH puts it beside the logs.
    QString socketPath() const override { return m_dir.filePath(QStringLiteral("native")); }

private:
    bool writeSinkConfiguration()
    {
        QDir(m_dir.path()).mkpath(QStringLiteral("pipewire/pipewire.conf.d"));
        QFile file(m_dir.filePath(QStringLiteral("pipewire/pipewire.conf.d/tonaro-null-sink.conf")));
        if (!file.open(QIODevice::WriteOnly)) {
            m_error = QStringLiteral("cannot write the PipeWire configuration");
            return false;
        }
        file.write(QStringLiteral("context.objects = [\n"
                                  "  { factory = adapter\n"
                                  "    args = { factory.name = support.null-audio-sink node.name = %1\n"
                                  "             media.class = Audio/Sink audio.position = [ FL FR ]\n"
                                  "             audio.rate = %2 monitor.channel-volumes = true } }\n"
                                  "]\n")
                       .arg(SinkName)
                       .arg(SampleRate)
                       .toUtf8());
        return true;
    }

    QProcess m_bus;
    QProcess m_pipewire;
    QProcess m_sessionManager;
    QProcess m_pulse;
};

} // namespace tonaro::test
