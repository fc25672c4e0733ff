#pragma once

#include "midi/MidiInput.h"

#include <chrono>

namespace tonaro::test {

// The MIDI input double: a test strikes keys itself. strike() delivers at
// once, as if the user-interface thread had just taken the note from its
// queue; handOver() (from any thread) goes through the queue as the real
// input does.
class PlayingMidiInput : public MidiInput
{
public:
    static Moment now() { return std::chrono::steady_clock::now(); }

    void strike(int note, Moment at = now()) { emit notePlayed(note, at); }
    void strike(std::initializer_list<int> notes)
    {
        for (int note : notes)
            strike(note);
    }
};

} // namespace tonaro::test
