#pragma once

#include "AudioOutput.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>

struct pw_context;
struct pw_core;
struct pw_registry;
struct pw_stream;
struct pw_thread_loop;

namespace tonaro {

// Plays straight into a PipeWire server's graph, where one is running and
// has a sink: PipeWire's PulseAudio server keeps at least three of its
// 5.3 ms periods queued for a PulseAudio client, so a note reaches the sink
// some 24 ms after its note-on there and 6 ms here. The graph calls the
// stream once a period (a short one, which the stream asks for) on a
// real-time thread of the client library, and the stream renders exactly
// what that period takes: nothing is queued ahead. After half a second of silence the stream sets
// itself inactive, so that neither the program nor the graph wakes for it;
// the next message activates it again.
class PipeWireOutput : public AudioOutput
{
public:
    PipeWireOutput(AudioSource &source, Settings settings);
    ~PipeWireOutput() override;
    PipeWireOutput(const PipeWireOutput &) = delete;
    PipeWireOutput &operator=(const PipeWireOutput &) = delete;

    bool start() override;
    bool isAlive() const override { return m_alive; }
    void wake() override;
    bool isPaused() const override { return m_paused; }
    Figures figures() override;
    Backend backend() const override { return Backend::PipeWire; }

private:
    // The listeners the library calls, with access to the members.
    struct Hooks;

    bool connectCore();
    bool findSink(std::chrono::steady_clock::time_point deadline);
    // 1 when the stream is linked, -1 when it failed, 0 when it still waits
    // for its sink at the deadline.
    int connectStream(std::chrono::steady_clock::time_point deadline);
    void dropStream();
    template<typename Ready>
    int waitUntil(std::chrono::steady_clock::time_point deadline, Ready ready);
    void process();
    void noteOnset(const float *samples, int frames);
    void pauseWhenSilent(int frames);
    void deactivateWhenStillSilent();

    AudioSource &m_source;
    const Settings m_settings;
    pw_thread_loop *m_loop = nullptr;
    pw_context *m_context = nullptr;
    pw_core *m_core = nullptr;
    pw_registry *m_registry = nullptr;
    pw_stream *m_stream = nullptr;
    std::unique_ptr<Hooks> m_hooks;

    // Under the loop's lock.
    int m_syncSeq = -1;
    bool m_synced = false;
    bool m_sinkFound = false;
    bool m_linked = false;
    bool m_failed = false;

    std::mutex m_figuresMutex;
    Figures m_figures;

    std::atomic<bool> m_alive = false;
    std::atomic<bool> m_paused = true;
    std::atomic<long> m_silentFrames = 0;
    // The real-time thread's own.
    bool m_wasSounding = false;
    bool m_priorityRaised = false;
};

} // namespace tonaro
