#pragma once

#include "AudioOutput.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace tonaro {

// Keeps the synthesizer connected to a sound system for as long as the
// program runs. The first connection is made on the caller's thread, so
// that the caller learns when nothing can play. Afterwards a thread of its
// own notices when the output has gone (a sound server killed or restarted)
// and connects again as soon as a sound system answers: the port stays
// open, and the caller is never kept waiting for a connection.
class AudioConnection
{
public:
    // reconnected is called on the connection's thread when a new output starts
    // after one was lost, before it plays anything.
    AudioConnection(AudioSource &source, AudioOutput::Settings settings, std::function<void()> reconnected);
    ~AudioConnection();
    AudioConnection(const AudioConnection &) = delete;
    AudioConnection &operator=(const AudioConnection &) = delete;

    // PipeWire first (where it has a sink), then PulseAudio (PulseAudio
    // itself or PipeWire's PulseAudio server), then ALSA's default device.
    // False when none plays.
    bool connect();
    // True while an output plays.
    bool isPlaying();
    // Wakes the output after a message, or, when it has gone, asks for a
    // new one at once; never waits for the connection.
    void wake();
    // The output that plays now, for the benchmark's figures; null while
    // none does. It lives until the next reconnect.
    AudioOutput *output();
    int reconnects();

private:
    void seekWhileOpen();
    std::vector<AudioOutput::Backend> backendsToTry() const;

    AudioSource &m_source;
    const AudioOutput::Settings m_settings;
    const std::function<void()> m_reconnected;

    std::mutex m_mutex;
    std::condition_variable m_asked;
    std::unique_ptr<AudioOutput> m_output;
    bool m_stopping = false;
    bool m_wanted = false;
    int m_reconnects = 0;
    // The thread's own: what was lost, and when.
    AudioOutput::Backend m_lostBackend = AudioOutput::Backend::PulseAudio;
    std::chrono::steady_clock::time_point m_lostAt{};
    std::thread m_thread;
};

} // namespace tonaro
