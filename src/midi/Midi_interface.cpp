#include "Midi_interface.h"

#include "MidiMessages.h"
#include "shell/MessageBoxes.h"

namespace tonaro {

Midi_interface::Midi_interface(MidiPlatform &platform, MessageBoxes &boxes)
    : m_platform(platform)
    , m_boxes(boxes)
{
}

std::int16_t Midi_interface::OpenMidiOut(std::int32_t deviceId)
{
    const auto result = std::int16_t(m_platform.open(&hMidiOut, deviceId));
    if (result != 0) {
        ShowMidiError(QStringLiteral("Open"), result);
        return -1;
    }
    return 1;
}

std::int16_t Midi_interface::CloseMidiOut()
{
    const auto result = std::int16_t(m_platform.close(hMidiOut));
    if (result != 0) {
        ShowMidiError(QStringLiteral("Close"), result);
        return -1;
    }
    return 1;
}

void Midi_interface::ToggleMidiOut()
{
    if (!MidiPortOpen) {
        if (OpenMidiOut(MidiDeviceId) > 0)
            MidiPortOpen = true;
    } else {
        if (CloseMidiOut() > 0)
            MidiPortOpen = false;
    }
}

void Midi_interface::ShowMidiError(const QString &operation, std::int16_t code)
{
    // The service's texts are at most 128 characters, as its buffer holds.
    const QString text = m_platform.errorText(code).left(127);
    m_boxes.message(m_parent, QStringLiteral("Operation:") + operation + QStringLiteral("\r\n") + text);
}

void Midi_interface::SendShortMsg(std::int16_t status, std::int16_t data1, std::int16_t data2)
{
    if (!MidiPortOpen) {
        m_boxes.message(m_parent, RefusalText);
        return;
    }
    // A data byte above 127 would turn into a status byte on the wire.
    if (data1 < 0 || data1 > midi::MaxDataByte || data2 < 0 || data2 > midi::MaxDataByte) {
        ShowMidiError(QStringLiteral("ShortMsg"), std::int16_t(toCode(MidiResult::DataOutOfRange)));
        return;
    }
    const auto result = std::int16_t(m_platform.sendShortMessage(hMidiOut, midi::packShortMessage(status, data1, data2)));
    if (result != 0)
        ShowMidiError(QStringLiteral("ShortMsg"), result);
}

void Midi_interface::NoteOn(std::int16_t channel, std::int16_t note, std::int16_t velocity)
{
    SendShortMsg(std::int16_t(midi::NoteOnStatus + channel - 1), note, velocity);
}

void Midi_interface::SelectInstrument(std::int16_t channel, std::int16_t program, std::int16_t bankMsb, std::int16_t bankLsb)
{
    const auto controlChange = std::int16_t(midi::ControlChangeStatus + channel - 1);
    SendShortMsg(controlChange, midi::BankSelectMsb, bankMsb);
    SendShortMsg(controlChange, midi::BankSelectLsb, bankLsb);
    SendShortMsg(std::int16_t(midi::ProgramChangeStatus + channel - 1), program, 0);
}

void Midi_interface::restart()
{
    ToggleMidiOut();
    ToggleMidiOut();
    SelectInstrument(MidiChannel, MidiInstrument, 0, 0);
}

} // namespace tonaro
