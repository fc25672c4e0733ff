#pragma once

#include "BuiltInSynth.h"
#include "MidiPlatform.h"
#include "SystemMidiPorts.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tonaro {

// The MIDI platform of the program: device 0 (and -1, the mapper) is the
// built-in synthesizer, devices 1 to n are the system's MIDI output ports in
// the order the system lists them. Handles are this class's own numbers.
class SystemMidiPlatform : public MidiPlatform
{
public:
    static inline const QString BuiltInSynthName = QStringLiteral("Built-in synthesizer");
    static constexpr std::int32_t MapperId = -1;

    SystemMidiPlatform(std::unique_ptr<BuiltInSynth> synth, std::unique_ptr<SystemMidiPorts> ports);
    ~SystemMidiPlatform() override;

    // Lists the system's ports afresh: the settings dialog reads the list at
    // every opening, and ports come and go.
    int outputDeviceCount() override;
    QString deviceName(int deviceId) override;
    int open(MidiHandle *handle, std::int32_t deviceId) override;
    int close(MidiHandle handle) override;
    int sendShortMessage(MidiHandle handle, std::uint32_t message) override;

    BuiltInSynth &builtInSynth() { return *m_synth; }
    // The system ports open for output now: the MIDI input leaves them out,
    // so that the program's own notes never come back as answers.
    std::vector<std::string> openPortNames() const;

private:
    struct OpenDevice {
        std::int32_t deviceId = 0;
        std::string portName;                 // empty for the built-in synthesizer
        std::unique_ptr<SystemMidiPort> port; // none for the built-in synthesizer
    };

    const std::vector<std::string> &listedPorts();
    bool isOpen(std::int32_t deviceId, const std::string &portName) const;
    static void silence(SystemMidiPort &port);

    std::unique_ptr<BuiltInSynth> m_synth;
    std::unique_ptr<SystemMidiPorts> m_ports;
    std::vector<std::string> m_portNames;
    bool m_listed = false;
    std::map<MidiHandle, OpenDevice> m_open;
    MidiHandle m_nextHandle = 1;
};

// The platform the program runs on. Starts loading the built-in
// synthesizer's SoundFont in the background and returns at once.
std::unique_ptr<MidiPlatform> createSystemMidiPlatform();

} // namespace tonaro
