#pragma once

#include <QStringList>

namespace tonaro {

class RandomSource;

// The root list of the interval, chord, scale and harmony windows: "Random"
// (not in the harmony window) followed by "Fixed C" to "Fixed B".
namespace roots {

constexpr int FixedC = 60;          // middle C
constexpr int OctaveDownFrom = 66;  // F#: question roots from here on go an octave down

QStringList listItems(bool withRandom);

// The root an item of a list with "Random" stands for, 60 to 71: item k
// fixes 59 + k; item 0 reseeds and draws one, Int(r x 12 + 1) + 59.
int rootOfItem(int item, RandomSource &random);

// The tonic of an item of the harmony window's list, which has no "Random".
constexpr int tonicOfItem(int item) { return FixedC + item; }

// Question roots lie from 54 (F#) to 65 (F), so each pitch class keeps one
// octave and the highest chord stays within reach of every instrument.
constexpr int intoQuestionOctave(int root) { return root >= OctaveDownFrom ? root - 12 : root; }

} // namespace roots
} // namespace tonaro
