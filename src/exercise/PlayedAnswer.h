#pragma once

#include "Catalogue.h"
#include "NoteRow.h"

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace tonaro {

// What notes played on a MIDI keyboard answer, read the way each window asks
// for them. A reading is the index of the answer button the notes stand for,
// WrongAnswer for notes that make a whole answer matching no button, or
// nothing while the notes make no answer (yet).
namespace played {

// An index no question ever has: judged, it is a wrong answer.
constexpr int WrongAnswer = -1;
using Reading = std::optional<int>;

constexpr int Octave = 12;

// Note recognition: the key of the note's pitch class.
Reading keyOf(std::span<const int> notes);
// Intervals: the distance of a pair, 0 to 12 semitones; a wider pair is no answer.
Reading intervalOf(std::span<const int> notes);
// Chords: the type whose pitch classes above its root are those of the notes
// above the lowest one, doublings ignored. A single pitch class is no chord.
Reading chordOf(std::span<const int> notes, std::span<const CatalogueEntry> chords);
// Scales: a run from a note to its octave whose steps are a scale's steps.
Reading scaleOf(std::span<const int> notes, std::span<const CatalogueEntry> scales);
// Harmony: the triad (by index) with the same pitch classes, in any
// inversion and octave. A single pitch class is no chord.
Reading triadOf(std::span<const int> notes, std::span<const NoteRow> triads);

} // namespace played

// Gathers played notes into one answer: a single note, a pair, notes struck
// together, or a rising run up to the octave, and reads them when complete.
// Times are passed in, so the reading needs no clock of its own.
class PlayedAnswer
{
public:
    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;
    using Reader = std::function<played::Reading(std::span<const int> notes)>;

    enum class Gesture {
        Single,        // every note is an answer of its own
        Pair,          // two notes, one after the other or together
        Struck,        // notes struck together: complete after StruckGap without another
        RisingOctave,  // each note above the one before, from a first note to its octave
    };

    // Notes closer than this belong to the same chord.
    static constexpr std::chrono::milliseconds StruckGap{150};

    PlayedAnswer(Gesture gesture, Reader reader);

    // Adds a note struck at that moment; the reading of an answer it
    // completes (for a chord: the one before it, when the gap was long enough).
    played::Reading add(int note, Moment struck);
    // A chord whose gap has passed by now is complete.
    played::Reading complete(Moment now);
    // When the notes gathered so far make a complete chord, if no further note comes.
    std::optional<Moment> deadline() const;
    void clear() { m_notes.clear(); }
    bool isEmpty() const { return m_notes.empty(); }

private:
    played::Reading finish();

    Gesture m_gesture;
    Reader m_reader;
    std::vector<int> m_notes;
    Moment m_last{};
};

} // namespace tonaro
