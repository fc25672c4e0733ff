#pragma once

#include "MidiPlatform.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tonaro {

// One open output port of the system's MIDI service. Deleting it closes it.
class SystemMidiPort
{
public:
    virtual ~SystemMidiPort() = default;
    virtual MidiResult send(const std::uint8_t *bytes, std::size_t count) = 0;
};

// The system's MIDI output ports: the seam between the platform and the
// MIDI service (RtMidi on ALSA in the program, a fake in the tests).
class SystemMidiPorts
{
public:
    virtual ~SystemMidiPorts() = default;
    // The output ports as the service lists them now, each by a name that
    // tells it from the others; empty when the system has no MIDI service.
    virtual std::vector<std::string> portNames() = 0;
    // The name to show for a port of that list.
    virtual std::string displayName(const std::string &portName) { return portName; }
    // Opens the port of that name; DeviceVanished when it is no longer there.
    virtual MidiResult open(const std::string &portName, std::unique_ptr<SystemMidiPort> &port) = 0;
};

} // namespace tonaro
