#include "RecordingMidiPlatform.h"

#include "midi/MidiMessages.h"

namespace tonaro {

RecordingMidiPlatform::RecordingMidiPlatform(QStringList deviceNames)
    : m_names(std::move(deviceNames))
{
}

int RecordingMidiPlatform::resultFor(Call call)
{
    if (auto next = m_nextFailures.find(call); next != m_nextFailures.end()) {
        const int code = next->second;
        m_nextFailures.erase(next);
        return code;
    }
    if (auto failure = m_failures.find(call); failure != m_failures.end())
        return failure->second;
    return 0;
}

void RecordingMidiPlatform::record(Record r)
{
    r.time = std::chrono::steady_clock::now();
    m_records.push_back(r);
}

int RecordingMidiPlatform::outputDeviceCount()
{
    record({Call::DeviceCount});
    return int(m_names.size());
}

QString RecordingMidiPlatform::deviceName(int deviceId)
{
    record({Call::DeviceName, deviceId});
    if (deviceId < 0 || deviceId >= m_names.size())
        return {};
    return sanitizedDeviceName(m_names.at(deviceId));
}

int RecordingMidiPlatform::open(MidiHandle *handle, std::int32_t deviceId)
{
    int result = resultFor(Call::Open);
    if (result == 0 && (deviceId < -1 || deviceId >= m_names.size()))
        result = toCode(MidiResult::BadDeviceId);
    if (result == 0 && m_openHandle != 0)
        result = toCode(MidiResult::DeviceInUse);
    if (result == 0) {
        *handle = m_nextHandle++;
        m_openHandle = *handle;
        m_openDevice = deviceId;
    }
    record({Call::Open, deviceId, result == 0 ? *handle : 0, 0, result});
    return result;
}

int RecordingMidiPlatform::close(MidiHandle handle)
{
    int result = resultFor(Call::Close);
    if (result == 0 && (handle == 0 || handle != m_openHandle))
        result = toCode(MidiResult::InvalidHandle);
    if (result == 0)
        m_openHandle = 0;
    record({Call::Close, 0, handle, 0, result});
    return result;
}

int RecordingMidiPlatform::sendShortMessage(MidiHandle handle, std::uint32_t message)
{
    int result = resultFor(Call::Send);
    if (result == 0 && (handle == 0 || handle != m_openHandle))
        result = toCode(MidiResult::InvalidHandle);
    record({Call::Send, 0, handle, message, result});
    return result;
}

void RecordingMidiPlatform::setFailure(Call call, int code)
{
    if (code == 0)
        m_failures.erase(call);
    else
        m_failures[call] = code;
}

void RecordingMidiPlatform::failNext(Call call, int code)
{
    m_nextFailures[call] = code;
}

std::vector<RecordingMidiPlatform::Record> RecordingMidiPlatform::sent() const
{
    std::vector<Record> result;
    for (const Record &r : m_records) {
        if (r.call == Call::Send && r.result == 0)
            result.push_back(r);
    }
    return result;
}

std::vector<RecordingMidiPlatform::Record> RecordingMidiPlatform::notesOn() const
{
    std::vector<Record> result;
    for (const Record &r : sent()) {
        if ((r.status() & 0xF0) == 0x90)
            result.push_back(r);
    }
    return result;
}

} // namespace tonaro
