// Figures of the built-in synthesizer as the program drives it, on each
// sound setup a user may have: a PulseAudio server and a PipeWire server
// (through its PulseAudio server) of our own with a null sink, and ALSA
// alone with no server. For each server: from NoteOn to the sound at the
// sink, dropouts in a run of notes on a quiet machine and with two
// processes spinning a core each, the processor share of the idle program
// with the port open, and how soon sound is back after the server restarts;
// beside ours the same notes through the `fluidsynth` program with its own
// pulseaudio driver at its default buffer. Also the port restart (Stop
// noise! and the settings dialog) and the resident memory.
//
// A record stream of this process on the null sink's monitor stamps every
// block with the steady-clock time it arrived. A null sink hands a block to
// its monitor as it plays it, so the arrival of the block that holds a
// note's first sound, less the time of the NoteOn call, is the latency a
// listener would have, plus the recorder's own small delay (so it errs on
// the long side). A dropout is digital silence over 3 ms inside a note.
// Beside it our stream's own account of each onset: from the note-on until
// the server asked for the block that holds it, and how much the server said
// it held ahead of that block. Where the monitor is later than that account
// (PipeWire's is by about two of its periods), the difference lies in the
// server's graph and its monitor, which report no latency of their own.
//
// BENCH_NOTES sets the length of the runs (200); BENCH_SETUPS the setups to
// measure, of "pulseaudio,pipewire,alsa" (all); BENCH_OURS_ONLY leaves the
// `fluidsynth` program out, for quick comparisons.

#include "../tests/midi/PrivateAlsaDevice.h"
#include "../tests/midi/PrivateSoundServer.h"
#include "BenchSupport.h"
#include "SoundBenchSupport.h"
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

#include <functional>
#include <thread>

using namespace tonaro;
using namespace tonaro::bench;
using namespace std::chrono;

namespace {

constexpr int Rate = test::PrivateSoundServer::SampleRate;
constexpr int LatencyNotes = 50;
constexpr int Restarts = 20;

int runLength()
{
    const int notes = qEnvironmentVariableIntValue("BENCH_NOTES");
    return notes > 0 ? notes : 200;
}

bool wanted(const char *setup)
{
    const QByteArray setups = qgetenv("BENCH_SETUPS");
    return setups.isEmpty() || setups.split(',').contains(setup);
}

double processorSecondsOf(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    // utime and stime are the 12th and 13th fields after the command.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() < 13 ? 0 : (fields[11].toDouble() + fields[12].toDouble()) / double(sysconf(_SC_CLK_TCK));
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

void runEvents(milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// One way to play a note and to silence it.
struct Player {
    std::function<void(int)> noteOn;
    std::function<void()> silence;
    // Called while each note sounds, for the output's own figures.
    std::function<void(Clock::time_point on)> account;
};

// Notes one at a time from silence, each held 150 ms with 50 ms between.
std::vector<Played> playRun(const Player &player, int count)
{
    std::vector<Played> notes;
    for (int i = 0; i < count; ++i) {
        Played note{Clock::now(), {}};
        player.noteOn(60 + i % 12);
        std::this_thread::sleep_for(150ms);
        if (player.account)
            player.account(note.on);
        note.off = Clock::now();
        player.silence();
        notes.push_back(note);
        std::this_thread::sleep_for(50ms);
    }
    return notes;
}

// The first note on a fresh null sink waits for the sink's long first block,
// and the `fluidsynth` program reads its piano first (seconds with the
// largest fonts): the note is held until the sink's monitor hears it.
void settle(const Player &player, const test::PrivateSoundServer &server)
{
    test::MonitorTap tap(Rate);
    const bool listening = tap.start(server.address(), server.monitorName().toLatin1());
    player.noteOn(48);
    const auto start = Clock::now();
    std::vector<float> samples;
    do {
        std::this_thread::sleep_for(100ms);
        samples = tap.take().samples;
    } while (listening && test::onsetIndex(test::Samples(samples), 1e-3f) >= samples.size()
             && Clock::now() - start < 30s);
    std::this_thread::sleep_for(listening ? 300ms : 2500ms);
    player.silence();
    std::this_thread::sleep_for(200ms);
}

struct Figures {
    Spread quiet;
    Spread loaded;
    int dropoutsQuiet = -1;
    int dropoutsLoaded = -1;
    double longestGapMs = 0;
    int heardQuiet = 0;
    int heardLoaded = 0;
};

Figures measure(const Player &player, const test::PrivateSoundServer &server)
{
    Figures figures;
    const int count = runLength();
    for (const bool loaded : {false, true}) {
        test::MonitorTap tap(Rate);
        if (!tap.start(server.address(), server.monitorName().toLatin1()))
            return figures;
        std::unique_ptr<SpinningLoad> load = loaded ? std::make_unique<SpinningLoad>() : nullptr;
        const std::vector<Played> notes = playRun(player, count);
        load.reset();
        Heard heard = analyse(notes, tap);
        figures.longestGapMs = std::max(figures.longestGapMs, heard.longestGapMs);
        if (loaded) {
            figures.loaded = spread(heard.latencies);
            figures.dropoutsLoaded = heard.dropouts;
            figures.heardLoaded = heard.notes;
        } else {
            heard.latencies.resize(std::min<std::size_t>(heard.latencies.size(), LatencyNotes));
            figures.quiet = spread(heard.latencies);
            figures.dropoutsQuiet = heard.dropouts;
            figures.heardQuiet = heard.notes;
        }
    }
    return figures;
}

void printSideBySide(const Figures &ours, const Figures &theirs, bool haveTheirs)
{
    const int count = runLength();
    const auto row = [&](const char *what, double a, double b) {
        if (haveTheirs)
            std::printf("  %-46s %9.2f %11.2f %7.2f\n", what, a, b, a > 0 ? b / a : 0.0);
        else
            std::printf("  %-46s %9.2f %11s\n", what, a, "-");
    };
    std::printf("  %-46s %9s %11s %7s\n", "", "Tonaro", "fluidsynth", "ratio");
    row("note-on to sound, quiet, median (ms)", ours.quiet.median, theirs.quiet.median);
    row("note-on to sound, quiet, worst (ms)", ours.quiet.worst, theirs.quiet.worst);
    row("note-on to sound, 2 spinning, median (ms)", ours.loaded.median, theirs.loaded.median);
    row("note-on to sound, 2 spinning, worst (ms)", ours.loaded.worst, theirs.loaded.worst);
    row("dropouts in the quiet run", ours.dropoutsQuiet, theirs.dropoutsQuiet);
    row("dropouts with 2 spinning", ours.dropoutsLoaded, theirs.dropoutsLoaded);
    row("longest gap inside a note (ms)", ours.longestGapMs, theirs.longestGapMs);
    std::printf("  (latency medians of the first %d notes quiet and all %d loaded; notes heard: ours %d/%d, "
                "fluidsynth %d/%d of %d)\n",
                LatencyNotes, count, ours.heardQuiet, ours.heardLoaded, theirs.heardQuiet, theirs.heardLoaded, count);
}

void benchRestarts(Midi_interface &midi, SystemMidiPlatform &platform, RecordingMessageBoxes &boxes)
{
    std::vector<double> quiet, busy;
    for (int run = 0; run < Restarts; ++run) {
        const auto start = Clock::now();
        midi.restart();
        quiet.push_back(toMs(Clock::now() - start));
    }
    for (int run = 0; run < Restarts; ++run) {
        for (int key = 40; key < 70; ++key)
            midi.playNote(key);
        std::this_thread::sleep_for(30ms);
        const auto start = Clock::now();
        midi.restart();
        busy.push_back(toMs(Clock::now() - start));
    }
    const Spread a = spread(quiet), b = spread(busy);
    std::printf("port restart: median %.3f ms, worst %.3f ms; with 30 notes sounding: median %.3f ms, worst %.3f ms "
                "(target <= 20 ms); error boxes %zu\n",
                a.median, a.worst, b.median, b.worst, boxes.boxes().size());
    (void)platform;
}

void benchIdle(BuiltInSynth &synth, const test::PrivateSoundServer &server)
{
    // The output pauses half a second after the last note; then 10 s.
    runEvents(1000ms);
    double serverBefore = 0;
    for (const qint64 pid : server.processIds())
        serverBefore += processorSecondsOf(pid);
    const double before = processorSeconds();
    const auto start = Clock::now();
    runEvents(10s);
    const double wall = duration<double>(Clock::now() - start).count();
    double serverAfter = 0;
    for (const qint64 pid : server.processIds())
        serverAfter += processorSecondsOf(pid);
    std::printf("idle with the port open (output %s): %.3f %% of a core (target <= 1 %%); the server %.3f %%\n",
                synth.output() && synth.output()->isPaused() ? "paused" : "running",
                100 * (processorSeconds() - before) / wall, 100 * (serverAfter - serverBefore) / wall);
}

void benchReconnect(BuiltInSynth &synth, test::PrivateSoundServer &server)
{
    const int before = synth.connection()->reconnects();
    for (const qint64 pid : server.processIds())
        kill(pid_t(pid), SIGKILL);
    server.stop();
    const auto restarting = Clock::now();
    if (!server.start()) {
        std::printf("reconnect: the server did not start again (%s)\n", qPrintable(server.error()));
        return;
    }
    const auto ready = Clock::now();
    while (synth.connection()->reconnects() == before && Clock::now() - ready < 10s)
        std::this_thread::sleep_for(1ms);
    const auto back = Clock::now();
    std::printf("reconnect after a server restart: %.0f ms after the server took connections "
                "(server start %.0f ms); %s\n",
                toMs(back - ready), toMs(ready - restarting),
                synth.connection()->reconnects() > before ? "playing again" : "NOT back within 10 s");
}

void benchServer(test::PrivateSoundServer &server, bool first)
{
    std::printf("\n== %s\n", qPrintable(server.name()));
    if (!server.start()) {
        std::printf("skipped: %s\n", qPrintable(server.error()));
        return;
    }
    qputenv("PULSE_SERVER", server.address());
    SystemMidiPlatform platform(std::make_unique<BuiltInSynth>(BuiltInSynth::Options{}), std::make_unique<RtMidiPorts>());
    RecordingMessageBoxes boxes;
    Midi_interface midi(platform, boxes);
    midi.MidiChannel = 1;
    midi.MidiVolume = 100;
    midi.ToggleMidiOut();
    if (!midi.MidiPortOpen) {
        std::printf("the built-in synthesizer did not open: %s\n", qPrintable(boxes.texts().join(QLatin1Char(' '))));
        return;
    }
    BuiltInSynth &synth = platform.builtInSynth();
    if (first)
        std::printf("SoundFont loaded in %.1f ms; resident memory %.1f MB\n", synth.loadTime().count() * 1000,
                    statusMegabytes("VmRSS:"));
    midi.SelectInstrument(midi.MidiChannel, 0, 0, 0);
    // Our stream's own account of each onset: how long the note waited for
    // the server to ask for sound, and how much the server held ahead of it.
    std::vector<double> untilWritten, queuedAhead;
    const Player ours{[&](int key) { midi.playNote(key); },
                      [&] { midi.SendShortMsg(std::int16_t(midi::ControlChangeStatus + midi.MidiChannel - 1),
                                              midi::AllSoundOff, 0); },
                      [&](Clock::time_point on) {
                          const AudioOutput::Figures figures = synth.output()->figures();
                          if (figures.onsetWritten <= on)
                              return;
                          untilWritten.push_back(toMs(figures.onsetWritten - on));
                          queuedAhead.push_back(double(figures.onsetLatency.count()) / 1000);
                      }};
    settle(ours, server);
    if (first)
        benchRestarts(midi, platform, boxes);
    untilWritten.clear();
    queuedAhead.clear();
    const Figures mine = measure(ours, server);
    const AudioOutput::Figures output = synth.output()->figures();
    Figures theirs;
    bool haveTheirs = false;
    {
        // It goes before the idle figures, which its stream would spoil.
        FluidSynthProgram program;
        haveTheirs = !qEnvironmentVariableIsSet("BENCH_OURS_ONLY")
            && program.start(server.address(), QString::fromStdString(findGeneralMidiSoundFont()));
        if (haveTheirs) {
            const Player fluidsynth{[&](int key) { program.noteOn(key); }, [&] { program.silence(); }, {}};
            settle(fluidsynth, server);
            theirs = measure(fluidsynth, server);
        } else {
            std::printf("the fluidsynth program did not start (package fluidsynth)\n");
        }
    }
    printSideBySide(mine, theirs, haveTheirs);
    const Spread written = spread(untilWritten), queued = spread(queuedAhead);
    std::printf("  our stream: %d underflows, buffer now %lld ms; by its own account (median / worst of %zu): "
                "note-on to written %.1f / %.1f ms, then held in the server %.1f / %.1f ms\n",
                output.underflows, static_cast<long long>(output.bufferTime.count()), untilWritten.size(),
                written.median, written.worst, queued.median, queued.worst);
    benchIdle(synth, server);
    benchReconnect(synth, server);
    midi.ToggleMidiOut();
}

void benchAlsa()
{
    std::printf("\n== ALSA alone (file plugin over the null device, paced by our clock)\n");
    test::PrivateAlsaDevice device;
    SystemMidiPlatform platform(std::make_unique<BuiltInSynth>(BuiltInSynth::Options{}), std::make_unique<RtMidiPorts>());
    MidiHandle handle = 0;
    if (!device.isReady() || platform.open(&handle, 0) != toCode(MidiResult::Ok)) {
        std::printf("skipped: ALSA's default device did not open\n");
        return;
    }
    // The synthesizer chooses no program at load: the port chooses one after
    // every open, and a channel without one stays silent.
    platform.sendShortMessage(handle, midi::packShortMessage(midi::ProgramChangeStatus, 0, 0));
    AudioOutput *output = platform.builtInSynth().output();
    std::vector<double> latencies;
    for (int i = 0; i < LatencyNotes; ++i) {
        const auto on = Clock::now();
        platform.sendShortMessage(handle, midi::packShortMessage(midi::NoteOnStatus, 60 + i % 12, 100));
        std::this_thread::sleep_for(150ms);
        const AudioOutput::Figures figures = output->figures();
        if (figures.onsetWritten > on)
            latencies.push_back(toMs(figures.onsetWritten - on) + double(figures.onsetLatency.count()) / 1000);
        platform.sendShortMessage(handle, midi::packShortMessage(midi::ControlChangeStatus, midi::AllSoundOff, 0));
        std::this_thread::sleep_for(50ms);
    }
    const Spread s = spread(latencies);
    std::printf("note-on to sound by the output's account (write time + what is queued ahead): median %.2f ms, "
                "worst %.2f ms of %zu; underflows %d\n",
                s.median, s.worst, latencies.size(), output->figures().underflows);
    runEvents(1000ms);
    const double before = processorSeconds();
    runEvents(5s);
    std::printf("idle with the port open: %.3f %% of a core\n", 100 * (processorSeconds() - before) / 5);
    platform.close(handle);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (findGeneralMidiSoundFont().empty()) {
        std::printf("skipped: no General MIDI SoundFont installed\n");
        return 0;
    }
    QFile loadAverage(QStringLiteral("/proc/loadavg"));
    const QByteArray load = loadAverage.open(QIODevice::ReadOnly) ? loadAverage.readAll().trimmed() : QByteArray("?");
    std::printf("resident memory before the synthesizer: %.1f MB; load average %s; %d notes a run\n",
                statusMegabytes("VmRSS:"), load.constData(), runLength());
    bool first = true;
    if (wanted("pulseaudio")) {
        test::PrivateSoundServer pulse(test::PrivateSoundServer::Kind::PulseAudio);
        benchServer(pulse, first);
        first = false;
    }
    if (wanted("pipewire")) {
        test::PrivateSoundServer pipewire(test::PrivateSoundServer::Kind::PipeWire);
        benchServer(pipewire, first);
    }
    if (wanted("alsa"))
        benchAlsa();
    std::printf("\nresident memory at the end: %.1f MB, peak %.1f MB\n", statusMegabytes("VmRSS:"),
                statusMegabytes("VmHWM:"));
    return 0;
}
