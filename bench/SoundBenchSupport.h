#pragma once

// What the audio benchmark measures with: two processes that spin a core
// each, the `fluidsynth` program as a second player, and the reading of
// note onsets and dropouts from a sink monitor's recording.

#include "../tests/midi/AudioAnalysis.h"
#include "../tests/midi/MonitorTap.h"
#include "../tests/midi/PrivateSoundServer.h"

#include <QProcess>
#include <QStandardPaths>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <vector>

namespace tonaro::bench {

using Clock = std::chrono::steady_clock;

inline double toMs(Clock::duration d)
{
    return std::chrono::duration<double, std::milli>(d).count();
}

struct Spread {
    double median = 0;
    double worst = 0;
};

inline Spread spread(std::vector<double> values)
{
    if (values.empty())
        return {};
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.back()};
}

// Two child processes that spin a core each until this goes.
class SpinningLoad
{
public:
    explicit SpinningLoad(int processes = 2)
    {
        for (int i = 0; i < processes; ++i) {
            const pid_t pid = fork();
            if (pid == 0) {
                prctl(PR_SET_PDEATHSIG, SIGKILL);
                volatile unsigned long spins = 0;
                for (;;)
                    spins = spins + 1;
            }
            if (pid > 0)
                m_pids.push_back(pid);
        }
    }
    ~SpinningLoad()
    {
        for (const pid_t pid : m_pids) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
    SpinningLoad(const SpinningLoad &) = delete;
    SpinningLoad &operator=(const SpinningLoad &) = delete;

private:
    std::vector<pid_t> m_pids;
};

// The `fluidsynth` program with its own pulseaudio driver at its default
// buffer, driven through its command shell.
class FluidSynthProgram
{
public:
    bool start(const QByteArray &server, const QString &soundFont)
    {
        if (QStandardPaths::findExecutable(QStringLiteral("fluidsynth")).isEmpty())
            return false;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PULSE_SERVER"), QString::fromLocal8Bit(server));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        // The same dry sound, gain and rate as ours.
        m_process.start(QStringLiteral("fluidsynth"),
                        {"-a", "pulseaudio", "-q", "-R", "0", "-C", "0", "-g", "0.5", "-r", "48000", soundFont});
        if (!m_process.waitForStarted(5000))
            return false;
        command("prog 0 0");
        return m_process.state() == QProcess::Running;
    }
    ~FluidSynthProgram()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(3000))
            m_process.kill(), m_process.waitForFinished(3000);
    }

    void command(const QByteArray &line)
    {
        m_process.write(line + '\n');
        m_process.waitForBytesWritten(100);
    }
    void noteOn(int key) { command("noteon 0 " + QByteArray::number(key) + " 100"); }
    void silence() { command("cc 0 120 0"); }

private:
    QProcess m_process;
};

struct Heard {
    std::vector<double> latencies; // ms from the note-on to its sound at the monitor
    int notes = 0;
    int dropouts = 0;
    double longestGapMs = 0;
};

// Matches the recording's onsets, in order, to notes played one at a time
// from silence, each held from on to off.
struct Played {
    Clock::time_point on;
    Clock::time_point off;
};

inline Heard analyse(const std::vector<Played> &notes, test::MonitorTap &tap)
{
    constexpr int Rate = test::PrivateSoundServer::SampleRate;
    const test::MonitorTap::Recording recording = tap.take();
    const std::vector<float> &samples = recording.samples;
    const std::vector<test::MonitorTap::Block> &blocks = recording.blocks;
    const test::Samples sound(samples);
    Heard heard;
    std::size_t from = 0;
    for (const Played &note : notes) {
        const auto block = std::find_if(blocks.begin(), blocks.end(),
                                        [&](const test::MonitorTap::Block &b) { return b.arrived >= note.on; });
        if (block == blocks.end())
            break;
        from = std::max(from, block == blocks.begin() ? 0 : std::prev(block)->first);
        const std::size_t onset = from + test::onsetIndex(sound.subspan(from), 1e-3f);
        if (onset >= sound.size())
            break;
        ++heard.notes;
        const auto holder = std::prev(std::upper_bound(
            blocks.begin(), blocks.end(), onset, [](std::size_t i, const test::MonitorTap::Block &b) { return i < b.first; }));
        heard.latencies.push_back(toMs(holder->arrived - note.on));
        // From 10 ms after the onset until the note was silenced, less a
        // margin for the recorder's delay.
        const auto held = std::size_t(toMs(note.off - note.on) * Rate / 1000);
        const std::size_t begin = onset + Rate / 100, end = std::min(sound.size(), onset + held - Rate / 20);
        if (end > begin) {
            const double gapMs
                = 1000.0 * double(test::longestQuietRun(sound.subspan(begin, end - begin), 1.0f / 32768)) / Rate;
            heard.longestGapMs = std::max(heard.longestGapMs, gapMs);
            if (gapMs > 3.0)
                ++heard.dropouts;
        }
        from = onset + held;
    }
    return heard;
}

} // namespace tonaro::bench
