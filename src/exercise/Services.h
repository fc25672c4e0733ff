#pragma once

namespace tonaro {

class Midi_interface;
class MessageBoxes;
class MidiInput;
class RandomSource;

// What an exercise window needs from the rest of the program, handed down
// by the main window (the real ones) or by a test (the doubles).
struct Services {
    Midi_interface &midi;
    MessageBoxes &boxes;
    RandomSource &random;
    // Keys played on MIDI keyboards; none where the program listens to none.
    MidiInput *input = nullptr;
};

} // namespace tonaro
