// Timing of note recognition's questions with real waits, as the MIDI
// device sees them: the spacing of the notes of a 5-note question with a
// 250 ms delay, and the processor time that a 10-note question with 1000 ms
// gaps takes while it plays (the user is listening: it should be near nil).

#include "BenchSupport.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/formmelody.h"

#include <QApplication>
#include <QComboBox>
#include <QSlider>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

using namespace tonaro;
using namespace std::chrono;

namespace {

struct Bench : bench::RecordedWindow<formmelody> {
    // Asks one question of n notes with the given delay; the note-on times.
    std::vector<steady_clock::time_point> ask(int notes, int delayMs)
    {
        control<QComboBox>(QStringLiteral("nnotescombo"))->setCurrentIndex(notes - 1);
        control<QSlider>(QStringLiteral("slidermultinotes"))->setValue(delayMs);
        return RecordedWindow::ask();
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
    for (int q = 0; q < Questions; ++q)
        bench::addSpacingErrors(bench.ask(Notes, DelayMs), DelayMs, errors);
    std::printf("note spacing, %d questions of %d notes, %d ms delay: %zu gaps\n", Questions, Notes, DelayMs,
                errors.size());
    bench::printSpacingErrors(errors);

    const double cpuBefore = bench::processorSeconds();
    const auto wallBefore = steady_clock::now();
    const auto times = bench.ask(10, 1000);
    const double wall = duration<double>(steady_clock::now() - wallBefore).count();
    const double cpu = bench::processorSeconds() - cpuBefore;
    std::printf("10-note question, 1000 ms gaps: %zu notes in %.3f s, processor %.4f s = %.3f %% (target <= 2 %%)\n",
                times.size(), wall, cpu, 100 * cpu / wall);
    return 0;
}
