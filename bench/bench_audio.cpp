// Figures of the built-in synthesizer as the program drives it: the port
// restart (Stop noise! and the settings dialog), alone and with 30 notes
// sounding; then, against a PulseAudio server of our own with a null sink,
// how long a note takes from NoteOn to sound, whether sounding notes drop
// out, what the open but idle port costs in processor time, and the memory
// the loaded SoundFont keeps resident.
//
// Note-on-to-sound is measured two ways, both printed:
//  - at the sink: a record stream of this process on the null sink's monitor
//    stamps every block with the steady-clock time it arrived. A null sink
//    hands a block to its monitor at the moment it plays it, so the arrival
//    of the block that holds a note's first sound, less the steady-clock time
//    of the NoteOn call, is the latency a listener would have, plus the
//    recorder's own small transport delay (so it errs on the long side);
//  - from the output's own account: when the synthesizer's first sounding
//    block was written to the server, plus the stream latency the server
//    reported at that moment (pa_stream_get_latency) up to that sound.
// Notes are played one at a time from silence, so every onset is a note's.
// A dropout is digital silence inside a note; next to the synthesizer's
// underflows stand those of a plain tone played through the same output for
// as long, which tell what the machine and the server cost by themselves.

#include "../tests/midi/AudioAnalysis.h"
#include "../tests/midi/PrivatePulseServer.h"
#include "BenchSupport.h"
#include "MonitorTap.h"
#include "midi/MidiMessages.h"
#include "midi/Midi_interface.h"
#include "midi/RtMidiPorts.h"
#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"
#include "shell/MessageBoxes.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>
#include <cstdio>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace tonaro;
using bench::MonitorTap;
using namespace std::chrono;

namespace {

constexpr int Rate = test::PrivatePulseServer::SampleRate;
constexpr int Runs = 20;
// Louder than this (about -60 dBFS) a recorded sample counts as sound.
constexpr float OnsetLevel = 1e-3f;
// A dropout is a run of digital silence (under one 16-bit step, as the null
// sink works in 16 bits) longer than this inside a sounding note.
constexpr float QuietLevel = 1.0f / 32768;
constexpr double DropoutMs = 3.0;

// Processor seconds of another process, from /proc; -1 when unreadable.
double processorSecondsOf(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    // The fields after the command's closing parenthesis; utime and stime
    // are the 12th and 13th of them.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1;
    return (fields[11].toDouble() + fields[12].toDouble()) / double(sysconf(_SC_CLK_TCK));
}

double statusMegabytes(const char *key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(int(qstrlen(key))).trimmed().split(' ').front().toDouble() / 1024.0;
    }
    return -1;
}

double toMs(steady_clock::duration d)
{
    return duration<double, std::milli>(d).count();
}

struct Spread {
    double median = 0;
    double worst = 0;
};

Spread spread(std::vector<double> values)
{
    if (values.empty())
        return {};
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.back()};
}

// Runs the event loop for a while, as the idle program does.
void runEvents(milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

struct Note {
    steady_clock::time_point on;
    steady_clock::time_point off;
    PulseAudioOutput::Figures output; // as the output saw the note's onset
    bool wasPaused = false;
};

// Plays one note from silence for holdMs, then silences the channel.
Note playNote(Midi_interface &midi, PulseAudioOutput *output, int key, int holdMs)
{
    Note note;
    note.wasPaused = output && output->isPaused();
    note.on = steady_clock::now();
    midi.playNote(key);
    std::this_thread::sleep_for(std::chrono::milliseconds(holdMs));
    if (output)
        note.output = output->figures();
    note.off = steady_clock::now();
    midi.SendShortMsg(std::int16_t(midi::ControlChangeStatus + midi.MidiChannel - 1), midi::AllSoundOff, 0);
    return note;
}

struct Heard {
    std::vector<double> atSink;   // ms from NoteOn to the onset's arrival at the monitor
    std::vector<double> reported; // ms from NoteOn by the output's own account
    int onsets = 0;
    int dropouts = 0;
    double longestGapMs = 0;
};

// Matches the recording's onsets, in order, to the notes played.
Heard analyse(const std::vector<Note> &notes, MonitorTap &tap)
{
    std::vector<float> samples;
    std::vector<MonitorTap::Block> blocks;
    tap.take(samples, blocks);
    const test::Samples sound(samples);
    Heard heard;
    std::size_t from = 0;
    for (const Note &note : notes) {
        const auto block = std::find_if(blocks.begin(), blocks.end(),
                                        [&](const MonitorTap::Block &b) { return b.arrived >= note.on; });
        if (block == blocks.end())
            break;
        from = std::max(from, block == blocks.begin() ? 0 : std::prev(block)->first);
        const std::size_t onset = from + test::onsetIndex(sound.subspan(from), OnsetLevel);
        if (onset >= sound.size())
            break;
        ++heard.onsets;
        const auto holder = std::prev(std::upper_bound(blocks.begin(), blocks.end(), onset,
                                                       [](std::size_t i, const MonitorTap::Block &b) { return i < b.first; }));
        if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
            std::printf("  from %zu (block at %+.1f ms) onset %zu in block %zu at %+.1f ms\n", from,
                        toMs(block->arrived - note.on), onset, holder->first, toMs(holder->arrived - note.on));
        heard.atSink.push_back(toMs(holder->arrived - note.on));
        if (note.output.onsetWritten > note.on)
            heard.reported.push_back(toMs(note.output.onsetWritten - note.on)
                                     + double(note.output.onsetLatency.count()) / 1000);
        // From 10 ms after the onset until the note was silenced, less a
        // margin for the recorder's delay.
        const auto held = std::size_t(toMs(note.off - note.on) * Rate / 1000);
        const std::size_t begin = onset + Rate / 100, end = std::min(sound.size(), onset + held - Rate / 20);
        if (end > begin) {
            const double gapMs = 1000.0 * double(test::longestQuietRun(sound.subspan(begin, end - begin), QuietLevel)) / Rate;
            heard.longestGapMs = std::max(heard.longestGapMs, gapMs);
            if (gapMs > DropoutMs)
                ++heard.dropouts;
        }
        from = onset + held;
    }
    return heard;
}

void printRestarts(const char *what, const std::vector<double> &times)
{
    const Spread s = spread(times);
    std::printf("%s: median %.3f ms, worst %.3f ms of %zu (target <= 20 ms)\n", what, s.median, s.worst, times.size());
}

void benchRestarts(Midi_interface &midi, SystemMidiPlatform &platform, RecordingMessageBoxes &boxes)
{
    std::vector<double> quiet, busy;
    int stillSounding = 0;
    for (int run = 0; run < Runs; ++run) {
        const auto start = steady_clock::now();
        midi.restart();
        quiet.push_back(toMs(steady_clock::now() - start));
    }
    for (int run = 0; run < Runs; ++run) {
        for (int key = 40; key < 70; ++key)
            midi.playNote(key);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        const auto start = steady_clock::now();
        midi.restart();
        busy.push_back(toMs(steady_clock::now() - start));
        // The voices stop at the next block the output renders.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stillSounding += platform.builtInSynth().isSounding() ? 1 : 0;
    }
    printRestarts("port restart (close, open, instrument)", quiet);
    printRestarts("port restart with 30 notes sounding", busy);
    std::printf("  still sounding 20 ms after the restart: %d of %d; error boxes: %zu\n", stillSounding, Runs,
                boxes.boxes().size());
    if (qEnvironmentVariableIsSet("BENCH_VERBOSE") && !boxes.boxes().empty())
        std::printf("  first box: %s\n", qPrintable(boxes.texts().front()));
}

// The first note after the program connects. A sink that no client has
// asked for a short latency renders ahead in long blocks (two seconds for a
// null sink), and a new stream is not asked for sound again until the block
// under way has played: the wait is the server's, but a user would hear it.
// Afterwards the sink keeps to the stream's short blocks.
void benchFirstNote(Midi_interface &midi, PulseAudioOutput *output, MonitorTap &tap)
{
    const auto opened = steady_clock::now();
    const Note note = playNote(midi, output, 60, 400);
    std::this_thread::sleep_for(3s - (steady_clock::now() - opened));
    const Heard heard = analyse({note}, tap);
    if (heard.atSink.empty())
        std::printf("first note after the first open: no sound within 3 s\n");
    else
        std::printf("first note after the first open, at the sink's monitor: %.1f ms (the sink's long block "
                    "under way when the stream connected)\n",
                    heard.atSink.front());
}

// A sine that never ends, for the reference stream.
class Tone : public AudioSource
{
public:
    void render(float *interleavedStereo, int frames) override
    {
        for (int i = 0; i < frames; ++i) {
            const auto value = float(0.1 * std::sin(m_phase));
            interleavedStereo[2 * i] = interleavedStereo[2 * i + 1] = value;
            m_phase = std::fmod(m_phase + 2 * std::numbers::pi * 440 / Rate, 2 * std::numbers::pi);
        }
    }
    bool isSounding() override { return true; }

private:
    double m_phase = 0;
};

// The same output with a plain tone instead of the synthesizer, for as long
// as the notes above took: the underflows that the machine and the server
// cause by themselves. -1 when the stream did not start.
int referenceUnderflows(std::chrono::duration<double> time)
{
    Tone tone;
    PulseAudioOutput reference(tone, PulseAudioOutput::Settings{});
    if (!reference.start())
        return -1;
    reference.wake();
    std::this_thread::sleep_for(time);
    return reference.figures().underflows;
}

void benchSound(Midi_interface &midi, PulseAudioOutput *output, MonitorTap &tap)
{
    const int underflowsBefore = output->figures().underflows;
    const auto start = steady_clock::now();
    std::vector<Note> notes;
    for (int run = 0; run < Runs; ++run) {
        notes.push_back(playNote(midi, output, 60 + run % 12, 400));
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    const int underflows = output->figures().underflows - underflowsBefore;
    const std::chrono::duration<double> took = steady_clock::now() - start;
    const Heard running = analyse(notes, tap);
    const int reference = referenceUnderflows(took);

    // The first note of a question usually comes after a silence long
    // enough for the output to have paused.
    std::vector<Note> woken;
    for (int run = 0; run < 5; ++run) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3000));
        woken.push_back(playNote(midi, output, 64, 400));
    }
    const Heard fromPause = analyse(woken, tap);

    const Spread sink = spread(running.atSink), told = spread(running.reported);
    std::printf("note-on to sound, %d notes on a running stream (%d onsets found):\n", Runs, running.onsets);
    std::printf("  at the sink's monitor: median %.2f ms, worst %.2f ms (target median <= 20 ms)\n", sink.median,
                sink.worst);
    std::printf("  output's account (write time + server latency): median %.2f ms, worst %.2f ms\n", told.median,
                told.worst);
    int paused = 0;
    for (const Note &note : woken)
        paused += note.wasPaused ? 1 : 0;
    const Spread sinkWoken = spread(fromPause.atSink), toldWoken = spread(fromPause.reported);
    std::printf("note-on to sound, %zu notes after 3 s of silence (%d of them on a paused output):\n", woken.size(),
                paused);
    std::printf("  at the sink's monitor: median %.2f ms, worst %.2f ms; output's account: median %.2f ms, "
                "worst %.2f ms\n",
                sinkWoken.median, sinkWoken.worst, toldWoken.median, toldWoken.worst);
    std::printf("dropouts (silence > %.0f ms inside a note) in %d notes: %d, longest gap %.2f ms, "
                "stream underflows %d (target 0)\n",
                DropoutMs, running.onsets, running.dropouts, running.longestGapMs, underflows);
    std::printf("  for comparison, a plain tone through the same output for %.1f s: stream underflows %d\n",
                took.count(), reference);
}

void benchIdle(PulseAudioOutput *output, qint64 serverPid)
{
    // Ten seconds from the last note's silence, in which the output pauses
    // itself, then ten seconds more of the idle program with the port open.
    const auto silencedAt = steady_clock::now();
    auto pausedAt = silencedAt;
    double cpu = tonaro::bench::processorSeconds();
    while (steady_clock::now() - silencedAt < 10s) {
        runEvents(20ms);
        if (pausedAt == silencedAt && output->isPaused())
            pausedAt = steady_clock::now();
    }
    double wall = duration<double>(steady_clock::now() - silencedAt).count();
    double used = tonaro::bench::processorSeconds() - cpu;
    std::printf("idle with the port open, first %.1f s after the last note (output paused after %.0f ms): "
                "processor %.4f s = %.3f %% of a core (target <= 1 %%)\n",
                wall, toMs(pausedAt - silencedAt), used, 100 * used / wall);

    cpu = tonaro::bench::processorSeconds();
    const double serverCpu = processorSecondsOf(serverPid);
    const auto start = steady_clock::now();
    runEvents(10s);
    wall = duration<double>(steady_clock::now() - start).count();
    used = tonaro::bench::processorSeconds() - cpu;
    std::printf("idle with the port open, next %.1f s: processor %.4f s = %.3f %% of a core (target <= 1 %%); "
                "sound server %.3f %%\n",
                wall, used, 100 * used / wall, 100 * (processorSecondsOf(serverPid) - serverCpu) / wall);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (findGeneralMidiSoundFont().empty()) {
        std::printf("skipped: no General MIDI SoundFont installed\n");
        return 0;
    }
    const double residentBefore = statusMegabytes("VmRSS:");

    // The recorder listens from before the first open, so that the first
    // note is heard too.
    test::PrivatePulseServer server;
    MonitorTap tap(Rate);
    BuiltInSynth::Options options;
    QString why;
    if (!server.start())
        why = QStringLiteral("no PulseAudio server could start: ") + server.error();
    else if (!tap.start(server.address(), server.monitorName().toLatin1()))
        why = QStringLiteral("no recorder on the sink's monitor");
    const bool sound = why.isEmpty();
    if (sound) {
        qputenv("PULSE_SERVER", server.address());
    } else {
        std::printf("sound figures skipped (%s);\nrestarts measured on the synthesizer without an output\n",
                    qPrintable(why));
        options.output = BuiltInSynth::Output::None;
    }
    SystemMidiPlatform platform(std::make_unique<BuiltInSynth>(options), std::make_unique<RtMidiPorts>());
    RecordingMessageBoxes boxes;
    Midi_interface midi(platform, boxes);
    midi.MidiChannel = 1;
    midi.MidiVolume = 100;
    midi.ToggleMidiOut();
    if (!midi.MidiPortOpen) {
        std::printf("the built-in synthesizer did not open: %s\n", qPrintable(boxes.texts().join(QLatin1Char(' '))));
        return 1;
    }
    std::printf("SoundFont loaded in %.1f ms; resident memory %.1f MB (%.1f MB before the synthesizer; "
                "target <= 60 MB)\n",
                platform.builtInSynth().loadTime().count() * 1000, statusMegabytes("VmRSS:"), residentBefore);
    midi.SelectInstrument(midi.MidiChannel, 0, 0, 0);
    PulseAudioOutput *output = platform.builtInSynth().output();
    if (sound)
        benchFirstNote(midi, output, tap);

    benchRestarts(midi, platform, boxes);
    if (sound) {
        benchSound(midi, output, tap);
        // The recorder would count against the idle program.
        tap.stop();
        benchIdle(output, server.processId());
    }
    std::printf("resident memory at the end: %.1f MB, peak %.1f MB (both with the benchmark's recorder and "
                "reference stream)\n",
                statusMegabytes("VmRSS:"),
                statusMegabytes("VmHWM:"));
    midi.ToggleMidiOut();
    return 0;
}
