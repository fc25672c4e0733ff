#pragma once

#include <cstdint>

// The MIDI numbers the program uses, named once.
namespace tonaro::midi {

constexpr std::uint8_t NoteOffStatus = 0x80;
constexpr std::uint8_t NoteOnStatus = 0x90;
constexpr std::uint8_t ControlChangeStatus = 0xB0;
constexpr std::uint8_t ProgramChangeStatus = 0xC0;
constexpr std::uint8_t StatusTypeMask = 0xF0;
constexpr std::uint8_t ChannelMask = 0x0F;

constexpr std::uint8_t BankSelectMsb = 0;
constexpr std::uint8_t BankSelectLsb = 32;
constexpr std::uint8_t AllSoundOff = 120;
constexpr std::uint8_t AllNotesOff = 123;

constexpr int MaxDataByte = 127;
constexpr int DataBits = 7;
constexpr int ChannelCount = 16;

// Status + 256 x data1 + 65536 x data2, the packing of a short message.
constexpr std::uint32_t packShortMessage(int status, int data1, int data2)
{
    return std::uint32_t(status + 256 * data1 + 65536 * data2);
}

constexpr std::uint8_t PolyPressureStatus = 0xA0;
constexpr std::uint8_t ChannelPressureStatus = 0xD0;
constexpr std::uint8_t PitchBendStatus = 0xE0;
constexpr std::uint8_t SystemStatus = 0xF0;
constexpr std::uint8_t SysExStart = 0xF0;
constexpr std::uint8_t SysExEnd = 0xF7;
constexpr std::uint8_t TimeCodeQuarterFrame = 0xF1;
constexpr std::uint8_t SongPosition = 0xF2;
constexpr std::uint8_t SongSelect = 0xF3;
constexpr std::uint8_t FirstStatusByte = 0x80;

// One packed short message taken apart: status in bits 0-7, the data bytes
// in bits 8-15 and 16-23.
struct ShortMessage {
    std::uint8_t status = 0;
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;

    static constexpr ShortMessage unpack(std::uint32_t message)
    {
        return {std::uint8_t(message & 0xFF), std::uint8_t((message >> 8) & 0xFF), std::uint8_t((message >> 16) & 0xFF)};
    }

    constexpr std::uint8_t type() const { return status & StatusTypeMask; }
    constexpr int channel() const { return status & ChannelMask; }
    // A status byte first, then data bytes that fit in seven bits; a
    // system-exclusive message does not fit in a short message.
    constexpr bool isValid() const
    {
        return status >= FirstStatusByte && status != SysExStart && status != SysExEnd
            && data1 <= MaxDataByte && data2 <= MaxDataByte;
    }
    // The bytes that go on the wire: program change, channel pressure and
    // two system messages carry one data byte, the real-time messages none.
    constexpr int size() const
    {
        switch (type() == SystemStatus ? status : type()) {
        case ProgramChangeStatus:
        case ChannelPressureStatus:
        case TimeCodeQuarterFrame:
        case SongSelect:
            return 2;
        case SongPosition:
            return 3;
        default:
            return type() == SystemStatus ? 1 : 3;
        }
    }
};

} // namespace tonaro::midi
