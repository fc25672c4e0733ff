#pragma once

#include <chrono>
#include <memory>
#include <vector>

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

// A playback stream that pulls its sound from an AudioSource in small
// blocks on a thread of its own, and pauses itself after a while of silence
// so that an idle program costs nothing; the next message wakes it again.
// Each sound system the program can play through is one kind of output.
class AudioOutput
{
public:
    enum class Backend { PipeWire, PulseAudio, Alsa };

    struct Settings {
        // The rate PipeWire's graph and most sound hardware run at. A stream
        // at another rate is resampled in PipeWire's PulseAudio server,
        // which then lets it run dry now and then (several times as many
        // dropouts at 44.1 kHz there); PulseAudio resamples either rate
        // without a gap.
        int sampleRate = 48000;
        // What the stream keeps buffered when the machine is calm; after an
        // underflow it doubles, up to the largest, and it halves again after
        // a calm spell, so that a busy machine costs latency, not sound. A
        // server that keeps more than the largest anyway is not asked again.
        std::chrono::milliseconds bufferTime{10};
        std::chrono::milliseconds largestBufferTime{20};
        // The period a PipeWire graph is asked to run at while the stream
        // plays: 256 frames at 48 kHz, the shortest PipeWire's PulseAudio
        // server lets its own clients have, so that our stream seldom makes
        // the graph change pace under them. The graph runs at the shortest
        // period any of its streams asks for.
        std::chrono::microseconds periodTime{5333};
        std::chrono::milliseconds calmBeforeShrinking{10000};
        std::chrono::milliseconds connectTimeout{2000};
        std::chrono::milliseconds pauseAfterSilence{500};

        long framesBeforePause() const { return long(pauseAfterSilence.count()) * sampleRate / 1000; }
        // False when a lost server is being sought again: a restarting
        // server is the session's business, not ours to spawn.
        bool mayStartServer = true;
    };

    // What the benchmark measures the output by.
    struct Figures {
        int underflows = 0;
        int pauses = 0;
        int resumes = 0;
        std::chrono::milliseconds bufferTime{0};
        // When the first block that sounded after a silent one was handed to
        // the sound system, and how long its first sound then waited in the
        // buffers until it played.
        std::chrono::steady_clock::time_point onsetWritten{};
        std::chrono::microseconds onsetLatency{0};
    };

    virtual ~AudioOutput() = default;

    // Connects and opens the stream, paused. False when the sound system is
    // not there or refused the stream within the connect timeout.
    virtual bool start() = 0;
    // False once the sound system has gone away or failed the stream.
    virtual bool isAlive() const = 0;
    // Resumes a paused stream and restarts the silence count. Call it after
    // every message to the source, so that a new note is never left unheard.
    virtual void wake() = 0;
    virtual bool isPaused() const = 0;
    virtual Figures figures() = 0;
    virtual Backend backend() const = 0;
};

// The first of backends, in order, whose output starts; null when none does.
std::unique_ptr<AudioOutput> startAudioOutput(AudioSource &source, const AudioOutput::Settings &settings,
                                              const std::vector<AudioOutput::Backend> &backends);

// The first frame of a block of interleaved float stereo that is not
// silence (about -80 dBFS), or -1 when the whole block is: where a note's
// sound begins, for the figures.
int firstSoundingFrame(const float *interleavedStereo, int frames);

// Asks the system to run the calling audio thread before ordinary work:
// real-time scheduling where granted, else a higher priority, else nothing.
void raiseAudioThreadPriority();

} // namespace tonaro
