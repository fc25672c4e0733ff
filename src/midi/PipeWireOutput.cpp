#include "PipeWireOutput.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/utils/result.h>

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <mutex>

namespace tonaro {

namespace {

constexpr int ChannelCount = 2;
constexpr std::uint32_t FrameBytes = ChannelCount * sizeof(float);

// The thread loop's lock, held for one scope.
class ThreadLoopLock
{
public:
    explicit ThreadLoopLock(pw_thread_loop *loop)
        : m_loop(loop)
    {
        pw_thread_loop_lock(m_loop);
    }
    ~ThreadLoopLock() { pw_thread_loop_unlock(m_loop); }
    ThreadLoopLock(const ThreadLoopLock &) = delete;
    ThreadLoopLock &operator=(const ThreadLoopLock &) = delete;

private:
    pw_thread_loop *m_loop;
};

} // namespace

struct PipeWireOutput::Hooks {
    spa_hook core{};
    spa_hook registry{};
    spa_hook stream{};

    static void coreDone(void *self, std::uint32_t id, int seq)
    {
        auto *output = static_cast<PipeWireOutput *>(self);
        if (id == PW_ID_CORE && seq == output->m_syncSeq) {
            output->m_synced = true;
            pw_thread_loop_signal(output->m_loop, false);
        }
    }

    // An error on the core itself is the connection's end: the server went
    // away (-EPIPE) or refused us.
    static void coreError(void *self, std::uint32_t id, int, int, const char *)
    {
        auto *output = static_cast<PipeWireOutput *>(self);
        if (id != PW_ID_CORE)
            return;
        output->m_failed = true;
        output->m_alive = false;
        pw_thread_loop_signal(output->m_loop, false);
    }

    static void global(void *self, std::uint32_t, std::uint32_t, const char *type, std::uint32_t, const spa_dict *props)
    {
        auto *output = static_cast<PipeWireOutput *>(self);
        const char *mediaClass = props ? spa_dict_lookup(props, PW_KEY_MEDIA_CLASS) : nullptr;
        if (std::strcmp(type, PW_TYPE_INTERFACE_Node) == 0 && mediaClass && std::strcmp(mediaClass, "Audio/Sink") == 0)
            output->m_sinkFound = true;
    }

    static void streamState(void *self, pw_stream_state, pw_stream_state state, const char *)
    {
        auto *output = static_cast<PipeWireOutput *>(self);
        if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
            output->m_failed = true;
            output->m_alive = false;
        }
        pw_thread_loop_signal(output->m_loop, false);
    }

    // The stream has a format once the session manager has linked it to a
    // sink and the two have agreed on one.
    static void paramChanged(void *self, std::uint32_t id, const spa_pod *param)
    {
        auto *output = static_cast<PipeWireOutput *>(self);
        if (id == SPA_PARAM_Format && param) {
            output->m_linked = true;
            pw_thread_loop_signal(output->m_loop, false);
        }
    }

    static void process(void *self) { static_cast<PipeWireOutput *>(self)->process(); }

    static int deactivate(spa_loop *, bool, std::uint32_t, const void *, std::size_t, void *self)
    {
        static_cast<PipeWireOutput *>(self)->deactivateWhenStillSilent();
        return 0;
    }

    static constexpr pw_core_events coreEvents = [] {
        pw_core_events events{};
        events.version = PW_VERSION_CORE_EVENTS;
        events.done = &coreDone;
        events.error = &coreError;
        return events;
    }();
    static constexpr pw_registry_events registryEvents = [] {
        pw_registry_events events{};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = &global;
        return events;
    }();
    static constexpr pw_stream_events streamEvents = [] {
        pw_stream_events events{};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.state_changed = &streamState;
        events.param_changed = &paramChanged;
        events.process = &process;
        return events;
    }();
};

PipeWireOutput::PipeWireOutput(AudioSource &source, Settings settings)
    : m_source(source)
    , m_settings(settings)
    , m_hooks(std::make_unique<Hooks>())
{
}

PipeWireOutput::~PipeWireOutput()
{
    if (!m_loop)
        return;
    {
        ThreadLoopLock lock(m_loop);
        dropStream();
        if (m_registry)
            pw_proxy_destroy(reinterpret_cast<pw_proxy *>(m_registry));
        if (m_core)
            pw_core_disconnect(m_core);
    }
    // With the loop stopped no callback can run while the rest goes.
    pw_thread_loop_stop(m_loop);
    if (m_context)
        pw_context_destroy(m_context);
    pw_thread_loop_destroy(m_loop);
}

bool PipeWireOutput::start()
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { pw_init(nullptr, nullptr); });

    m_loop = pw_thread_loop_new("tonaro-pipewire", nullptr);
    if (!m_loop || pw_thread_loop_start(m_loop) < 0)
        return false;
    ThreadLoopLock lock(m_loop);
    const auto deadline = std::chrono::steady_clock::now() + m_settings.connectTimeout;
    m_alive = connectCore() && findSink(deadline) && connectStream(deadline) > 0;
    return m_alive;
}

template<typename Ready>
int PipeWireOutput::waitUntil(std::chrono::steady_clock::time_point deadline, Ready ready)
{
    // ready() is 1 when done, -1 when failed, 0 while still under way.
    for (;;) {
        const int state = ready();
        const auto left = deadline - std::chrono::steady_clock::now();
        if (state != 0 || left <= left.zero())
            return state;
        timespec until{};
        pw_thread_loop_get_time(m_loop, &until, std::chrono::nanoseconds(left).count());
        pw_thread_loop_timed_wait_full(m_loop, &until);
    }
}

bool PipeWireOutput::connectCore()
{
    // The real-time variant of the client's configuration gives the thread
    // that renders a real-time priority where the system grants one.
    m_context = pw_context_new(pw_thread_loop_get_loop(m_loop),
                               pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    if (!m_context)
        return false;
    m_core = pw_context_connect(m_context, nullptr, 0);
    if (!m_core)
        return false;
    pw_core_add_listener(m_core, &m_hooks->core, &Hooks::coreEvents, this);
    return true;
}

// A PipeWire that serves video only (beside a PulseAudio server, say) has
// no sink, and a stream there would wait out the whole connect timeout for
// a link that never comes.
bool PipeWireOutput::findSink(std::chrono::steady_clock::time_point deadline)
{
    m_registry = pw_core_get_registry(m_core, PW_VERSION_REGISTRY, 0);
    if (!m_registry)
        return false;
    pw_registry_add_listener(m_registry, &m_hooks->registry, &Hooks::registryEvents, this);
    m_syncSeq = pw_core_sync(m_core, PW_ID_CORE, 0);
    waitUntil(deadline, [this] { return m_failed ? -1 : m_synced ? 1 : 0; });
    spa_hook_remove(&m_hooks->registry);
    pw_proxy_destroy(reinterpret_cast<pw_proxy *>(m_registry));
    m_registry = nullptr;
    return m_sinkFound && !m_failed;
}

int PipeWireOutput::connectStream(std::chrono::steady_clock::time_point deadline)
{
    const int period = std::max(1, int(m_settings.periodTime.count() * m_settings.sampleRate / 1000000));
    pw_properties *properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                                                  PW_KEY_MEDIA_ROLE, "Music", PW_KEY_APP_NAME, "Tonaro", nullptr);
    pw_properties_setf(properties, PW_KEY_NODE_LATENCY, "%d/%d", period, m_settings.sampleRate);
    m_stream = pw_stream_new(m_core, "Built-in synthesizer", properties);
    if (!m_stream)
        return -1;
    pw_stream_add_listener(m_stream, &m_hooks->stream, &Hooks::streamEvents, this);

    std::uint8_t podSpace[1024];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, podSpace, sizeof podSpace);
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = std::uint32_t(m_settings.sampleRate);
    format.channels = ChannelCount;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    const spa_pod *parameters[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    const auto flags = pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS
                                       | PW_STREAM_FLAG_RT_PROCESS);
    m_paused = true;
    m_silentFrames = 0;
    m_figures.bufferTime = std::chrono::duration_cast<std::chrono::milliseconds>(m_settings.periodTime);
    if (pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, parameters, 1) < 0)
        return -1;
    // An inactive stream is never linked, so the stream starts active and
    // pauses once it has its sink.
    const int state = waitUntil(deadline, [this] { return m_failed ? -1 : m_linked ? 1 : 0; });
    if (state > 0)
        pw_stream_set_active(m_stream, false);
    return state;
}

void PipeWireOutput::dropStream()
{
    if (!m_stream)
        return;
    pw_stream_destroy(m_stream);
    m_stream = nullptr;
}

void PipeWireOutput::wake()
{
    if (!m_loop)
        return;
    // Under the loop's lock, so that a deactivation asked for by the
    // real-time thread just before this note sees the note.
    ThreadLoopLock lock(m_loop);
    m_silentFrames = 0;
    if (!m_paused || !m_alive)
        return;
    m_paused = false;
    {
        std::lock_guard figuresLock(m_figuresMutex);
        ++m_figures.resumes;
    }
    pw_stream_set_active(m_stream, true);
}

AudioOutput::Figures PipeWireOutput::figures()
{
    std::lock_guard lock(m_figuresMutex);
    return m_figures;
}

// On the client library's real-time thread, once a period, for exactly the
// frames the period takes.
void PipeWireOutput::process()
{
    if (!m_priorityRaised) {
        // A thread the configuration left at ordinary priority is raised as
        // ours are; one it made real-time keeps its higher priority.
        m_priorityRaised = true;
        int policy = SCHED_OTHER;
        sched_param parameter{};
        if (pthread_getschedparam(pthread_self(), &policy, &parameter) == 0 && policy == SCHED_OTHER)
            raiseAudioThreadPriority();
    }
    pw_buffer *buffer = pw_stream_dequeue_buffer(m_stream);
    if (!buffer)
        return;
    spa_data &data = buffer->buffer->datas[0];
    if (!data.data) {
        pw_stream_queue_buffer(m_stream, buffer);
        return;
    }
    std::uint32_t frames = data.maxsize / FrameBytes;
    if (buffer->requested)
        frames = std::min(frames, std::uint32_t(buffer->requested));
    auto *samples = static_cast<float *>(data.data);
    m_source.render(samples, int(frames));
    data.chunk->offset = 0;
    data.chunk->stride = FrameBytes;
    data.chunk->size = frames * FrameBytes;
    noteOnset(samples, int(frames));
    pw_stream_queue_buffer(m_stream, buffer);
    pauseWhenSilent(int(frames));
}

void PipeWireOutput::noteOnset(const float *samples, int frames)
{
    const int first = firstSoundingFrame(samples, frames);
    const bool sounding = first >= 0;
    if (sounding && !m_wasSounding) {
        // The graph's delay runs from the start of the block just rendered
        // to the sink's output.
        pw_time time{};
        const bool timed = pw_stream_get_time_n(m_stream, &time, sizeof time) == 0 && time.rate.denom > 0;
        const double delay = timed ? double(time.delay) * time.rate.num / time.rate.denom : 0.0;
        std::lock_guard lock(m_figuresMutex);
        m_figures.onsetWritten = std::chrono::steady_clock::now();
        m_figures.onsetLatency =
            std::chrono::microseconds(std::llround((delay + double(first) / m_settings.sampleRate) * 1e6));
    }
    m_wasSounding = sounding;
}

void PipeWireOutput::pauseWhenSilent(int frames)
{
    if (m_source.isSounding()) {
        m_silentFrames = 0;
        return;
    }
    m_silentFrames += frames;
    if (m_paused || m_silentFrames < m_settings.framesBeforePause())
        return;
    // The stream may be set inactive only from the loop's thread.
    m_paused = true;
    pw_loop_invoke(pw_thread_loop_get_loop(m_loop), &Hooks::deactivate, 0, nullptr, 0, false, this);
}

void PipeWireOutput::deactivateWhenStillSilent()
{
    if (!m_stream || !m_paused)
        return;
    // A message that came after the real-time thread asked reset the count.
    if (m_silentFrames < m_settings.framesBeforePause()
        || m_source.isSounding()) {
        m_paused = false;
        return;
    }
    {
        std::lock_guard lock(m_figuresMutex);
        ++m_figures.pauses;
    }
    pw_stream_set_active(m_stream, false);
}

} // namespace tonaro
