#pragma once

#include <memory>
#include <string>
#include <vector>

class RtMidiIn;

namespace tonaro {

class MidiInput;

// One open input of the system's MIDI service through RtMidi: a source port
// connected to a port of the program, or the program's own port that others
// connect to. Its messages arrive on RtMidi's thread; struck keys go on to
// the MidiInput. Deleting it closes it.
class MidiInputPort
{
public:
    enum class Service { Alsa, Jack };

    ~MidiInputPort();
    MidiInputPort(const MidiInputPort &) = delete;
    MidiInputPort &operator=(const MidiInputPort &) = delete;

    // The source of that name, or nothing when it has gone or the service
    // refuses. Nothing is thrown or shown.
    static std::unique_ptr<MidiInputPort> open(Service service, const std::string &source, MidiInput &input);
    // A port of the program's own, named name, that other programs connect to.
    static std::unique_ptr<MidiInputPort> openOwn(Service service, const std::string &name, MidiInput &input);
    // The readable ports the service lists, as RtMidi names them; empty
    // without the service.
    static std::vector<std::string> listedSources(RtMidiIn &lister);
    static std::unique_ptr<RtMidiIn> newAlsaClient();

    // Note-on with a velocity above 0: the one message that is a struck key.
    static bool isStruckKey(const std::vector<unsigned char> &message);

private:
    explicit MidiInputPort(MidiInput &input);
    bool listen();
    static void received(double delta, std::vector<unsigned char> *message, void *self);

    MidiInput &m_input;
    std::unique_ptr<RtMidiIn> m_client;
};

} // namespace tonaro
