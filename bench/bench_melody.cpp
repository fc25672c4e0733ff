// Timing of note recognition's questions with real waits, as the MIDI
// device sees them: the spacing of the notes of a 5-note question with a
// 250 ms delay, and the processor time that a 10-note question with 1000 ms
// gaps takes while it plays (the user is listening: it should be near nil).

#include "exercise/RandomSource.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/formmelody.h"
#include "midi/Midi_interface.h"
#include "midi/RecordingMidiPlatform.h"
#include "shell/MessageBoxes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QSlider>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>

using namespace tonaro;
using namespace std::chrono;

namespace {

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

struct Bench {
    RecordingMidiPlatform platform;
    RecordingMessageBoxes boxes;
    ClockRandomSource random;
    Midi_interface midi{platform, boxes};
    Services services{midi, boxes, random};
    formmelody window{services};

    Bench()
    {
        midi.MidiChannel = 1;
        midi.MidiVolume = 100;
        midi.ToggleMidiOut();
        window.Form_Load();
        window.show();
        window.findChild<QCheckBox *>(QStringLiteral("autonewcheck"))->setChecked(false);
    }

    // Asks one question of n notes with the given delay; the note-on times.
    std::vector<steady_clock::time_point> ask(int notes, int delayMs)
    {
        window.findChild<QComboBox *>(QStringLiteral("nnotescombo"))->setCurrentIndex(notes - 1);
        window.findChild<QSlider *>(QStringLiteral("slidermultinotes"))->setValue(delayMs);
        platform.clear();
        window.findChild<QAbstractButton *>(QStringLiteral("New"))->click();
        std::vector<steady_clock::time_point> times;
        for (const auto &record : platform.notesOn())
            times.push_back(record.time);
        return times;
    }
};

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    setWaitScale(1);
    Bench bench;

    constexpr int Questions = 20, Notes = 5, DelayMs = 250;
    std::vector<double> errors;
    for (int q = 0; q < Questions; ++q) {
        const auto times = bench.ask(Notes, DelayMs);
        for (std::size_t i = 1; i < times.size(); ++i) {
            const double spacing = duration<double, std::milli>(times[i] - times[i - 1]).count();
            errors.push_back(std::abs(spacing - DelayMs));
            if (std::getenv("BENCH_VERBOSE"))
                std::printf("q%d gap%zu %+.3f\n", q, i, spacing - DelayMs);
        }
    }
    std::sort(errors.begin(), errors.end());
    std::printf("note spacing, %d questions of %d notes, %d ms delay: %zu gaps\n", Questions, Notes, DelayMs,
                errors.size());
    std::printf("  median error %.3f ms, worst error %.3f ms (target <= 3 ms)\n", errors[errors.size() / 2],
                errors.back());

    const double cpuBefore = processorSeconds();
    const auto wallBefore = steady_clock::now();
    const auto times = bench.ask(10, 1000);
    const double wall = duration<double>(steady_clock::now() - wallBefore).count();
    const double cpu = processorSeconds() - cpuBefore;
    std::printf("10-note question, 1000 ms gaps: %zu notes in %.3f s, processor %.4f s = %.3f %% (target <= 2 %%)\n",
                times.size(), wall, cpu, 100 * cpu / wall);
    return 0;
}
