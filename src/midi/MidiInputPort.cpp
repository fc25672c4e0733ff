#include "MidiInputPort.h"

#include "MidiInput.h"
#include "MidiMessages.h"
#include "RtMidiSupport.h"

#include <algorithm>

namespace tonaro {

namespace {

std::unique_ptr<RtMidiIn> newClient(MidiInputPort::Service service, rtmidi::ErrorRecord *errors)
{
    try {
        rtmidi::QuietMidiService quiet;
        const RtMidi::Api api = service == MidiInputPort::Service::Alsa ? RtMidi::LINUX_ALSA : RtMidi::UNIX_JACK;
        auto client = std::make_unique<RtMidiIn>(api, rtmidi::ClientName);
        client->setErrorCallback(&rtmidi::ErrorRecord::callback, errors);
        return client;
    } catch (const RtMidiError &) {
        return nullptr;
    }
}

// The record of errors that no one reads: RtMidi must not throw.
rtmidi::ErrorRecord g_ignored;

} // namespace

MidiInputPort::MidiInputPort(MidiInput &input)
    : m_input(input)
{
}

MidiInputPort::~MidiInputPort()
{
    if (m_client)
        m_client->cancelCallback();
}

std::unique_ptr<RtMidiIn> MidiInputPort::newAlsaClient()
{
    return newClient(Service::Alsa, &g_ignored);
}

std::vector<std::string> MidiInputPort::listedSources(RtMidiIn &lister)
{
    std::vector<std::string> names;
    const unsigned int count = lister.getPortCount();
    for (unsigned int i = 0; i < count; ++i) {
        std::string name = lister.getPortName(i);
        if (!name.empty())
            names.push_back(std::move(name));
    }
    return names;
}

bool MidiInputPort::isStruckKey(const std::vector<unsigned char> &message)
{
    return message.size() >= 3 && (message[0] & midi::StatusTypeMask) == midi::NoteOnStatus && message[2] > 0;
}

bool MidiInputPort::listen()
{
    // Clock, sensing and system-exclusive messages never reach the callback.
    m_client->ignoreTypes(true, true, true);
    m_client->setCallback(&MidiInputPort::received, this);
    return true;
}

std::unique_ptr<MidiInputPort> MidiInputPort::open(Service service, const std::string &source, MidiInput &input)
{
    rtmidi::ErrorRecord errors;
    std::unique_ptr<MidiInputPort> port(new MidiInputPort(input));
    port->m_client = newClient(service, &errors);
    if (!port->m_client)
        return nullptr;
    // Found by name in a fresh list: an index read a moment ago may mean
    // another port by now.
    const std::vector<std::string> names = listedSources(*port->m_client);
    const auto found = std::find(names.begin(), names.end(), source);
    if (found == names.end())
        return nullptr;
    port->listen();
    port->m_client->openPort(unsigned(found - names.begin()), rtmidi::ClientName);
    port->m_client->setErrorCallback(&rtmidi::ErrorRecord::callback, &g_ignored);
    if (errors.failed || !port->m_client->isPortOpen())
        return nullptr;
    return port;
}

std::unique_ptr<MidiInputPort> MidiInputPort::openOwn(Service service, const std::string &name, MidiInput &input)
{
    rtmidi::ErrorRecord errors;
    std::unique_ptr<MidiInputPort> port(new MidiInputPort(input));
    port->m_client = newClient(service, &errors);
    if (!port->m_client)
        return nullptr;
    port->listen();
    port->m_client->openVirtualPort(name);
    port->m_client->setErrorCallback(&rtmidi::ErrorRecord::callback, &g_ignored);
    if (errors.failed)
        return nullptr;
    return port;
}

void MidiInputPort::received(double, std::vector<unsigned char> *message, void *self)
{
    // RtMidi's own thread: only the hand-over happens here.
    if (!message || !isStruckKey(*message))
        return;
    auto *port = static_cast<MidiInputPort *>(self);
    port->m_input.handOver((*message)[1], MidiInput::Moment::clock::now(), port);
}

} // namespace tonaro
