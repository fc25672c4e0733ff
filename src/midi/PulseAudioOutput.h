#pragma once

#include "AudioOutput.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

struct pa_context;
struct pa_mainloop_api;
struct pa_stream;
struct pa_threaded_mainloop;
struct pa_time_event;
struct timeval;

namespace tonaro {

// A low-latency PulseAudio playback stream (PulseAudio itself, or PipeWire's
// PulseAudio server) that pulls its sound from an AudioSource in the
// stream's write callback. The stream keeps only a few milliseconds in the
// server's buffers, and pauses (corks) itself after half a second in which
// nothing sounded, so that an idle program is not woken hundreds of times a
// second to render silence (that costs a few per cent of a core); the next
// message wakes it again. Pausing soon costs nothing audible: a resumed
// stream has no stale sound queued, so its first note starts sooner than on
// a running one.
class PulseAudioOutput : public AudioOutput
{
public:
    PulseAudioOutput(AudioSource &source, Settings settings);
    ~PulseAudioOutput() override;
    PulseAudioOutput(const PulseAudioOutput &) = delete;
    PulseAudioOutput &operator=(const PulseAudioOutput &) = delete;

    bool start() override;
    bool isAlive() const override { return m_alive; }
    void wake() override;
    bool isPaused() const override { return m_paused; }
    Figures figures() override;
    Backend backend() const override { return Backend::PulseAudio; }

private:
    struct MainloopDeleter {
        void operator()(pa_threaded_mainloop *mainloop) const;
    };
    struct ContextDeleter {
        void operator()(pa_context *context) const;
    };
    struct StreamDeleter {
        void operator()(pa_stream *stream) const;
    };

    bool connectContext();
    // 1 when the stream is ready, -1 when it failed, 0 when it still waits
    // for its sink after the given patience.
    int connectStream(std::chrono::milliseconds patience);
    void dropConnection();
    template<typename Ready>
    bool waitFor(Ready ready);
    void writeSound(std::size_t bytes);
    void noteOnset(const float *samples, int frames);
    void pauseWhenSilent(int frames);
    void setBufferTime(std::chrono::milliseconds time);
    void shrinkWhenCalm();

    static void onContextState(pa_context *context, void *self);
    static void onStreamState(pa_stream *stream, void *self);
    static void onWritable(pa_stream *stream, std::size_t bytes, void *self);
    static void onUnderflow(pa_stream *stream, void *self);
    static void onBufferTimeSet(pa_stream *stream, int success, void *self);
    static void onImpatience(pa_mainloop_api *api, pa_time_event *event, const timeval *tv, void *self);
    static void onTimeout(pa_mainloop_api *api, pa_time_event *event, const timeval *tv, void *self);

    AudioSource &m_source;
    const Settings m_settings;
    std::unique_ptr<pa_threaded_mainloop, MainloopDeleter> m_mainloop;
    std::unique_ptr<pa_context, ContextDeleter> m_context;
    std::unique_ptr<pa_stream, StreamDeleter> m_stream;

    std::atomic<bool> m_alive = false;
    std::atomic<bool> m_paused = true;
    bool m_timedOut = false;
    bool m_impatient = false;
    bool m_priorityRaised = false;
    std::chrono::steady_clock::time_point m_lastUnderflow{};
    // False once a larger buffer asked for was not granted.
    bool m_adaptive = true;
    // While a growth is under way: the buffer time before it, and the
    // target length the server had granted then.
    std::chrono::milliseconds m_grownFrom{0};
    std::uint32_t m_lengthBefore = 0;
    bool m_wasSounding = false;
    long m_silentFrames = 0;
    Figures m_figures;
};

} // namespace tonaro
