#include "PlayedAnswer.h"

#include <algorithm>
#include <bitset>
#include <cstdlib>

namespace tonaro {

namespace played {

namespace {

using PitchClasses = std::bitset<Octave>;

int pitchClass(int note)
{
    return ((note % Octave) + Octave) % Octave;
}

// The pitch classes of the notes, counted from the given note.
PitchClasses above(std::span<const int> notes, int lowest)
{
    PitchClasses set;
    for (int note : notes)
        set.set(std::size_t(pitchClass(note - lowest)));
    return set;
}

// A chord type's pitch classes above its root.
PitchClasses ofSteps(const StepList &steps)
{
    const NoteRow row = NoteRow::stacked(0, steps);
    return above(std::span<const int>(row.notes.data(), std::size_t(row.count)), 0);
}

} // namespace

Reading keyOf(std::span<const int> notes)
{
    if (notes.size() != 1)
        return std::nullopt;
    return pitchClass(notes.front());
}

Reading intervalOf(std::span<const int> notes)
{
    if (notes.size() != 2)
        return std::nullopt;
    const int size = std::abs(notes[1] - notes[0]);
    if (size > Octave)
        return std::nullopt;
    return size;
}

Reading chordOf(std::span<const int> notes, std::span<const CatalogueEntry> chords)
{
    if (notes.empty())
        return std::nullopt;
    const PitchClasses played = above(notes, *std::min_element(notes.begin(), notes.end()));
    if (played.count() < 2)
        return std::nullopt;
    for (std::size_t index = 0; index < chords.size(); ++index) {
        if (ofSteps(chords[index].steps) == played)
            return int(index);
    }
    return WrongAnswer;
}

Reading scaleOf(std::span<const int> notes, std::span<const CatalogueEntry> scales)
{
    if (notes.size() < 2 || notes.back() - notes.front() != Octave)
        return std::nullopt;
    for (std::size_t index = 0; index < scales.size(); ++index) {
        const StepList &steps = scales[index].steps;
        if (std::size_t(steps.count()) + 1 != notes.size())
            continue;
        bool same = true;
        for (int j = 0; j < steps.count() && same; ++j)
            same = notes[std::size_t(j + 1)] - notes[std::size_t(j)] == steps[j];
        if (same)
            return int(index);
    }
    return WrongAnswer;
}

Reading triadOf(std::span<const int> notes, std::span<const NoteRow> triads)
{
    const PitchClasses played = above(notes, 0);
    if (played.count() < 2)
        return std::nullopt;
    for (std::size_t index = 0; index < triads.size(); ++index) {
        const NoteRow &row = triads[index];
        if (above(std::span<const int>(row.notes.data(), std::size_t(row.count)), 0) == played)
            return int(index);
    }
    return WrongAnswer;
}

} // namespace played

PlayedAnswer::PlayedAnswer(Gesture gesture, Reader reader)
    : m_gesture(gesture)
    , m_reader(std::move(reader))
{
}

played::Reading PlayedAnswer::finish()
{
    const played::Reading reading = m_reader(m_notes);
    m_notes.clear();
    return reading;
}

played::Reading PlayedAnswer::add(int note, Moment struck)
{
    played::Reading reading;
    switch (m_gesture) {
    case Gesture::Single:
        m_notes.assign(1, note);
        return finish();
    case Gesture::Pair:
        m_notes.push_back(note);
        return m_notes.size() == 2 ? finish() : std::nullopt;
    case Gesture::Struck:
        // Notes held up in a wait that processes no events arrive together;
        // their own times still tell one chord from the next.
        if (!m_notes.empty() && struck - m_last >= StruckGap)
            reading = finish();
        m_notes.push_back(note);
        m_last = struck;
        return reading;
    case Gesture::RisingOctave:
        // A note not above the one before, or past the octave, starts afresh.
        if (!m_notes.empty() && (note <= m_notes.back() || note > m_notes.front() + played::Octave))
            m_notes.clear();
        m_notes.push_back(note);
        return m_notes.size() > 1 && note == m_notes.front() + played::Octave ? finish() : std::nullopt;
    }
    return reading;
}

played::Reading PlayedAnswer::complete(Moment now)
{
    if (m_gesture != Gesture::Struck || m_notes.empty() || now - m_last < StruckGap)
        return std::nullopt;
    return finish();
}

std::optional<PlayedAnswer::Moment> PlayedAnswer::deadline() const
{
    if (m_gesture != Gesture::Struck || m_notes.empty())
        return std::nullopt;
    return m_last + StruckGap;
}

} // namespace tonaro
