#pragma once

#include "midi/MidiPlatform.h"

#include <QStringList>
#include <chrono>
#include <map>
#include <vector>

namespace tonaro {

// The test double of the MIDI platform: keeps every open, close and message
// with a steady-clock timestamp, plays no sound, and fails any of them with
// a chosen code on demand.
class RecordingMidiPlatform : public MidiPlatform
{
public:
    enum class Call { Open, Close, Send };

    struct Record {
        Call call;
        std::int32_t deviceId = 0;   // Open
        std::uint32_t message = 0;   // Send
        int result = 0;
        std::chrono::steady_clock::time_point time{};

        std::uint8_t status() const { return message & 0xFF; }
        std::uint8_t data1() const { return (message >> 8) & 0xFF; }
        std::uint8_t data2() const { return (message >> 16) & 0xFF; }
    };

    int outputDeviceCount() override { return int(m_names.size()); }
    QString deviceName(int deviceId) override { return m_names.value(deviceId); }
    int open(MidiHandle *handle, std::int32_t deviceId) override;
    int close(MidiHandle handle) override;
    int sendShortMessage(MidiHandle handle, std::uint32_t message) override;
    // "fault <code>": the boxes show the text the platform gives.
    QString errorText(int code) override { return QStringLiteral("fault %1").arg(code); }

    // Every later call of this kind fails with code (0 lifts the failure).
    void setFailure(Call call, int code) { m_failures[call] = code; }
    void setDeviceNames(const QStringList &names) { m_names = names; }

    const std::vector<Record> &records() const { return m_records; }
    std::vector<Record> notesOn() const; // the successful note-on messages only
    void clear() { m_records.clear(); }

private:
    int record(Call call, std::int32_t deviceId, std::uint32_t message, int result);

    QStringList m_names{QStringLiteral("Built-in synthesizer")}; // as on a system with no MIDI ports
    std::vector<Record> m_records;
    std::map<Call, int> m_failures;
    MidiHandle m_nextHandle = 0x100;
    MidiHandle m_openHandle = 0;
};

} // namespace tonaro
