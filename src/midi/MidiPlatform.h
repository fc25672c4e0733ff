#pragma once

#include <QString>
#include <cstdint>

namespace tonaro {

using MidiHandle = std::uint32_t;

// Result codes of the MIDI platform layer. 0 is success; the texts a user
// reads live in MidiErrors.cpp.
enum class MidiResult : std::int16_t {
    Ok = 0,
    Error = 1,
    BadDeviceId = 2,
    DeviceInUse = 4,
    InvalidHandle = 5,
    NoMemory = 7,
    NoAudioOutput = 64,
    NoSoundFont = 65,
    DeviceVanished = 66,
    SendFailed = 67,
    DataOutOfRange = 68,
    NoMidiSystem = 69,
};

constexpr int toCode(MidiResult result) { return static_cast<int>(result); }

// The few calls through which the MIDI port reaches the platform's MIDI
// output service: device listing, open, close, one short message each, and
// the text for a result code. Device 0 is the built-in synthesizer; device
// id -1 (the "mapper") opens it too. Nothing throws across this interface.
class MidiPlatform
{
public:
    static constexpr int MaxNameLength = 31; // the capabilities record holds 32 bytes with the zero

    virtual ~MidiPlatform() = default;

    virtual int outputDeviceCount() = 0;
    // At most MaxNameLength characters; empty for an id that is out of range.
    virtual QString deviceName(int deviceId) = 0;
    virtual int open(MidiHandle *handle, std::int32_t deviceId) = 0;
    virtual int close(MidiHandle handle) = 0;
    virtual int sendShortMessage(MidiHandle handle, std::uint32_t message) = 0;
    virtual QString errorText(int code);
};

// Shortens a port name to what the capabilities record can hold and keeps
// control characters out of the lists that show it.
QString sanitizedDeviceName(const QString &name);

} // namespace tonaro
