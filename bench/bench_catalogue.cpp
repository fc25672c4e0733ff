// Timing of the chord and scale windows' notes with real waits, as the MIDI
// device receives them: the spacing of arpeggio notes and of scale notes at
// a 250 ms interval time, and the processor time a 13-note chromatic scale
// takes while it plays (the user is listening: it should be near nil).

#include "exercise/RandomSource.h"
#include "exercise/WaitMs.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "midi/Midi_interface.h"
#include "midi/RecordingMidiPlatform.h"
#include "shell/MessageBoxes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QSlider>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <vector>

using namespace tonaro;
using namespace std::chrono;

namespace {

constexpr int Questions = 20;
constexpr int IntervalMs = 250;
constexpr int ChromaticScale = 8;

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// One window on the recorder, with the port open and new questions asked
// only by New.
template<typename Window>
struct Bench {
    RecordingMidiPlatform platform;
    RecordingMessageBoxes boxes;
    ClockRandomSource random;
    Midi_interface midi{platform, boxes};
    Services services{midi, boxes, random};
    Window window{services};

    Bench()
    {
        midi.MidiChannel = 1;
        midi.MidiVolume = 100;
        midi.ToggleMidiOut();
        window.Form_Load();
        window.show();
        control<QCheckBox>("autonewcheck")->setChecked(false);
    }

    template<typename T>
    T *control(const QString &name)
    {
        T *found = window.template findChild<T *>(name);
        if (!found) {
            std::printf("%s has no control %s\n", qPrintable(window.objectName()), qPrintable(name));
            std::exit(1);
        }
        return found;
    }
    void press(const QString &name) { control<QAbstractButton>(name)->click(); }

    // Asks one question; the times the device received its note-ons.
    std::vector<steady_clock::time_point> ask()
    {
        platform.clear();
        press(QStringLiteral("New"));
        std::vector<steady_clock::time_point> times;
        for (const auto &record : platform.notesOn())
            times.push_back(record.time);
        return times;
    }
};

// The gaps between the note-ons of Questions questions, less the interval.
template<typename Window>
std::vector<double> spacingErrors(Bench<Window> &bench, const char *label)
{
    std::vector<double> errors;
    for (int q = 0; q < Questions; ++q) {
        const auto times = bench.ask();
        for (std::size_t i = 1; i < times.size(); ++i) {
            const double spacing = duration<double, std::milli>(times[i] - times[i - 1]).count();
            errors.push_back(std::abs(spacing - IntervalMs));
            if (std::getenv("BENCH_VERBOSE"))
                std::printf("%s q%d gap%zu %+.3f\n", label, q, i, spacing - IntervalMs);
        }
    }
    std::sort(errors.begin(), errors.end());
    return errors;
}

void printSpacing(const char *what, const std::vector<double> &errors)
{
    if (errors.empty()) {
        std::printf("%s: no gaps recorded\n", what);
        return;
    }
    std::printf("%s, %d questions, %d ms interval: %zu gaps\n", what, Questions, IntervalMs, errors.size());
    std::printf("  median error %.3f ms, worst error %.3f ms (target worst <= 3 ms)\n", errors[errors.size() / 2],
                errors.back());
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    setWaitScale(1);

    {
        // Every chord type, played as an arpeggio: three to six notes each.
        Bench<Formchords> chords;
        chords.press(QStringLiteral("All"));
        chords.press(QStringLiteral("Arpeggiooption"));
        chords.control<QSlider>(QStringLiteral("slidermultinotes"))->setValue(IntervalMs);
        printSpacing("arpeggio note spacing", spacingErrors(chords, "arpeggio"));
    }

    Bench<Formscales> scales;
    scales.press(QStringLiteral("Allscales"));
    scales.press(QStringLiteral("Allmodes"));
    scales.control<QSlider>(QStringLiteral("sliderintervals"))->setValue(IntervalMs);
    printSpacing("scale note spacing", spacingErrors(scales, "scale"));

    // The chromatic scale alone: thirteen notes and thirteen waits.
    scales.press(QStringLiteral("Nonescales"));
    scales.press(QStringLiteral("scales_%1").arg(ChromaticScale));
    const double cpuBefore = processorSeconds();
    const auto wallBefore = steady_clock::now();
    const auto times = scales.ask();
    const double wall = duration<double>(steady_clock::now() - wallBefore).count();
    const double cpu = processorSeconds() - cpuBefore;
    std::printf("13-note chromatic scale, %d ms interval: %zu notes in %.3f s, processor %.4f s = %.3f %% "
                "(target <= 2 %%)\n",
                IntervalMs, times.size(), wall, cpu, 100 * cpu / wall);
    return 0;
}
