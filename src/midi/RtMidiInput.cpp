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
    const bool jack = m_jack->running();

    // The program's own port lives on the ALSA sequencer, on JACK where
    // there is no sequencer; it is made first so that it keeps its plain name.
    if (m_ownPort && m_ownPortService == MidiInputPort::Service::Jack && (!jack || sources.alsaRead))
        m_ownPort.reset();
    if (!m_ownPort && (sources.alsaRead || jack)) {
        m_ownPortService = sources.alsaRead ? MidiInputPort::Service::Alsa : MidiInputPort::Service::Jack;
        m_ownPort = MidiInputPort::openOwn(m_ownPortService, OwnPortName, *this);
    }

    refreshService(MidiInputPort::Service::Alsa,
                   sources.alsaRead ? MidiInputPort::listedSources(*m_alsaLister) : std::vector<std::string>(), sources);
    // A JACK server that went away takes its inputs with it.
    refreshService(MidiInputPort::Service::Jack, jack ? m_jack->midiSources() : std::vector<std::string>(), sources);
}

void RtMidiInput::refreshService(MidiInputPort::Service service, const std::vector<std::string> &listed,
                                 const MidiInputSources &sources)
{
    const std::string prefix = keyOf(service, {});
    for (auto open = m_open.begin(); open != m_open.end();) {
        const bool ours = open->first.compare(0, prefix.size(), prefix) == 0;
        const std::string source = open->first.substr(prefix.size());
        const bool stays = !ours || (std::find(listed.begin(), listed.end(), source) != listed.end() && sources.wanted(source));
        open = stays ? std::next(open) : m_open.erase(open);
    }
    for (const std::string &source : listed) {
        const std::string key = keyOf(service, source);
        if (m_open.count(key) || !sources.wanted(source))
            continue;
        if (auto port = MidiInputPort::open(service, source, *this))
            m_open.emplace(key, std::move(port));
    }
}

std::vector<std::string> RtMidiInput::openSources() const
{
    std::vector<std::string> keys;
    for (const auto &[key, port] : m_open)
        keys.push_back(key);
    return keys;
}

} // namespace tonaro
