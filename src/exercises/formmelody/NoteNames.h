#pragma once

#include "midi/MidiMessages.h"

#include <array>

// Note recognition's note numbering and names.
namespace tonaro::melody {

constexpr int PitchClassCount = 12;
constexpr int OctaveCount = 10;
constexpr int MaxNotes = 10;
// A key in practice mode sounds its note in the 5th octave (middle C up).
constexpr int PracticeBaseNote = 60;

// The names Reveal writes, indexed by pitch class; the blank before "#" is
// there for C, D, F and G but not for A, and the answer texts keep it so.
constexpr std::array<const char *, PitchClassCount> NoteNames{
    "C", "C #", "D", "D #", "E", "F", "F #", "G", "G #", "A", "A#", "B"};

// The captions of the note boxes and the black keys.
constexpr std::array<const char *, PitchClassCount> KeyCaptions{
    "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};

// What a screen reader says for each key.
constexpr std::array<const char *, PitchClassCount> SpokenNames{
    "C", "C sharp", "D", "D sharp", "E", "F", "F sharp", "G", "G sharp", "A", "A sharp", "B"};

constexpr std::array<const char *, OctaveCount> OctaveCaptions{
    "1st", "2nd", "3rd", "4th", "5th", "6th", "7th", "8th", "9th", "10th"};

constexpr bool isBlackKey(int pitchClass)
{
    return pitchClass == 1 || pitchClass == 3 || pitchClass == 6 || pitchClass == 8 || pitchClass == 10;
}

// Octaves count from 1 ("1st"): the 5th octave starts at middle C.
constexpr int noteNumber(int octave, int pitchClass)
{
    return PitchClassCount * octave + pitchClass;
}

constexpr int pitchClassOf(int note)
{
    return note % PitchClassCount;
}

// The 10th octave runs past the last MIDI note: G# to B (128 to 131) sound
// an octave lower, so that no data byte above 127 reaches the device. The
// question keeps the drawn note, which has the same pitch class.
constexpr int playableNote(int note)
{
    return note > midi::MaxDataByte ? note - PitchClassCount : note;
}

static_assert(playableNote(127) == 127 && playableNote(131) == 119);
static_assert(pitchClassOf(playableNote(128)) == pitchClassOf(128));

} // namespace tonaro::melody
