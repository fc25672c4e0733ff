#pragma once

#include "SystemMidiPorts.h"

#include <memory>

class RtMidiOut;

namespace tonaro {

// The system's MIDI output ports through RtMidi, on the ALSA sequencer only:
// RtMidi's JACK backend crashes in openPort when no JACK server runs. Without
// an ALSA sequencer (no /dev/snd, say) the list is simply empty. RtMidi's
// errors come back as result codes through its error callback; nothing is
// thrown out of this class.
class RtMidiPorts : public SystemMidiPorts
{
public:
    RtMidiPorts();
    ~RtMidiPorts() override;

    std::vector<std::string> portNames() override;
    std::string displayName(const std::string &portName) override;
    MidiResult open(const std::string &portName, std::unique_ptr<SystemMidiPort> &port) override;

private:
    // The sequencer client that lists the ports, made on the first listing.
    std::unique_ptr<RtMidiOut> m_lister;
};

// RtMidi names an ALSA port "client:port client-number:port-number". What a
// user recognises is the port's own name when it repeats the client's, else
// both; the numbers go.
std::string displayNameOfAlsaPort(const std::string &portName);

} // namespace tonaro
