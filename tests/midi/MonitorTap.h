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

    explicit MonitorTap(int sampleRate)
        : m_rate(sampleRate)
    {
    }
    ~MonitorTap() { stop(); }
    MonitorTap(const MonitorTap &) = delete;
    MonitorTap &operator=(const MonitorTap &) = delete;

    // May be called again after it failed.
    bool start(const QByteArray &server, const QByteArray &source)
    {
        stop();
        m_loop.reset(pa_threaded_mainloop_new());
        if (!m_loop || pa_threaded_mainloop_start(m_loop.get()) < 0)
            return false;
        Lock lock(m_loop.get());
        m_context.reset(pa_context_new(pa_threaded_mainloop_get_api(m_loop.get()), "Tonaro test recorder"));
        if (!m_context)
            return false;
        pa_context_set_state_callback(m_context.get(), &MonitorTap::onContextState, this);
        if (pa_context_connect(m_context.get(), server.constData(), PA_CONTEXT_NOFLAGS, nullptr) < 0
            || !waitUntil([this] { return readiness(pa_context_get_state(m_context.get())); }))
            return false;

        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, std::uint32_t(m_rate), 1};
        m_stream.reset(pa_stream_new(m_context.get(), "monitor", &format, nullptr));
        if (!m_stream)
            return false;
        pa_stream_set_state_callback(m_stream.get(), &MonitorTap::onStreamState, this);
        pa_stream_set_read_callback(m_stream.get(), &MonitorTap::onReadable, this);
        // Blocks of 2 ms travel as soon as the sink renders them. Without
        // ADJUST_LATENCY the recorder asks the sink for no latency of its
        // own, so the sink keeps the timing the synthesizer's stream set.
        constexpr auto Unset = std::uint32_t(-1);
        const pa_buffer_attr attributes{Unset, Unset, Unset, Unset, std::uint32_t(m_rate / 500 * sizeof(float))};
        return pa_stream_connect_record(m_stream.get(), source.constData(), &attributes, PA_STREAM_NOFLAGS) >= 0
            && waitUntil([this] { return readiness(pa_stream_get_state(m_stream.get())); });
    }

    void stop()
    {
        if (!m_loop)
            return;
        {
            Lock lock(m_loop.get());
            if (m_stream)
                pa_stream_disconnect(m_stream.get());
            if (m_context)
                pa_context_disconnect(m_context.get());
        }
        // With the loop stopped no callback can run while the members go.
        pa_threaded_mainloop_stop(m_loop.get());
        m_stream.reset();
        m_context.reset();
        m_loop.reset();
    }

    // Copies of what arrived so far; after stop(), of all that arrived.
    void take(std::vector<float> &samples, std::vector<Block> &blocks)
    {
        std::unique_ptr<Lock> lock = m_loop ? std::make_unique<Lock>(m_loop.get()) : nullptr;
        samples = m_samples;
        blocks = m_blocks;
    }

private:
    struct LoopDeleter {
        void operator()(pa_threaded_mainloop *loop) const { pa_threaded_mainloop_free(loop); }
    };
    struct ContextDeleter {
        void operator()(pa_context *context) const { pa_context_unref(context); }
    };
    struct StreamDeleter {
        void operator()(pa_stream *stream) const { pa_stream_unref(stream); }
    };

    class Lock
    {
    public:
        explicit Lock(pa_threaded_mainloop *loop)
            : m_loop(loop)
        {
            pa_threaded_mainloop_lock(m_loop);
        }
        ~Lock() { pa_threaded_mainloop_unlock(m_loop); }
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        pa_threaded_mainloop *m_loop;
    };

    // 1 when ready, -1 when failed, 0 while still under way.
    static int readiness(pa_context_state_t s) { return s == PA_CONTEXT_READY ? 1 : PA_CONTEXT_IS_GOOD(s) ? 0 : -1; }
    static int readiness(pa_stream_state_t s) { return s == PA_STREAM_READY ? 1 : PA_STREAM_IS_GOOD(s) ? 0 : -1; }

    template<typename Ready>
    bool waitUntil(Ready ready)
    {
        for (int state = ready();; state = ready()) {
            if (state != 0)
                return state > 0;
            pa_threaded_mainloop_wait(m_loop.get());
        }
    }

    static void onContextState(pa_context *, void *self) { static_cast<MonitorTap *>(self)->signal(); }
    static void onStreamState(pa_stream *, void *self) { static_cast<MonitorTap *>(self)->signal(); }
    void signal() { pa_threaded_mainloop_signal(m_loop.get(), 0); }

    static void onReadable(pa_stream *stream, std::size_t, void *self)
    {
        auto *tap = static_cast<MonitorTap *>(self);
        const auto arrived = std::chrono::steady_clock::now();
        const void *data = nullptr;
        std::size_t bytes = 0;
        while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &bytes) == 0 && bytes > 0) {
            const auto *values = static_cast<const float *>(data);
            tap->m_blocks.push_back({tap->m_samples.size(), arrived});
            // A hole in the recording (no data) is kept as silence.
            for (std::size_t i = 0; i < bytes / sizeof(float); ++i)
                tap->m_samples.push_back(values ? values[i] : 0.0f);
            pa_stream_drop(stream);
        }
    }

    const int m_rate;
    std::unique_ptr<pa_threaded_mainloop, LoopDeleter> m_loop;
    std::unique_ptr<pa_context, ContextDeleter> m_context;
    std::unique_ptr<pa_stream, StreamDeleter> m_stream;
    std::vector<float> m_samples;
    std::vector<Block> m_blocks;
};

} // namespace tonaro::test
