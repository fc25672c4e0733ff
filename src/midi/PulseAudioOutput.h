#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>

struct pa_context;
struct pa_mainloop_api;
struct pa_stream;
struct pa_threaded_mainloop;
struct pa_time_event;
struct timeval;

namespace tonaro {

// What an audio output pulls its sound from, on the output's own thread.
class AudioSource
{
public:
    virtual ~AudioSource() = default;
    virtual void render(float *interleavedStereo, int frames) = 0;
    // False once every note has died away, so that the output may pause.
    virtual bool isSounding() = 0;
};

// A low-latency PulseAudio playback stream that pulls its sound from an
// AudioSource in the stream's write callback. The stream keeps only about
// ten milliseconds in the server's buffers, and pauses (corks) itself after
// half a second in which nothing sounded, so that an idle program is not
// woken hundreds of times a second to render silence (that costs a few
// per cent of a core); the next message wakes it again. Pausing soon costs
// nothing audible: a resumed stream has no stale sound queued, so its first
// note starts sooner than on a running one.
class PulseAudioOutput
{
public:
    struct Settings {
        int sampleRate = 44100;
        std::chrono::milliseconds bufferTime{10};
        std::chrono::milliseconds connectTimeout{2000};
        std::chrono::milliseconds pauseAfterSilence{500};
    };

    // What the benchmark measures the output by.
    struct Figures {
        int underflows = 0;
        int pauses = 0;
        int resumes = 0;
        // When the first block that sounded after a silent one was handed to
        // the server, and how long its first sound then waited in the
        // buffers until the sink played it.
        std::chrono::steady_clock::time_point onsetWritten{};
        std::chrono::microseconds onsetLatency{0};
    };

    PulseAudioOutput(AudioSource &source, Settings settings);
    ~PulseAudioOutput();
    PulseAudioOutput(const PulseAudioOutput &) = delete;
    PulseAudioOutput &operator=(const PulseAudioOutput &) = delete;

    // Connects to the sound server and opens the stream, paused. False when
    // no server answered within the connect timeout or the stream failed.
    bool start();
    // False once the server has gone away or refused the stream.
    bool isAlive() const { return m_alive; }
    // Resumes a paused stream and restarts the silence count. Call it after
    // every message to the source, so that a new note is never left unheard.
    void wake();
    bool isPaused() const { return m_paused; }
    Figures figures();

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
    bool connectStream();
    template<typename Ready>
    bool waitFor(Ready ready);
    void writeSound(std::size_t bytes);
    void noteOnset(const float *samples, int frames);
    void pauseWhenSilent(int frames);

    static void onContextState(pa_context *context, void *self);
    static void onStreamState(pa_stream *stream, void *self);
    static void onWritable(pa_stream *stream, std::size_t bytes, void *self);
    static void onUnderflow(pa_stream *stream, void *self);
    static void onTimeout(pa_mainloop_api *api, pa_time_event *event, const timeval *tv, void *self);

    AudioSource &m_source;
    const Settings m_settings;
    std::unique_ptr<pa_threaded_mainloop, MainloopDeleter> m_mainloop;
    std::unique_ptr<pa_context, ContextDeleter> m_context;
    std::unique_ptr<pa_stream, StreamDeleter> m_stream;

    std::atomic<bool> m_alive = false;
    std::atomic<bool> m_paused = true;
    bool m_timedOut = false;
    bool m_wasSounding = false;
    long m_silentFrames = 0;
    Figures m_figures;
};

} // namespace tonaro
