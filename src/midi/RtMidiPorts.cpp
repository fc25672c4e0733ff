#include "RtMidiPorts.h"

#include "RtMidiSupport.h"

#include <algorithm>
#include <regex>

namespace tonaro {

namespace {

using rtmidi::ClientName;
using rtmidi::ErrorRecord;
using rtmidi::QuietMidiService;

// A new sequencer client, or none when the system has no sequencer. Its
// errors go to the record (or nowhere when there is none) instead of being
// thrown.
std::unique_ptr<RtMidiOut> newClient(ErrorRecord *errors = nullptr)
{
    try {
        QuietMidiService quiet;
        auto client = std::make_unique<RtMidiOut>(RtMidi::LINUX_ALSA, ClientName);
        client->setErrorCallback(&ErrorRecord::callback, errors);
        return client;
    } catch (const RtMidiError &) {
        return nullptr;
    }
}

class RtMidiPort : public SystemMidiPort
{
public:
    RtMidiPort() { m_client = newClient(&m_errors); }

    bool open(unsigned int index)
    {
        if (!m_client)
            return false;
        m_client->openPort(index, ClientName);
        return !m_errors.failed && m_client->isPortOpen();
    }

    MidiResult send(const std::uint8_t *bytes, std::size_t count) override
    {
        m_errors.failed = false;
        m_client->sendMessage(bytes, count);
        return m_errors.failed ? MidiResult::SendFailed : MidiResult::Ok;
    }

private:
    ErrorRecord m_errors;
    std::unique_ptr<RtMidiOut> m_client;
};

} // namespace

RtMidiPorts::RtMidiPorts() = default;
RtMidiPorts::~RtMidiPorts() = default;

std::vector<std::string> RtMidiPorts::portNames()
{
    // Made afresh until a sequencer is there, so that one that appears later
    // (a module loaded) is found the next time the list is read.
    if (!m_lister)
        m_lister = newClient();
    if (!m_lister)
        return {};
    std::vector<std::string> names;
    const unsigned int count = m_lister->getPortCount();
    for (unsigned int i = 0; i < count; ++i) {
        std::string name = m_lister->getPortName(i);
        if (!name.empty())
            names.push_back(std::move(name));
    }
    return names;
}

std::string RtMidiPorts::displayName(const std::string &portName)
{
    return displayNameOfAlsaPort(portName);
}

MidiResult RtMidiPorts::open(const std::string &portName, std::unique_ptr<SystemMidiPort> &port)
{
    // The port is found by its name in a fresh list: ports come and go, and
    // an index read when the settings dialog listed them may now mean
    // another port or none.
    const std::vector<std::string> names = portNames();
    const auto found = std::find(names.begin(), names.end(), portName);
    if (found == names.end())
        return MidiResult::DeviceVanished;
    auto opened = std::make_unique<RtMidiPort>();
    if (!opened->open(unsigned(found - names.begin())))
        return MidiResult::DeviceVanished;
    port = std::move(opened);
    return MidiResult::Ok;
}

std::string displayNameOfAlsaPort(const std::string &portName)
{
    static const std::regex alsaName(R"(^(.*?):(.*) \d+:\d+$)");
    std::smatch parts;
    if (!std::regex_match(portName, parts, alsaName))
        return portName;
    const std::string client = parts[1];
    const std::string port = parts[2];
    if (port.empty())
        return client;
    return port.compare(0, client.size(), client) == 0 ? port : client + ": " + port;
}

} // namespace tonaro
