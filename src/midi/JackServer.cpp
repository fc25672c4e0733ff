#include "JackServer.h"


#include <jack/jack.h>
#include <jack/midiport.h>

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace tonaro {

namespace {

// The client that watches the server; the program's ports belong to others.
constexpr const char *WatcherName = "Tonaro watcher";

void ignoreJackMessage(const char *)
{
}

} // namespace

JackServer::JackServer()
{
    // libjack reports a missing server on the terminal; for this program
    // that is an ordinary state, not news.
    jack_set_error_function(&ignoreJackMessage);
    jack_set_info_function(&ignoreJackMessage);
}

JackServer::~JackServer()
{
    close();
}

std::string JackServer::socketPath()
{
    const char *name = std::getenv("JACK_DEFAULT_SERVER");
    return "/dev/shm/jack_" + std::string(name && *name ? name : "default") + "_" + std::to_string(getuid()) + "_0";
}

void JackServer::shutDown(void *self)
{
    static_cast<JackServer *>(self)->m_gone = true;
}

void JackServer::close()
{
    if (!m_client)
        return;
    jack_client_close(m_client);
    m_client = nullptr;
}

bool JackServer::running()
{
    struct stat info{};
    const bool socketThere = stat(socketPath().c_str(), &info) == 0 && S_ISSOCK(info.st_mode);
    if (m_client && (m_gone || !socketThere))
        close();
    if (!m_client && socketThere) {
        m_gone = false;
        jack_status_t status{};
        m_client = jack_client_open(WatcherName, JackNoStartServer, &status);
        if (m_client)
            jack_on_shutdown(m_client, &JackServer::shutDown, this);
    }
    return m_client != nullptr;
}

std::vector<std::string> JackServer::midiSources() const
{
    return midiPorts(JackPortIsOutput);
}

std::vector<std::string> JackServer::midiInputs() const
{
    return midiPorts(JackPortIsInput);
}

bool JackServer::connect(const std::string &source, const std::string &input)
{
    if (!m_client || m_gone)
        return false;
    const int result = jack_connect(m_client, source.c_str(), input.c_str());
    return result == 0 || result == EEXIST;
}

void JackServer::disconnect(const std::string &source, const std::string &input)
{
    if (m_client && !m_gone)
        jack_disconnect(m_client, source.c_str(), input.c_str());
}

std::vector<std::string> JackServer::midiPorts(unsigned long flags) const
{
    std::vector<std::string> names;
    if (!m_client || m_gone)
        return names;
    const char **ports = jack_get_ports(m_client, nullptr, JACK_DEFAULT_MIDI_TYPE, flags);
    if (!ports)
        return names;
    for (const char **port = ports; *port; ++port)
        names.emplace_back(*port);
    jack_free(ports);
    return names;
}

} // namespace tonaro
