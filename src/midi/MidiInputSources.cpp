#include "MidiInputSources.h"

#include "RtMidiSupport.h"

#include <algorithm>

namespace tonaro {

namespace {

// The system's through ports echo whatever is sent to them, the program's
// own notes included.
constexpr const char *ThroughPort = "Midi Through";
// The bridge that shows the ALSA sequencer's ports in JACK.
constexpr const char *AlsaBridgeClient = "a2j";

std::string clientOf(const std::string &source)
{
    return source.substr(0, source.find(':'));
}

} // namespace

bool MidiInputSources::wanted(const std::string &source) const
{
    const std::string client = clientOf(source);
    const std::string own = rtmidi::ClientName;
    // The program's own clients: its output, and JACK's numbered copies of its name.
    if (client == own || client.rfind(own + "-", 0) == 0)
        return false;
    if (source.find(ThroughPort) != std::string::npos)
        return false;
    if (alsaRead && client == AlsaBridgeClient)
        return false;
    return std::find(outputsInUse.begin(), outputsInUse.end(), source) == outputsInUse.end();
}

} // namespace tonaro
