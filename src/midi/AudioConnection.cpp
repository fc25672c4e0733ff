#include "AudioConnection.h"

namespace tonaro {

namespace {

using namespace std::chrono_literals;
using Backend = AudioOutput::Backend;

// How often a live output is checked, and a lost one sought again.
constexpr auto CheckInterval = 250ms;
constexpr auto RetryInterval = 100ms;
// A sound server that restarts is back within a second or two. Until then
// ALSA is left alone after a server was lost: its default device may be
// the very card the server is about to take again.
constexpr auto ServerRestartTime = 3s;

} // namespace

AudioConnection::AudioConnection(AudioSource &source, AudioOutput::Settings settings, std::function<void()> reconnected)
    : m_source(source)
    , m_settings(settings)
    , m_reconnected(std::move(reconnected))
{
}

AudioConnection::~AudioConnection()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_asked.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

bool AudioConnection::connect()
{
    std::unique_ptr<AudioOutput> output = startAudioOutput(m_source, m_settings, {Backend::PipeWire, Backend::PulseAudio, Backend::Alsa});
    if (!output)
        return false;
    {
        std::lock_guard lock(m_mutex);
        m_output = std::move(output);
    }
    m_thread = std::thread([this] { seekWhileOpen(); });
    return true;
}

bool AudioConnection::isPlaying()
{
    std::lock_guard lock(m_mutex);
    return m_output && m_output->isAlive();
}

void AudioConnection::wake()
{
    {
        std::lock_guard lock(m_mutex);
        if (m_output && m_output->isAlive()) {
            m_output->wake();
            return;
        }
        m_wanted = true;
    }
    m_asked.notify_one();
}

AudioOutput *AudioConnection::output()
{
    std::lock_guard lock(m_mutex);
    return m_output.get();
}

int AudioConnection::reconnects()
{
    std::lock_guard lock(m_mutex);
    return m_reconnects;
}

std::vector<Backend> AudioConnection::backendsToTry() const
{
    if (m_lostBackend == Backend::Alsa || std::chrono::steady_clock::now() - m_lostAt >= ServerRestartTime)
        return {Backend::PipeWire, Backend::PulseAudio, Backend::Alsa};
    return {Backend::PipeWire, Backend::PulseAudio};
}

void AudioConnection::seekWhileOpen()
{
    AudioOutput::Settings settings = m_settings;
    settings.mayStartServer = false;
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        m_asked.wait_for(lock, m_output ? CheckInterval : RetryInterval, [this] { return m_stopping || m_wanted; });
        m_wanted = false;
        if (m_stopping || (m_output && m_output->isAlive()))
            continue;
        // The lost output goes first, outside the lock, so that only one
        // stream ever pulls from the source and wake() never waits for it.
        std::unique_ptr<AudioOutput> lost = std::move(m_output);
        lock.unlock();
        if (lost) {
            m_lostBackend = lost->backend();
            m_lostAt = std::chrono::steady_clock::now();
            lost.reset();
        }
        std::unique_ptr<AudioOutput> output = startAudioOutput(m_source, settings, backendsToTry());
        if (output)
            m_reconnected();
        lock.lock();
        if (output)
            ++m_reconnects;
        m_output = std::move(output);
    }
}

} // namespace tonaro
