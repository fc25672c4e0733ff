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
constexpr int ChannelCount = 16;

// Status + 256 x data1 + 65536 x data2, the packing of a short message.
constexpr std::uint32_t packShortMessage(int status, int data1, int data2)
{
    return std::uint32_t(status + 256 * data1 + 65536 * data2);
}

} // namespace tonaro::midi
