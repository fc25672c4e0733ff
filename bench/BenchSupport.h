#pragma once

// What the benchmarks share: the process's processor time, and one exercise
// window on the MIDI recorder with its port open, whose note-ons carry the
// times the device received them.

#include "exercise/RandomSource.h"
#include "exercise/Services.h"
#include "midi/Midi_interface.h"
#include "RecordingMidiPlatform.h"
#include "RecordingMessageBoxes.h"
#include "shell/MessageBoxes.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <vector>

namespace tonaro::bench {

inline double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Adds how far each gap between successive times is from intervalMs.
inline void addSpacingErrors(const std::vector<std::chrono::steady_clock::time_point> &times, double intervalMs,
                             std::vector<double> &errors)
{
    for (std::size_t i = 1; i < times.size(); ++i) {
        const double spacing = std::chrono::duration<double, std::milli>(times[i] - times[i - 1]).count();
        errors.push_back(std::abs(spacing - intervalMs));
        if (std::getenv("BENCH_VERBOSE"))
            std::printf("gap %zu %+.3f ms\n", i, spacing - intervalMs);
    }
}

// Prints the median and the worst of the errors against the 3 ms target.
inline void printSpacingErrors(std::vector<double> errors)
{
    if (errors.empty()) {
        std::printf("  no gaps recorded\n");
        return;
    }
    std::sort(errors.begin(), errors.end());
    std::printf("  median error %.3f ms, worst error %.3f ms (target worst <= 3 ms)\n", errors[errors.size() / 2],
                errors.back());
}

// Auto NEW is off: questions are asked only by New.
template<typename Window>
struct RecordedWindow {
    RecordingMidiPlatform platform;
    RecordingMessageBoxes boxes;
    ClockRandomSource random;
    Midi_interface midi{platform, boxes};
    Services services{midi, boxes, random};
    Window window{services};

    RecordedWindow()
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
    std::vector<std::chrono::steady_clock::time_point> ask()
    {
        platform.clear();
        press(QStringLiteral("New"));
        std::vector<std::chrono::steady_clock::time_point> times;
        for (const auto &record : platform.notesOn())
            times.push_back(record.time);
        return times;
    }
};

} // namespace tonaro::bench
