#include "RtMidiInput.h"

#include "JackServer.h"
#include "MidiInputSources.h"

#include <RtMidi.h>

#include <algorithm>
#include <unistd.h>

namespace tonaro {

namespace {

// The ALSA sequencer's device: without it no ALSA client is even tried.
constexpr const char *SequencerDevice = "/dev/snd/seq";

std::string keyOf(MidiInputPort::Service service, const std::string &source)
{
    return (service == MidiInputPort::Service::Alsa ? "alsa:" : "jack:") + source;
}

} // namespace

RtMidiInput::RtMidiInput(std::function<std::vector<std::string>()> outputsInUse, QObject *parent)
    : MidiInput(parent)
    , m_outputsInUse(std::move(outputsInUse))
    , m_jack(std::make_unique<JackServer>())
{
    m_poll.setInterval(PollInterval);
    connect(&m_poll, &QTimer::timeout, this, &RtMidiInput::refresh);
    m_poll.start();
    // The first look happens once the event loop runs, so that start-up
    // never waits for the MIDI service.
    QTimer::singleShot(0, this, &RtMidiInput::refresh);
}

RtMidiInput::~RtMidiInput()
{
    // The inputs go before the clients that found them.
    m_open.clear();
    m_ownPort.reset();
    m_jackPort.reset();
}

bool RtMidiInput::alsaThere()
{
    // A sequencer that appears later (a module loaded) is found at the next look.
    if (!m_alsaLister && access(SequencerDevice, F_OK) == 0)
        m_alsaLister = MidiInputPort::newAlsaClient();
    return m_alsaLister != nullptr;
}

void RtMidiInput::refresh()
{
    MidiInputSources sources;
    if (m_outputsInUse)
        sources.outputsInUse = m_outputsInUse();
    sources.alsaRead = alsaThere();
    refreshAlsa(sources);
    refreshJack(sources);
}

void RtMidiInput::refreshAlsa(const MidiInputSources &sources)
{
    if (!sources.alsaRead)
        return;
    if (!m_ownPort)
        m_ownPort = MidiInputPort::openOwn(MidiInputPort::Service::Alsa, OwnPortName, *this);
    const std::vector<std::string> listed = MidiInputPort::listedSources(*m_alsaLister);
    const std::string prefix = keyOf(MidiInputPort::Service::Alsa, {});
    for (auto open = m_open.begin(); open != m_open.end();) {
        const std::string source = open->first.substr(prefix.size());
        const bool stays = std::find(listed.begin(), listed.end(), source) != listed.end() && sources.wanted(source);
        open = stays ? std::next(open) : m_open.erase(open);
    }
    for (const std::string &source : listed) {
        const std::string key = keyOf(MidiInputPort::Service::Alsa, source);
        if (m_open.count(key) || !sources.wanted(source))
            continue;
        if (auto port = MidiInputPort::open(MidiInputPort::Service::Alsa, source, *this))
            m_open.emplace(key, std::move(port));
    }
}

void RtMidiInput::openJackPort()
{
    // RtMidi does not say under which client name JACK registered the port;
    // it is the one input that was not there before.
    const std::vector<std::string> before = m_jack->midiInputs();
    m_jackPort = MidiInputPort::openOwn(MidiInputPort::Service::Jack, OwnPortName, *this);
    if (!m_jackPort)
        return;
    const std::string suffix = ":" + OwnPortName;
    for (const std::string &name : m_jack->midiInputs()) {
        const bool ours = name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
        if (ours && std::find(before.begin(), before.end(), name) == before.end())
            m_jackPortName = name;
    }
}

void RtMidiInput::refreshJack(const MidiInputSources &sources)
{
    // A JACK server that went away takes the port and its connections with it.
    if (!m_jack->running()) {
        m_jackConnected.clear();
        m_jackPort.reset();
        m_jackPortName.clear();
        return;
    }
    if (!m_jackPort)
        openJackPort();
    if (m_jackPortName.empty())
        return;
    const std::vector<std::string> listed = m_jack->midiSources();
    std::vector<std::string> connected;
    for (const std::string &source : m_jackConnected) {
        const bool there = std::find(listed.begin(), listed.end(), source) != listed.end();
        if (there && sources.wanted(source))
            connected.push_back(source);
        else if (there)
            m_jack->disconnect(source, m_jackPortName);
    }
    for (const std::string &source : listed) {
        if (sources.wanted(source) && std::find(connected.begin(), connected.end(), source) == connected.end()
            && m_jack->connect(source, m_jackPortName))
            connected.push_back(source);
    }
    m_jackConnected = std::move(connected);
}

std::vector<std::string> RtMidiInput::openSources() const
{
    std::vector<std::string> keys;
    for (const auto &[key, port] : m_open)
        keys.push_back(key);
    for (const std::string &source : m_jackConnected)
        keys.push_back(keyOf(MidiInputPort::Service::Jack, source));
    return keys;
}

} // namespace tonaro
