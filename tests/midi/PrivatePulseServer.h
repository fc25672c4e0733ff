#pragma once

// A PulseAudio server of the test's own, with one null sink, started as a
// plain child process in a private runtime folder, and a recorder of that
// sink's monitor. The end-to-end test and the audio benchmark share them.

#include <QByteArray>
#include <QFileInfo>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor, without linking Qt Test

#include <sys/prctl.h>

#include <csignal>
#include <cstdint>
#include <vector>

namespace tonaro::test {

// The child dies with the test process, even when that crashes, so that no
// server outlives the run that started it.
inline void dieWithParent(QProcess &process)
{
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

inline void stopProcess(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(3000)) {
        process.kill();
        process.waitForFinished(3000);
    }
}

class PrivatePulseServer
{
public:
    static constexpr int SampleRate = 44100;
    static inline const QString SinkName = QStringLiteral("tonaro_null");

    ~PrivatePulseServer() { stop(); }

    // Starts the server and waits until it takes connections. On failure
    // error() tells why (no pulseaudio installed, say).
    bool start()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty() || !m_dir.isValid()) {
            m_error = QStringLiteral("pulseaudio is not installed, or there is no temporary folder");
            return false;
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "HOME"})
            environment.insert(QString::fromLatin1(name), m_dir.path());
        environment.remove(QStringLiteral("PULSE_SERVER"));
        m_server.setProcessEnvironment(environment);
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.setStandardOutputFile(m_dir.filePath(QStringLiteral("server.log")));
        dieWithParent(m_server);
        // No default.pa (-n): only the null sink and the socket. A server
        // run as root warns that it is not meant to be; that is fine here.
        m_server.start(QStringLiteral("pulseaudio"),
                       QStringList{"--daemonize=no", "--system=false", "--exit-idle-time=-1", "--use-pid-file=false", "-n",
                                   "--log-target=stderr", "-L",
                                   QStringLiteral("module-null-sink sink_name=%1 rate=%2").arg(SinkName).arg(SampleRate), "-L",
                                   "module-native-protocol-unix auth-anonymous=1 socket=" + socketPath()});
        if (!m_server.waitForStarted(5000)) {
            m_error = QStringLiteral("pulseaudio did not start: ") + m_server.errorString();
            return false;
        }
        if (!QTest::qWaitFor([this] { return QFile::exists(socketPath()) || m_server.state() != QProcess::Running; }, 10000)
            || m_server.state() != QProcess::Running) {
            m_error = QStringLiteral("pulseaudio did not come up: ") + log();
            stop();
            return false;
        }
        return true;
    }

    void stop()
    {
        stopProcess(m_server);
        QFile::remove(socketPath());
    }

    qint64 processId() const { return m_server.processId(); }
    QString socketPath() const { return m_dir.filePath(QStringLiteral("native")); }
    // What PULSE_SERVER must hold for a client to reach this server.
    QByteArray address() const { return "unix:" + socketPath().toLocal8Bit(); }
    QString monitorName() const { return SinkName + QStringLiteral(".monitor"); }
    QString error() const { return m_error; }
    QString log() const
    {
        QFile file(m_dir.filePath(QStringLiteral("server.log")));
        return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()) : QString();
    }
    QString filePath(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
    QProcess m_server;
    QString m_error;
};

// parecord on the server's null-sink monitor, mono 16-bit, into a raw file.
class MonitorRecording
{
public:
    explicit MonitorRecording(const PrivatePulseServer &server)
        : m_path(server.filePath(QStringLiteral("monitor.raw")))
    {
        QFile::remove(m_path);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PULSE_SERVER"), QString::fromLocal8Bit(server.address()));
        m_recorder.setProcessEnvironment(environment);
        dieWithParent(m_recorder);
        // Without a small latency parecord fetches its data in chunks of
        // seconds and a short recording comes back nearly empty.
        m_recorder.start(QStringLiteral("parecord"),
                         {"--device=" + server.monitorName(), "--raw", "--format=s16le", "--channels=1",
                          QStringLiteral("--rate=%1").arg(PrivatePulseServer::SampleRate), "--latency-msec=20", m_path});
    }
    ~MonitorRecording() { stopProcess(m_recorder); }

    // Waits until sound data flows into the file.
    bool waitUntilRecording(int timeoutMs = 10000)
    {
        return QTest::qWaitFor([this] { return QFileInfo(m_path).size() > 0 || m_recorder.state() == QProcess::NotRunning; },
                               timeoutMs)
            && m_recorder.state() == QProcess::Running;
    }

    // Stops the recorder and returns what it recorded, scaled to -1..1.
    std::vector<float> stop()
    {
        stopProcess(m_recorder);
        QFile file(m_path);
        std::vector<float> samples;
        if (!file.open(QIODevice::ReadOnly))
            return samples;
        const QByteArray bytes = file.readAll();
        const auto *values = reinterpret_cast<const std::int16_t *>(bytes.constData());
        for (qsizetype i = 0; i < bytes.size() / 2; ++i)
            samples.push_back(values[i] / 32768.0f);
        return samples;
    }

private:
    QString m_path;
    QProcess m_recorder;
};

} // namespace tonaro::test
