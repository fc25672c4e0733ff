#pragma once

#include <string>
#include <vector>

namespace tonaro {

// Which of the listed MIDI sources the program listens to: every one but
// those that would bring the program's own notes back as answers.
struct MidiInputSources {
    // The ports the program's output sends to now ("client:port 20:0").
    std::vector<std::string> outputsInUse;
    // The ALSA sequencer is read directly, so JACK's mirror of it is left out.
    bool alsaRead = false;

    // source as the service names it: "client:port" (JACK), with the
    // numbers after it on ALSA.
    bool wanted(const std::string &source) const;
};

} // namespace tonaro
