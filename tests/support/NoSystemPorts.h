#pragma once

#include "midi/SystemMidiPorts.h"

namespace tonaro::test {

// A system without MIDI ports: the platform has the built-in synthesizer only.
struct NoSystemPorts : SystemMidiPorts {
    std::vector<std::string> portNames() override { return {}; }
    MidiResult open(const std::string &, std::unique_ptr<SystemMidiPort> &) override { return MidiResult::DeviceVanished; }
};

} // namespace tonaro::test
