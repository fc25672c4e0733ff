#include "SystemMidiPlatform.h"

#include "RtMidiPorts.h"
#include "MidiMessages.h"

namespace tonaro {

namespace {

constexpr int BuiltInSynthId = 0;

int code(MidiResult result)
{
    return toCode(result);
}

} // namespace

SystemMidiPlatform::SystemMidiPlatform(std::unique_ptr<BuiltInSynth> synth, std::unique_ptr<SystemMidiPorts> ports)
    : m_synth(std::move(synth))
    , m_ports(std::move(ports))
{
}

SystemMidiPlatform::~SystemMidiPlatform()
{
    // Leave no note hanging on an external instrument.
    for (auto &[handle, device] : m_open) {
        if (device.port)
            silence(*device.port);
    }
}

const std::vector<std::string> &SystemMidiPlatform::listedPorts()
{
    if (!m_listed) {
        m_portNames = m_ports->portNames();
        m_listed = true;
    }
    return m_portNames;
}

int SystemMidiPlatform::outputDeviceCount()
{
    m_listed = false;
    return 1 + int(listedPorts().size());
}

QString SystemMidiPlatform::deviceName(int deviceId)
{
    if (deviceId == BuiltInSynthId)
        return BuiltInSynthName;
    const auto &ports = listedPorts();
    if (deviceId < 1 || deviceId > int(ports.size()))
        return {};
    return sanitizedDeviceName(QString::fromStdString(m_ports->displayName(ports[deviceId - 1])));
}

bool SystemMidiPlatform::isOpen(std::int32_t deviceId, const std::string &portName) const
{
    for (const auto &[handle, device] : m_open) {
        if (portName.empty() ? !device.port && deviceId <= BuiltInSynthId : device.portName == portName)
            return true;
    }
    return false;
}

int SystemMidiPlatform::open(MidiHandle *handle, std::int32_t deviceId)
{
    const auto &ports = listedPorts();
    if (!handle || deviceId < MapperId || deviceId > std::int32_t(ports.size()))
        return code(MidiResult::BadDeviceId);
    OpenDevice device{deviceId, deviceId > BuiltInSynthId ? ports[deviceId - 1] : std::string(), nullptr};
    if (isOpen(deviceId, device.portName))
        return code(MidiResult::DeviceInUse);

    const MidiResult result = device.portName.empty() ? m_synth->open() : m_ports->open(device.portName, device.port);
    if (result != MidiResult::Ok)
        return code(result);
    *handle = m_nextHandle++;
    m_open.emplace(*handle, std::move(device));
    return code(MidiResult::Ok);
}

int SystemMidiPlatform::close(MidiHandle handle)
{
    const auto found = m_open.find(handle);
    if (found == m_open.end())
        return code(MidiResult::InvalidHandle);
    if (found->second.port)
        silence(*found->second.port);
    else
        m_synth->close();
    m_open.erase(found);
    return code(MidiResult::Ok);
}

int SystemMidiPlatform::sendShortMessage(MidiHandle handle, std::uint32_t message)
{
    const auto found = m_open.find(handle);
    if (found == m_open.end())
        return code(MidiResult::InvalidHandle);
    if (!found->second.port)
        return code(m_synth->send(message));
    const auto parsed = midi::ShortMessage::unpack(message);
    if (!parsed.isValid())
        return code(MidiResult::DataOutOfRange);
    const std::uint8_t bytes[] = {parsed.status, parsed.data1, parsed.data2};
    return code(found->second.port->send(bytes, std::size_t(parsed.size())));
}

void SystemMidiPlatform::silence(SystemMidiPort &port)
{
    // An external instrument keeps sounding after its port closes unless it
    // is told to stop; a failure here changes nothing for the close.
    for (int channel = 0; channel < midi::ChannelCount; ++channel) {
        const auto status = std::uint8_t(midi::ControlChangeStatus + channel);
        for (const std::uint8_t controller : {midi::AllSoundOff, midi::AllNotesOff}) {
            const std::uint8_t bytes[] = {status, controller, 0};
            port.send(bytes, sizeof bytes);
        }
    }
}

std::vector<std::string> SystemMidiPlatform::openPortNames() const
{
    std::vector<std::string> names;
    for (const auto &[handle, device] : m_open) {
        if (device.port)
            names.push_back(device.portName);
    }
    return names;
}

std::unique_ptr<MidiPlatform> createSystemMidiPlatform()
{
    return std::make_unique<SystemMidiPlatform>(std::make_unique<BuiltInSynth>(BuiltInSynth::Options{}),
                                                std::make_unique<RtMidiPorts>());
}

} // namespace tonaro
