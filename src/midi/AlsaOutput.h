#pragma once

#include "AudioOutput.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct _snd_pcm;

namespace tonaro {

// Plays through ALSA's `default` device directly, for a machine with no
// sound server. A thread of ours renders a period at a time and hands it to
// the device, which blocks until it has room; after half a second of silence
// the thread drops the stream and sleeps until the next message.
class AlsaOutput : public AudioOutput
{
public:
    AlsaOutput(AudioSource &source, Settings settings);
    ~AlsaOutput() override;
    AlsaOutput(const AlsaOutput &) = delete;
    AlsaOutput &operator=(const AlsaOutput &) = delete;

    bool start() override;
    bool isAlive() const override { return m_alive; }
    void wake() override;
    bool isPaused() const override { return m_paused; }
    Figures figures() override;
    Backend backend() const override { return Backend::Alsa; }

private:
    struct PcmDeleter {
        void operator()(_snd_pcm *pcm) const;
    };

    bool configure(std::chrono::milliseconds bufferTime);
    void run();
    bool playPeriod();
    bool recoverFrom(long error);
    void noteOnset(int frames);
    void paceByClock();
    void adaptBuffer();
    bool pauseWhenSilent();

    AudioSource &m_source;
    const Settings m_settings;
    std::unique_ptr<_snd_pcm, PcmDeleter> m_pcm;
    std::vector<float> m_block;
    long m_periodFrames = 0;
    std::thread m_thread;

    std::mutex m_mutex;
    std::condition_variable m_woken;
    bool m_stopping = false;
    bool m_wakeWanted = false;
    Figures m_figures; // under m_mutex

    std::atomic<bool> m_alive = false;
    std::atomic<bool> m_paused = true;
    // The thread's own.
    bool m_wasSounding = false;
    long m_silentFrames = 0;
    bool m_underflowed = false;
    std::chrono::steady_clock::time_point m_lastUnderflow{};
    // A device that plays nothing in real time (ALSA's null device) takes
    // every block at once; such a device is paced by the clock instead.
    std::chrono::steady_clock::time_point m_streamStart{};
    long long m_framesSinceStart = 0;
};

} // namespace tonaro
