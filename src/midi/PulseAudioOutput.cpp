#include "PulseAudioOutput.h"

#include <pulse/pulseaudio.h>

#include <algorithm>

namespace tonaro {

namespace {

constexpr int ChannelCount = 2;
constexpr std::size_t FrameBytes = ChannelCount * sizeof(float);
// How long a new stream may wait for its sink before it is asked for again;
// a server that is not starting links it within milliseconds.
constexpr std::chrono::milliseconds FirstStreamPatience{250};

// The threaded mainloop's lock, held for one scope.
class MainloopLock
{
public:
    explicit MainloopLock(pa_threaded_mainloop *mainloop)
        : m_mainloop(mainloop)
    {
        pa_threaded_mainloop_lock(m_mainloop);
    }
    ~MainloopLock() { pa_threaded_mainloop_unlock(m_mainloop); }
    MainloopLock(const MainloopLock &) = delete;
    MainloopLock &operator=(const MainloopLock &) = delete;

private:
    pa_threaded_mainloop *m_mainloop;
};

// Operations whose completion nobody waits for.
void release(pa_operation *operation)
{
    if (operation)
        pa_operation_unref(operation);
}

std::uint32_t bytesFor(std::chrono::milliseconds time, int sampleRate)
{
    return std::uint32_t(time.count() * sampleRate / 1000) * FrameBytes;
}

// A small target length with ADJUST_LATENCY makes the server run the sink
// with a short buffer too; the server asks for data every quarter of it,
// and a note starts playing on the next request.
pa_buffer_attr bufferAttributes(std::chrono::milliseconds time, int sampleRate)
{
    const std::uint32_t target = bytesFor(time, sampleRate);
    return {std::uint32_t(-1), target, std::uint32_t(-1), target / 4, std::uint32_t(-1)};
}

} // namespace

void PulseAudioOutput::MainloopDeleter::operator()(pa_threaded_mainloop *mainloop) const
{
    pa_threaded_mainloop_free(mainloop);
}

void PulseAudioOutput::ContextDeleter::operator()(pa_context *context) const
{
    pa_context_unref(context);
}

void PulseAudioOutput::StreamDeleter::operator()(pa_stream *stream) const
{
    pa_stream_unref(stream);
}

PulseAudioOutput::PulseAudioOutput(AudioSource &source, Settings settings)
    : m_source(source)
    , m_settings(settings)
{
}

PulseAudioOutput::~PulseAudioOutput()
{
    if (!m_mainloop)
        return;
    {
        MainloopLock lock(m_mainloop.get());
        if (m_stream)
            pa_stream_disconnect(m_stream.get());
        if (m_context)
            pa_context_disconnect(m_context.get());
    }
    // With the loop stopped no callback can run while the members go.
    pa_threaded_mainloop_stop(m_mainloop.get());
    m_stream.reset();
    m_context.reset();
}

bool PulseAudioOutput::start()
{
    m_mainloop.reset(pa_threaded_mainloop_new());
    if (!m_mainloop || pa_threaded_mainloop_start(m_mainloop.get()) < 0)
        return false;

    MainloopLock lock(m_mainloop.get());
    // One deadline for the whole start, so that a server that accepts the
    // connection and then hangs cannot hang the program either.
    pa_mainloop_api *api = pa_threaded_mainloop_get_api(m_mainloop.get());
    timeval deadline{};
    pa_timeval_add(pa_gettimeofday(&deadline), pa_usec_t(m_settings.connectTimeout.count()) * PA_USEC_PER_MSEC);
    pa_time_event *timer = api->time_new(api, &deadline, &PulseAudioOutput::onTimeout, this);

    // A new stream waits in the server until the session manager links it
    // to a sink, and PipeWire's server never links one that was asked for
    // before its session manager had started, as happens when the server has
    // just restarted. So a stream that is not ready soon is asked for again
    // on a new connection (which ends the waiting one), with twice the
    // patience each time, until the deadline; a server that links at once
    // never sees a second request.
    bool started = false;
    for (auto patience = FirstStreamPatience; !started && !m_timedOut; patience *= 2) {
        const int state = connectContext() ? connectStream(patience) : -1;
        if (state < 0)
            break;
        started = state > 0;
        if (!started)
            dropConnection();
    }
    api->time_free(timer);
    m_alive = started;
    return started;
}

template<typename Ready>
bool PulseAudioOutput::waitFor(Ready ready)
{
    // ready() is 1 when done, -1 when failed, 0 while still under way.
    for (;;) {
        const int state = ready();
        if (state != 0)
            return state > 0;
        if (m_timedOut)
            return false;
        pa_threaded_mainloop_wait(m_mainloop.get());
    }
}

bool PulseAudioOutput::connectContext()
{
    m_context.reset(pa_context_new(pa_threaded_mainloop_get_api(m_mainloop.get()), "Tonaro"));
    if (!m_context)
        return false;
    pa_context_set_state_callback(m_context.get(), &PulseAudioOutput::onContextState, this);
    const auto flags = m_settings.mayStartServer ? PA_CONTEXT_NOFLAGS : PA_CONTEXT_NOAUTOSPAWN;
    if (pa_context_connect(m_context.get(), nullptr, flags, nullptr) < 0)
        return false;
    return waitFor([this] {
        const pa_context_state_t state = pa_context_get_state(m_context.get());
        return state == PA_CONTEXT_READY ? 1 : PA_CONTEXT_IS_GOOD(state) ? 0 : -1;
    });
}

int PulseAudioOutput::connectStream(std::chrono::milliseconds patience)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, std::uint32_t(m_settings.sampleRate), ChannelCount};
    m_stream.reset(pa_stream_new(m_context.get(), "Built-in synthesizer", &format, nullptr));
    if (!m_stream)
        return -1;
    pa_stream_set_state_callback(m_stream.get(), &PulseAudioOutput::onStreamState, this);
    pa_stream_set_write_callback(m_stream.get(), &PulseAudioOutput::onWritable, this);
    pa_stream_set_underflow_callback(m_stream.get(), &PulseAudioOutput::onUnderflow, this);

    m_figures.bufferTime = m_settings.bufferTime;
    const pa_buffer_attr attributes = bufferAttributes(m_settings.bufferTime, m_settings.sampleRate);
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_CORKED
                                         | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_INTERPOLATE_TIMING);
    m_paused = true;
    if (pa_stream_connect_playback(m_stream.get(), nullptr, &attributes, flags, nullptr, nullptr) < 0)
        return -1;

    pa_mainloop_api *api = pa_threaded_mainloop_get_api(m_mainloop.get());
    timeval until{};
    pa_timeval_add(pa_gettimeofday(&until), pa_usec_t(patience.count()) * PA_USEC_PER_MSEC);
    m_impatient = false;
    pa_time_event *timer = api->time_new(api, &until, &PulseAudioOutput::onImpatience, this);
    const bool ready = waitFor([this] {
        const pa_stream_state_t state = pa_stream_get_state(m_stream.get());
        // Impatience ends the wait as a failure would; the state tells which.
        return state == PA_STREAM_READY ? 1 : !PA_STREAM_IS_GOOD(state) || m_impatient ? -1 : 0;
    });
    api->time_free(timer);
    if (ready)
        return 1;
    return PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream.get())) ? 0 : -1;
}

void PulseAudioOutput::dropConnection()
{
    pa_stream_set_state_callback(m_stream.get(), nullptr, nullptr);
    pa_context_set_state_callback(m_context.get(), nullptr, nullptr);
    pa_context_disconnect(m_context.get());
    m_stream.reset();
    m_context.reset();
}

void PulseAudioOutput::wake()
{
    if (!m_mainloop)
        return;
    // Under the loop's lock, so that the write callback cannot decide to
    // pause between a new note and this call.
    MainloopLock lock(m_mainloop.get());
    m_silentFrames = 0;
    if (!m_paused || !m_alive)
        return;
    m_paused = false;
    ++m_figures.resumes;
    // What was buffered before the pause is stale silence; dropping it lets
    // the new note start with the first request.
    release(pa_stream_flush(m_stream.get(), nullptr, nullptr));
    release(pa_stream_cork(m_stream.get(), 0, nullptr, nullptr));
}

PulseAudioOutput::Figures PulseAudioOutput::figures()
{
    if (!m_mainloop)
        return m_figures;
    MainloopLock lock(m_mainloop.get());
    return m_figures;
}

void PulseAudioOutput::writeSound(std::size_t bytes)
{
    if (!m_priorityRaised) {
        // The loop's thread is the one that renders; it exists only now.
        raiseAudioThreadPriority();
        m_priorityRaised = true;
    }
    shrinkWhenCalm();
    int written = 0;
    while (bytes >= FrameBytes) {
        void *data = nullptr;
        std::size_t size = bytes;
        if (pa_stream_begin_write(m_stream.get(), &data, &size) < 0 || !data || size < FrameBytes)
            break;
        const int frames = int(size / FrameBytes);
        auto *samples = static_cast<float *>(data);
        m_source.render(samples, frames);
        if (pa_stream_write(m_stream.get(), data, frames * FrameBytes, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            break;
        noteOnset(samples, frames);
        bytes -= frames * FrameBytes;
        written += frames;
    }
    pauseWhenSilent(written);
}

void PulseAudioOutput::noteOnset(const float *samples, int frames)
{
    const int first = firstSoundingFrame(samples, frames);
    const bool sounding = first >= 0;
    if (sounding && !m_wasSounding) {
        m_figures.onsetWritten = std::chrono::steady_clock::now();
        pa_usec_t latency = 0;
        int negative = 0;
        if (pa_stream_get_latency(m_stream.get(), &latency, &negative) == 0 && !negative) {
            // The latency runs to the end of what was just written.
            const auto tail = pa_usec_t(frames - first) * PA_USEC_PER_SEC / pa_usec_t(m_settings.sampleRate);
            m_figures.onsetLatency = std::chrono::microseconds(latency > tail ? latency - tail : 0);
        }
    }
    m_wasSounding = sounding;
}

void PulseAudioOutput::pauseWhenSilent(int frames)
{
    if (m_source.isSounding()) {
        m_silentFrames = 0;
        return;
    }
    m_silentFrames += frames;
    if (m_paused || m_silentFrames < m_settings.framesBeforePause())
        return;
    m_paused = true;
    ++m_figures.pauses;
    release(pa_stream_cork(m_stream.get(), 1, nullptr, nullptr));
}

void PulseAudioOutput::setBufferTime(std::chrono::milliseconds time)
{
    m_figures.bufferTime = time;
    const pa_buffer_attr attributes = bufferAttributes(time, m_settings.sampleRate);
    release(pa_stream_set_buffer_attr(m_stream.get(), &attributes, &PulseAudioOutput::onBufferTimeSet, this));
}

void PulseAudioOutput::shrinkWhenCalm()
{
    if (!m_adaptive || m_figures.bufferTime <= m_settings.bufferTime
        || std::chrono::steady_clock::now() - m_lastUnderflow < m_settings.calmBeforeShrinking)
        return;
    // Halving restarts the calm spell, so that the buffer comes down step
    // by step and a load that returns finds the last size that held.
    m_lastUnderflow = std::chrono::steady_clock::now();
    setBufferTime(std::max(m_settings.bufferTime, m_figures.bufferTime / 2));
}

void PulseAudioOutput::onContextState(pa_context *context, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
        output->m_alive = false;
    pa_threaded_mainloop_signal(output->m_mainloop.get(), 0);
}

void PulseAudioOutput::onStreamState(pa_stream *stream, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream)))
        output->m_alive = false;
    pa_threaded_mainloop_signal(output->m_mainloop.get(), 0);
}

void PulseAudioOutput::onWritable(pa_stream *, std::size_t bytes, void *self)
{
    static_cast<PulseAudioOutput *>(self)->writeSound(bytes);
}

void PulseAudioOutput::onUnderflow(pa_stream *, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    ++output->m_figures.underflows;
    output->m_lastUnderflow = std::chrono::steady_clock::now();
    if (output->m_adaptive && output->m_figures.bufferTime < output->m_settings.largestBufferTime) {
        output->m_grownFrom = output->m_figures.bufferTime;
        output->m_lengthBefore = pa_stream_get_buffer_attr(output->m_stream.get())->tlength;
        output->setBufferTime(std::min(output->m_settings.largestBufferTime, output->m_figures.bufferTime * 2));
    }
}

void PulseAudioOutput::onBufferTimeSet(pa_stream *stream, int success, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    // PipeWire's PulseAudio server keeps at least three of its periods
    // queued (16 ms at its smallest period) whatever a client asks below
    // that, so a stream grown to 20 ms keeps no more there than before. Each
    // new setting restarts its prebuffering, a gap of its own; a server that
    // did not grant more after a growth is left at what it first granted.
    if (!success || output->m_grownFrom.count() == 0)
        return;
    if (pa_stream_get_buffer_attr(stream)->tlength <= output->m_lengthBefore) {
        output->m_adaptive = false;
        output->m_figures.bufferTime = output->m_grownFrom;
    }
    output->m_grownFrom = {};
}

void PulseAudioOutput::onImpatience(pa_mainloop_api *, pa_time_event *, const timeval *, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    output->m_impatient = true;
    pa_threaded_mainloop_signal(output->m_mainloop.get(), 0);
}

void PulseAudioOutput::onTimeout(pa_mainloop_api *, pa_time_event *, const timeval *, void *self)
{
    auto *output = static_cast<PulseAudioOutput *>(self);
    output->m_timedOut = true;
    pa_threaded_mainloop_signal(output->m_mainloop.get(), 0);
}

} // namespace tonaro
