#pragma once

// A sound server of the test's own, started as plain child processes in a
// private runtime folder, with one null sink that the test records from
// the sink's monitor over the PulseAudio protocol: PulseAudio itself (with
// a PipeWire that has no sink beside it), or PipeWire as desktops run it
// (the server, its session manager and its PulseAudio server, on a session
// bus of their own, which the session manager needs). The end-to-end test and the audio benchmark share them.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtCore/qtestsupport_core.h> // QTest::qWaitFor, without linking Qt Test

#include <sys/prctl.h>

#include <csignal>
#include <memory>
#include <tuple>
#include <vector>

namespace tonaro::test {

class PrivateSoundServer
{
public:
    // The rate recordings are taken at. PipeWire's sink runs at it, as
    // PipeWire's graph does; PulseAudio's at its own default of 44.1 kHz, as
    // on most PulseAudio desktops, so that its resampling is heard too.
    static constexpr int SampleRate = 48000;
    enum class Kind { PulseAudio, PipeWire };

    explicit PrivateSoundServer(Kind kind) : m_kind(kind) {}
    ~PrivateSoundServer() { stop(); }

    QString name() const { return m_kind == Kind::PipeWire ? QStringLiteral("PipeWire") : QStringLiteral("PulseAudio"); }
    // What PULSE_SERVER must hold for a PulseAudio client to reach this server.
    QByteArray address() const { return "unix:" + m_dir.filePath(QStringLiteral("native")).toLocal8Bit(); }
    QString monitorName() const { return QStringLiteral("tonaro_null.monitor"); }
    QString error() const { return m_error; }
    std::vector<qint64> processIds() const
    {
        std::vector<qint64> ids;
        for (const auto &process : m_processes)
            ids.push_back(process->processId());
        return ids;
    }

    // Starts the server and waits until it takes connections; again after
    // stop(), at the same address. Every client of this process then talks
    // to it. On failure error() tells why, and the programs' logs stay in
    // the folder.
    bool start()
    {
        m_error = name() + QStringLiteral(" did not come up; see the logs in ") + m_dir.path();
        // Each program comes up before the next needs it, shown by the file
        // it makes (none: nothing to wait for): the bus, the server with the
        // sink, then its clients.
        for (const auto &[program, arguments, makes] : steps()) {
            if (!m_dir.isValid() || !startProcess(program, arguments)
                || !QTest::qWaitFor([&] { return (makes.isEmpty() || QFile::exists(m_dir.filePath(makes))) && allRunning(); }, 10000)) {
                m_dir.setAutoRemove(false);
                stop();
                return false;
            }
        }
        qputenv("PULSE_SERVER", address());
        // PipeWire's own clients look for its socket there; PulseAudio's
        // folder has none.
        qputenv("PIPEWIRE_RUNTIME_DIR", m_dir.path().toLocal8Bit());
        return true;
    }

    // Kills every program at once, as a crash would: a server restarts from
    // that as from any other end.
    void stop()
    {
        for (auto process = m_processes.rbegin(); process != m_processes.rend(); ++process) {
            (*process)->kill();
            (*process)->waitForFinished(3000);
        }
        m_processes.clear();
        for (const char *made : {"native", "bus", "pipewire-0"})
            QFile::remove(m_dir.filePath(QString::fromLatin1(made)));
    }

private:
    std::vector<std::tuple<QString, QStringList, QString>> steps() const
    {
        if (m_kind == Kind::PulseAudio) {
            // Beside it a PipeWire with no sink, as on desktops that play
            // through PulseAudio and share screens through PipeWire. No
            // default.pa (-n): only the null sink and the socket. A server
            // run as root warns that it is not meant to be; that is fine here.
            return {{"dbus-daemon", {"--session", "--nofork", "--nopidfile", "--address=" + busAddress()}, "bus"},
                    {"pipewire", {}, "pipewire-0"},
                    {"pulseaudio",
                     {"--daemonize=no", "--system=false", "--exit-idle-time=-1", "--use-pid-file=false", "-n",
                      "--log-target=stderr", "-L", QStringLiteral("module-null-sink sink_name=tonaro_null rate=44100"),
                      "-L", "module-native-protocol-unix auth-anonymous=1 socket=" + m_dir.filePath("native")},
                     "native"}};
        }
        // PipeWire's support.null-audio-sink factory makes a sink without hardware.
        QDir(m_dir.path()).mkpath(QStringLiteral("pipewire/pipewire.conf.d"));
        QFile sink(m_dir.filePath(QStringLiteral("pipewire/pipewire.conf.d/tonaro-null-sink.conf")));
        if (sink.open(QIODevice::WriteOnly))
            sink.write(QStringLiteral("context.objects = [ { factory = adapter args = {\n"
                                      "  factory.name = support.null-audio-sink node.name = tonaro_null\n"
                                      "  media.class = Audio/Sink audio.position = [ FL FR ]\n"
                                      "  audio.rate = %1 monitor.channel-volumes = true } } ]\n")
                           .arg(SampleRate)
                           .toUtf8());
        return {{"dbus-daemon", {"--session", "--nofork", "--nopidfile", "--address=" + busAddress()}, "bus"},
                {"pipewire", {}, "pipewire-0"},
                {"wireplumber", {}, {}},
                {"pipewire-pulse", {}, "native"}};
    }

    QString busAddress() const { return QStringLiteral("unix:path=") + m_dir.filePath(QStringLiteral("bus")); }

    bool allRunning() const
    {
        return std::all_of(m_processes.begin(), m_processes.end(),
                           [](const auto &process) { return process->state() == QProcess::Running; });
    }

    // One of the server's programs, with its output in a log of its own
    // and its runtime, state and configuration in the private folder. It
    // dies with the test process, even when that crashes.
    bool startProcess(const QString &program, const QStringList &arguments)
    {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            m_error = program + QStringLiteral(" is not installed");
            return false;
        }
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "XDG_RUNTIME_DIR", "PIPEWIRE_RUNTIME_DIR", "XDG_CONFIG_HOME", "HOME"})
            environment.insert(QString::fromLatin1(name), m_dir.path());
        environment.remove(QStringLiteral("PULSE_SERVER"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress());
        auto &process = *m_processes.emplace_back(std::make_unique<QProcess>());
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setStandardOutputFile(m_dir.filePath(program + QStringLiteral(".log")));
        process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        process.start(program, arguments);
        return process.waitForStarted(5000);
    }

    const Kind m_kind;
    QTemporaryDir m_dir;
    QString m_error;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};

} // namespace tonaro::test
