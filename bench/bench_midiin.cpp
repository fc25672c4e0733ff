// Prints how long a key struck on a MIDI keyboard takes to become a verdict
// on the screen, and what processor share the MIDI input costs while it
// waits. The keyboard is an RtMidi output port of the benchmark's own on a
// JACK server of its own (dummy driver, 128 frames at 48 kHz); the note
// recognition window answers on the MIDI recorder. For the idle share the
// keyboard is a child process (this program with --keyboard), so that only
// the input's own work is counted; JACK wakes every client once a period, so
// the share is given for a short period and for jackd's default one.
#include "../tests/support/PrivateJackServer.h"
#include "BenchSupport.h"
#include "exercises/formmelody/formmelody.h"
#include "midi/RtMidiInput.h"

#include <QApplication>
#include <QProcess>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>
#include <RtMidi.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace std::chrono;
using namespace tonaro;

namespace {

constexpr int Questions = 50;
constexpr int IdleSeconds = 10;
constexpr int PeriodFrames = 128;

void runEventsFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the event loop until done() or a second has passed.
template<typename Done>
bool runEventsUntil(Done done)
{
    const auto limit = steady_clock::now() + seconds(1);
    while (!done() && steady_clock::now() < limit)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    return done();
}

double idleShare(const char *what)
{
    runEventsFor(500);
    const double before = bench::processorSeconds();
    runEventsFor(IdleSeconds * 1000);
    const double share = 100.0 * (bench::processorSeconds() - before) / IdleSeconds;
    std::printf("  idle processor share, %s: %.3f %% (target <= 0.5 %%)\n", what, share);
    return share;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && std::string(argv[1]) == "--keyboard") {
        // A keyboard that sits there until the benchmark ends it.
        RtMidiOut keys(RtMidi::UNIX_JACK, argv[2]);
        keys.openVirtualPort("out");
        std::getchar();
        return 0;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    std::printf("MIDI input: note-on to verdict, %d questions\n", Questions);
    {
        test::PrivateJackServer jack(PeriodFrames);
        if (!jack.start()) {
            std::printf("  skipped: %s\n", qPrintable(jack.error()));
            return 0;
        }
        bench::RecordedWindow<formmelody> exercise;
        RtMidiInput input;
        QObject::connect(&input, &MidiInput::notePlayed, &exercise.window, &ExercisePanel::notePlayed);
        auto *verdict = exercise.control<QLabel>(QStringLiteral("rightwronglabel"));

        // Connected after the window: it runs once the window has answered.
        bool shown = false;
        steady_clock::time_point shownAt;
        QObject::connect(&input, &MidiInput::notePlayed, verdict, [&] {
            verdict->repaint();
            shownAt = steady_clock::now();
            shown = true;
        });

        RtMidiOut keys(RtMidi::UNIX_JACK, "bench keys");
        keys.openVirtualPort("out");
        const auto listening = [&input] {
            const auto open = input.openSources();
            return std::find(open.begin(), open.end(), "jack:bench keys:out") != open.end();
        };
        const auto plugged = steady_clock::now();
        while (!listening() && steady_clock::now() - plugged < seconds(3))
            runEventsFor(10);
        if (!listening()) {
            std::printf("  the input never found the keyboard\n");
            return 1;
        }
        std::printf("  keyboard found after %.0f ms (poll every %d ms)\n",
                    duration<double, std::milli>(steady_clock::now() - plugged).count(), RtMidiInput::PollInterval);

        std::vector<double> latencies;
        for (int i = 0; i < Questions; ++i) {
            exercise.ask();
            const int note = exercise.window.question().notes[0];
            shown = false;
            std::vector<unsigned char> strike{0x90, (unsigned char)note, 90};
            const auto struck = steady_clock::now();
            keys.sendMessage(&strike);
            if (!runEventsUntil([&] { return shown; }) || verdict->text() != QStringLiteral("Right!")) {
                std::printf("  question %d: no right verdict (%s)\n", i + 1, qPrintable(verdict->text()));
                return 1;
            }
            latencies.push_back(duration<double, std::milli>(shownAt - struck).count());
            std::vector<unsigned char> release{0x90, (unsigned char)note, 0};
            keys.sendMessage(&release);
            runEventsFor(20);
        }
        std::sort(latencies.begin(), latencies.end());
        std::printf("  median %.3f ms, worst %.3f ms (target median <= 5 ms; one JACK period is %.2f ms)\n",
                    latencies[latencies.size() / 2], latencies.back(), 1000.0 * PeriodFrames / 48000);
    }
    for (const int period : {PeriodFrames, 1024}) {
        test::PrivateJackServer jack(period);
        if (!jack.start())
            continue;
        QProcess keyboard;
        keyboard.start(QCoreApplication::applicationFilePath(), {"--keyboard", "idle keys"});
        // What this process spends with the server and the keyboard running
        // but no input: the part of the share that is not the input's.
        const QByteArray baseline = "JACK, " + QByteArray::number(period) + " frames a period, no input yet (baseline)";
        idleShare(baseline.constData());
        RtMidiInput input;
        const auto plugged = steady_clock::now();
        const auto listening = [&input] {
            const auto open = input.openSources();
            return std::find(open.begin(), open.end(), "jack:idle keys:out") != open.end();
        };
        while (!listening() && steady_clock::now() - plugged < seconds(5))
            runEventsFor(10);
        const QByteArray what = QByteArray("JACK, ") + QByteArray::number(period)
            + " frames a period, a keyboard and the own port open" + (listening() ? "" : " (keyboard NOT found)");
        idleShare(what.constData());
        keyboard.closeWriteChannel();
        keyboard.waitForFinished(3000);
    }
    {
        // No MIDI system: no sequencer here, and a JACK server name that none has.
        qputenv("JACK_DEFAULT_SERVER", "tonaro-bench-none");
        RtMidiInput input;
        idleShare("no MIDI system");
    }
    return 0;
}
