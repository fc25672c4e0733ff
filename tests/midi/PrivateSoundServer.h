#pragma once

// A sound server of the test's own, started as plain child processes in a
// private runtime folder, with one null sink that the test records from
// the sink's monitor over the PulseAudio protocol. The end-to-end test and
// the audio benchmark share them.

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor, without linking Qt Test

#include <sys/prctl.h>

#include <csignal>
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

class PrivateSoundServer
{
public:
    static constexpr int SampleRate = 44100;
    static inline const QString SinkName = QStringLiteral("tonaro_null");

    virtual ~PrivateSoundServer() = default;
    virtual QString name() const = 0;
    // Starts the server and waits until it takes connections; again after
    // stop(), at the same address. On failure error() tells why.
    virtual bool start() = 0;
    virtual void stop() = 0;
    // The server's processes, for their processor time.
    virtual std::vector<qint64> processIds() const = 0;

    // What PULSE_SERVER must hold for a client to reach this server.
    QByteArray address() const { return "unix:" + socketPath().toLocal8Bit(); }
    QString monitorName() const { return SinkName + QStringLiteral(".monitor"); }
    QString error() const { return m_error; }
    QString filePath(const QString &name) const { return m_dir.filePath(name); }
    virtual QString socketPath() const = 0;

protected:
    QProcessEnvironment privateEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "HOME"})
            environment.insert(QString::fromLatin1(name), m_dir.path());
        environment.remove(QStringLiteral("PULSE_SERVER"));
        return environment;
    }

    // Starts one of the server's programs with its output in a log of its
    // own; false (with error() set) when it does not run.
    bool startProcess(QProcess &process, const QString &program, const QStringList &arguments,
                      const QProcessEnvironment &environment)
    {
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setStandardOutputFile(m_dir.filePath(program + QStringLiteral(".log")));
        dieWithParent(process);
        process.start(program, arguments);
        if (process.waitForStarted(5000))
            return true;
        m_error = program + QStringLiteral(" did not start: ") + process.errorString();
        return false;
    }

    // Waits for the PulseAudio socket while every process runs.
    bool waitForSocket(const std::vector<QProcess *> &processes)
    {
        const auto allRunning = [&] {
            for (const QProcess *process : processes) {
                if (process->state() != QProcess::Running)
                    return false;
            }
            return true;
        };
        if (QTest::qWaitFor([&] { return QFile::exists(socketPath()) || !allRunning(); }, 10000) && allRunning())
            return true;
        m_error = name() + QStringLiteral(" did not come up; see the logs in ") + m_dir.path();
        m_dir.setAutoRemove(false);
        return false;
    }

    QTemporaryDir m_dir;
    QString m_error;
};

} // namespace tonaro::test
