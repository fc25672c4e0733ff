// Prints how exactly WaitMs ends, what processor time a wait costs, how
// long start-up takes beyond the splash and the memory it leaves resident.
// The built-in synthesizer plays to a PulseAudio server of the benchmark's
// own (a PipeWire one with BENCH_SERVER=pipewire) unless PULSE_SERVER names
// one, and the message boxes are recorded,
// not shown: a box that waited for a click would hang the run.
#include "../tests/midi/PrivateSoundServer.h"
#include "BenchSupport.h"
#include "exercise/RandomSource.h"
#include "exercise/WaitMs.h"
#include "midi/Midi_interface.h"
#include "midi/SystemMidiPlatform.h"
#include "shell/MDIForm1.h"
#include "shell/MessageBoxes.h"

#include <QApplication>
#include <QFile>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

using namespace std::chrono;

namespace {

double residentMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').front().toDouble() / 1024.0;
    }
    return -1;
}

void overshoot(int milliseconds, bool processEvents)
{
    std::vector<double> over;
    for (int i = 0; i < 20; ++i) {
        const auto start = steady_clock::now();
        tonaro::WaitMs(milliseconds, processEvents);
        over.push_back(duration<double, std::milli>(steady_clock::now() - start).count() - milliseconds);
    }
    std::sort(over.begin(), over.end());
    std::printf("WaitMs %4d ms, %-9s overshoot median %.3f ms, worst %.3f ms   (targets <= 1 and <= 3)\n",
                milliseconds, processEvents ? "events," : "no events,", over[over.size() / 2], over.back());
}

} // namespace

int main(int argc, char *argv[])
{
    auto programStart = steady_clock::now();
    QApplication app(argc, argv);

    // The server's start is no part of the program's.
    const auto serverStart = steady_clock::now();
    using tonaro::test::PrivateSoundServer;
    PrivateSoundServer server(qgetenv("BENCH_SERVER") == "pipewire" ? PrivateSoundServer::Kind::PipeWire
                                                                   : PrivateSoundServer::Kind::PulseAudio);
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER") && !server.start())
        std::printf("No %s server of our own (%s)\n", qPrintable(server.name()), qPrintable(server.error()));
    programStart += steady_clock::now() - serverStart;

    auto platform = tonaro::createSystemMidiPlatform();
    tonaro::RecordingMessageBoxes boxes;
    tonaro::ClockRandomSource random;
    tonaro::Midi_interface midi(*platform, boxes);
    tonaro::MDIForm1 window({midi, boxes, random});
    window.MDIForm_Load();
    QCoreApplication::processEvents();
    const double startUp = duration<double, std::milli>(steady_clock::now() - programStart).count() - 1500;
    std::printf("Start-up beyond the 1.5 s splash: %.1f ms   (target <= 200)\n", startUp);
    std::printf("Resident memory after start-up: %.1f MB   (target <= 60)\n", residentMegabytes());
    for (const QString &text : boxes.texts())
        std::printf("Box shown during start-up: %s\n", qPrintable(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral(" "))));

    for (const int milliseconds : {250, 1250}) {
        overshoot(milliseconds, true);
        overshoot(milliseconds, false);
    }

    const double before = tonaro::bench::processorSeconds();
    tonaro::WaitMs(1250, true);
    const double used = tonaro::bench::processorSeconds() - before;
    std::printf("Processor time during a 1250 ms event wait: %.2f ms = %.2f %%   (target <= 2 %%)\n", used * 1000,
                used / 1.25 * 100);

    midi.ToggleMidiOut();
    return 0;
}
