// Timing of the chord and scale windows' notes with real waits, as the MIDI
// device receives them: the spacing of arpeggio notes and of scale notes at
// a 250 ms interval time, and the processor time a 13-note chromatic scale
// takes while it plays (the user is listening: it should be near nil).

#include "BenchSupport.h"
#include "exercise/WaitMs.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"

#include <QApplication>
#include <QSlider>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace tonaro;
using namespace std::chrono;

namespace {

constexpr int Questions = 20;
constexpr int IntervalMs = 250;
constexpr int ChromaticScale = 8;

template<typename Window>
using Bench = bench::RecordedWindow<Window>;

// The spacing of the note-ons of Questions questions.
template<typename Window>
void printSpacing(const char *what, Bench<Window> &bench)
{
    std::vector<double> errors;
    for (int q = 0; q < Questions; ++q)
        bench::addSpacingErrors(bench.ask(), IntervalMs, errors);
    std::printf("%s, %d questions, %d ms interval: %zu gaps\n", what, Questions, IntervalMs, errors.size());
    bench::printSpacingErrors(errors);
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
        printSpacing("arpeggio note spacing", chords);
    }

    Bench<Formscales> scales;
    scales.press(QStringLiteral("Allscales"));
    scales.press(QStringLiteral("Allmodes"));
    scales.control<QSlider>(QStringLiteral("sliderintervals"))->setValue(IntervalMs);
    printSpacing("scale note spacing", scales);

    // The chromatic scale alone: thirteen notes and thirteen waits.
    scales.press(QStringLiteral("Nonescales"));
    scales.press(QStringLiteral("scales_%1").arg(ChromaticScale));
    const double cpuBefore = bench::processorSeconds();
    const auto wallBefore = steady_clock::now();
    const auto times = scales.ask();
    const double wall = duration<double>(steady_clock::now() - wallBefore).count();
    const double cpu = bench::processorSeconds() - cpuBefore;
    std::printf("13-note chromatic scale, %d ms interval: %zu notes in %.3f s, processor %.4f s = %.3f %% "
                "(target <= 2 %%)\n",
                IntervalMs, times.size(), wall, cpu, 100 * cpu / wall);
    return 0;
}
