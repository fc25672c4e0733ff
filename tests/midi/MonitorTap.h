#pragma once

// A record stream of the test's own on a sink's monitor, mono float,
// that keeps every sample and the steady-clock time each block of them
// arrived: with a null sink, a block reaches the monitor as the sink plays
// it, so the arrival of a sound is when a listener would hear it.

#include <QByteArray>
#include <pulse/pulseaudio.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace tonaro::test {

class MonitorTap
{
public:
    struct Block {
        std::size_t first; // index of the block's first sample
        std::chrono::steady_clock::time_point arrived;
    };
    struct Recording {
        std::vector<float> samples;
        std::vector<Block> blocks;
    };

    explicit MonitorTap(int sampleRate) : m_rate(sampleRate) {}
    ~MonitorTap() { stop(); }
    MonitorTap(const MonitorTap &) = delete;
    MonitorTap &operator=(const MonitorTap &) = delete;

    // May be called again after it failed.
    bool start(const QByteArray &server, const QByteArray &source)
    {
        stop();
        m_loop = pa_threaded_mainloop_new();
        if (!m_loop || pa_threaded_mainloop_start(m_loop) < 0)
            return false;
        // Unlocked again however this returns.
        pa_threaded_mainloop_lock(m_loop);
        const std::unique_ptr<pa_threaded_mainloop, decltype(&pa_threaded_mainloop_unlock)> locked(m_loop, &pa_threaded_mainloop_unlock);
        m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Tonaro test recorder");
        pa_context_set_state_callback(m_context, &MonitorTap::signal, m_loop);
        if (pa_context_connect(m_context, server.constData(), PA_CONTEXT_NOFLAGS, nullptr) < 0 || !waitUntilReady())
            return false;
        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, std::uint32_t(m_rate), 1};
        m_stream = pa_stream_new(m_context, "monitor", &format, nullptr);
        pa_stream_set_state_callback(m_stream, &MonitorTap::signal, m_loop);
        pa_stream_set_read_callback(m_stream, &MonitorTap::onReadable, this);
        // Blocks of 2 ms travel as soon as the sink renders them. Without
        // ADJUST_LATENCY the recorder asks the sink for no latency of its
        // own, so the sink keeps the timing the synthesizer's stream set.
        constexpr auto Unset = std::uint32_t(-1);
        const pa_buffer_attr attributes{Unset, Unset, Unset, Unset, std::uint32_t(m_rate / 500 * sizeof(float))};
        return pa_stream_connect_record(m_stream, source.constData(), &attributes, PA_STREAM_NOFLAGS) >= 0 && waitUntilReady();
    }

    void stop()
    {
        if (!m_loop)
            return;
        // With the loop stopped no callback can run while the rest goes.
        pa_threaded_mainloop_stop(m_loop);
        if (m_stream) {
            pa_stream_disconnect(m_stream);
            pa_stream_unref(m_stream);
        }
        if (m_context) {
            pa_context_disconnect(m_context);
            pa_context_unref(m_context);
        }
        pa_threaded_mainloop_free(m_loop);
        m_loop = nullptr, m_context = nullptr, m_stream = nullptr;
    }

    // A copy of what arrived so far; after stop(), of all that arrived.
    Recording take()
    {
        if (m_loop)
            pa_threaded_mainloop_lock(m_loop);
        Recording copy = m_recording;
        if (m_loop)
            pa_threaded_mainloop_unlock(m_loop);
        return copy;
    }

private:
    // Waits while the context, and the stream once there is one, are under
    // way: true when they are ready, false when one failed or a second
    // passed. A stream asked for on a PipeWire server whose session manager
    // is not up yet waits half a minute to be linked; asked again it is
    // linked at once.
    bool waitUntilReady()
    {
        pa_mainloop_api *api = pa_threaded_mainloop_get_api(m_loop);
        timeval until{};
        pa_timeval_add(pa_gettimeofday(&until), PA_USEC_PER_SEC);
        m_late = false;
        pa_time_event *timer = api->time_new(api, &until, [](pa_mainloop_api *, pa_time_event *, const timeval *, void *self) {
            static_cast<MonitorTap *>(self)->m_late = true;
            pa_threaded_mainloop_signal(static_cast<MonitorTap *>(self)->m_loop, 0);
        }, this);
        for (;;) {
            const pa_context_state_t context = pa_context_get_state(m_context);
            const pa_stream_state_t stream = m_stream ? pa_stream_get_state(m_stream) : PA_STREAM_READY;
            if (!PA_CONTEXT_IS_GOOD(context) || !PA_STREAM_IS_GOOD(stream) || m_late || (context == PA_CONTEXT_READY && stream == PA_STREAM_READY))
                break;
            pa_threaded_mainloop_wait(m_loop);
        }
        api->time_free(timer);
        return pa_context_get_state(m_context) == PA_CONTEXT_READY && (!m_stream || pa_stream_get_state(m_stream) == PA_STREAM_READY);
    }

    template<typename Object>
    static void signal(Object *, void *loop) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop *>(loop), 0); }

    static void onReadable(pa_stream *stream, std::size_t, void *self)
    {
        auto *tap = static_cast<MonitorTap *>(self);
        const auto arrived = std::chrono::steady_clock::now();
        const void *data = nullptr;
        std::size_t bytes = 0;
        while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &bytes) == 0 && bytes > 0) {
            tap->m_recording.blocks.push_back({tap->m_recording.samples.size(), arrived});
            // A hole in the recording (no data) is kept as silence.
            const auto *values = static_cast<const float *>(data);
            for (std::size_t i = 0; i < bytes / sizeof(float); ++i)
                tap->m_recording.samples.push_back(values ? values[i] : 0.0f);
            pa_stream_drop(stream);
        }
    }

    const int m_rate;
    bool m_late = false;
    pa_threaded_mainloop *m_loop = nullptr;
    pa_context *m_context = nullptr;
    pa_stream *m_stream = nullptr;
    Recording m_recording;
};

} // namespace tonaro::test
