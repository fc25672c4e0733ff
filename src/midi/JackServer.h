#pragma once

#include <atomic>
#include <string>
#include <vector>

typedef struct _jack_client jack_client_t;

namespace tonaro {

// A JACK server that is already running, reached without ever starting one:
// RtMidi's JACK code must not be touched unless this says a server is
// there. Before a client is tried, the server's socket has to exist, so a
// machine without JACK costs one look at a folder and leaves no file behind.
class JackServer
{
public:
    JackServer();
    ~JackServer();
    JackServer(const JackServer &) = delete;
    JackServer &operator=(const JackServer &) = delete;

    // Connects when a server runs and notices one that went away. True while
    // a server is there.
    bool running();
    // The MIDI outputs of the server's clients, "client:port" each.
    std::vector<std::string> midiSources() const;
    // The MIDI inputs, the program's own among them.
    std::vector<std::string> midiInputs() const;
    // Connects a source to an input (true when they are connected after), or
    // takes the connection away.
    bool connect(const std::string &source, const std::string &input);
    void disconnect(const std::string &source, const std::string &input);

    // Where jackd puts the socket of the server that clients of this
    // process talk to (JACK_DEFAULT_SERVER, or "default").
    static std::string socketPath();

private:
    void close();
    std::vector<std::string> midiPorts(unsigned long flags) const;
    static void shutDown(void *self);

    jack_client_t *m_client = nullptr;
    std::atomic<bool> m_gone{false};
};

} // namespace tonaro
