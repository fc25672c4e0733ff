#pragma once

#include "MidiInput.h"
#include "MidiInputPort.h"

#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class RtMidiIn;

namespace tonaro {

class JackServer;
struct MidiInputSources;

// The program's MIDI input, with no setup: every input port of the ALSA
// sequencer is opened through RtMidi, and one port of the program's own
// named "Tonaro" is offered that other programs connect to. When a JACK
// server is already running, the program has a "Tonaro" port there too,
// and every JACK MIDI source is connected to it: one client, woken once a
// period, however many keyboards. The lists are read again every PollInterval,
// so a keyboard plugged in later is listened to within two seconds and one
// unplugged is closed without a word. With no MIDI service at all there is
// simply no input.
class RtMidiInput : public MidiInput
{
    Q_OBJECT

public:
    static constexpr int PollInterval = 1000; // milliseconds
    static inline const std::string OwnPortName = "Tonaro";

    // outputsInUse: the ports the program's output sends to at the moment.
    explicit RtMidiInput(std::function<std::vector<std::string>()> outputsInUse = {}, QObject *parent = nullptr);
    ~RtMidiInput() override;

    // Opens the sources that appeared and closes those that went. Runs on
    // the timer; the first time just after the event loop starts.
    void refresh();

    // The sources listened to now, "alsa:" or "jack:" before each name.
    std::vector<std::string> openSources() const;
    bool hasOwnPort() const { return m_ownPort || m_jackPort; }

private:
    void refreshAlsa(const MidiInputSources &sources);
    void refreshJack(const MidiInputSources &sources);
    void openJackPort();
    bool alsaThere();

    std::function<std::vector<std::string>()> m_outputsInUse;
    QTimer m_poll;
    std::unique_ptr<RtMidiIn> m_alsaLister;
    std::unique_ptr<JackServer> m_jack;
    std::map<std::string, std::unique_ptr<MidiInputPort>> m_open;
    std::unique_ptr<MidiInputPort> m_ownPort;
    // The program's port on JACK, its full name, and the sources connected to it.
    std::unique_ptr<MidiInputPort> m_jackPort;
    std::string m_jackPortName;
    std::vector<std::string> m_jackConnected;
};

} // namespace tonaro
