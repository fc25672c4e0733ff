#include "RecordingMidiPlatform.h"

namespace tonaro {

int RecordingMidiPlatform::record(Call call, std::int32_t deviceId, std::uint32_t message, int result)
{
    m_records.push_back({call, deviceId, message, result, std::chrono::steady_clock::now()});
    return result;
}

int RecordingMidiPlatform::open(MidiHandle *handle, std::int32_t deviceId)
{
    int result = m_failures[Call::Open];
    if (result == 0 && (deviceId < -1 || deviceId >= m_names.size()))
        result = toCode(MidiResult::BadDeviceId);
    if (result == 0 && m_openHandle != 0)
        result = toCode(MidiResult::DeviceInUse);
    if (result == 0)
        *handle = m_openHandle = m_nextHandle++;
    return record(Call::Open, deviceId, 0, result);
}

int RecordingMidiPlatform::close(MidiHandle handle)
{
    int result = m_failures[Call::Close];
    if (result == 0 && (handle == 0 || handle != m_openHandle))
        result = toCode(MidiResult::InvalidHandle);
    if (result == 0)
        m_openHandle = 0;
    return record(Call::Close, 0, 0, result);
}

int RecordingMidiPlatform::sendShortMessage(MidiHandle handle, std::uint32_t message)
{
    int result = m_failures[Call::Send];
    if (result == 0 && (handle == 0 || handle != m_openHandle))
        result = toCode(MidiResult::InvalidHandle);
    return record(Call::Send, 0, message, result);
}

std::vector<RecordingMidiPlatform::Record> RecordingMidiPlatform::notesOn() const
{
    std::vector<Record> notes;
    for (const Record &r : m_records) {
        if (r.call == Call::Send && r.result == 0 && (r.status() & 0xF0) == 0x90)
            notes.push_back(r);
    }
    return notes;
}

} // namespace tonaro
