#pragma once

#include "MidiPlatform.h"

#include <QPointer>
#include <QWidget>
#include <QString>
#include <cstdint>


namespace tonaro {

class MessageBoxes;

// The program's single MIDI output port and the shared sound settings.
// Every note of every exercise goes out through NoteOn; start-up, the
// settings dialog and Stop noise! open, close and restart the port here.
// A note is never switched off: closing the port is how the program
// silences ringing notes.
class Midi_interface
{
public:
    static inline const QString RefusalText = QStringLiteral("You must open the MIDI device first");

    Midi_interface(MidiPlatform &platform, MessageBoxes &boxes);

    // The shared state, zero until start-up gives it its defaults.
    std::int32_t MidiDeviceId = 0;
    bool MidiPortOpen = false;
    MidiHandle hMidiOut = 0;
    std::int16_t MidiChannel = 0;
    std::int16_t MidiVolume = 0;
    std::int16_t MidiInstrument = 0;

    // 1 on success, -1 after the failure has been reported.
    std::int16_t OpenMidiOut(std::int32_t deviceId);
    std::int16_t CloseMidiOut();
    void ToggleMidiOut();
    void ShowMidiError(const QString &operation, std::int16_t code);
    void SendShortMsg(std::int16_t status, std::int16_t data1, std::int16_t data2);
    void NoteOn(std::int16_t channel, std::int16_t note, std::int16_t velocity);
    void SelectInstrument(std::int16_t channel, std::int16_t program, std::int16_t bankMsb, std::int16_t bankLsb);

    // Close, reopen and select the instrument again: what Stop noise! and the
    // closing of the settings dialog do.
    void restart();
    // Plays the current settings' note on the shared channel and velocity.
    void playNote(int note) { NoteOn(MidiChannel, std::int16_t(note), MidiVolume); }

    MidiPlatform &platform() { return m_platform; }
    // The window the boxes are shown over.
    void setDialogParent(QWidget *parent) { m_parent = parent; }

private:
    MidiPlatform &m_platform;
    MessageBoxes &m_boxes;
    QPointer<QWidget> m_parent;
};

} // namespace tonaro
