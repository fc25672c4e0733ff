#include "AudioOutput.h"

#include "AlsaOutput.h"
#include "PipeWireOutput.h"
#include "PulseAudioOutput.h"

#include <cmath>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tonaro {

namespace {

// Low among real-time priorities: above every ordinary thread, below the
// sound server's own.
constexpr int RealTimePriority = 5;
constexpr int RaisedNiceness = -11;

std::unique_ptr<AudioOutput> makeOutput(AudioOutput::Backend backend, AudioSource &source,
                                        const AudioOutput::Settings &settings)
{
    switch (backend) {
    case AudioOutput::Backend::PipeWire:
        return std::make_unique<PipeWireOutput>(source, settings);
    case AudioOutput::Backend::PulseAudio:
        return std::make_unique<PulseAudioOutput>(source, settings);
    case AudioOutput::Backend::Alsa:
        return std::make_unique<AlsaOutput>(source, settings);
    }
    return nullptr;
}

} // namespace

std::unique_ptr<AudioOutput> startAudioOutput(AudioSource &source, const AudioOutput::Settings &settings,
                                              const std::vector<AudioOutput::Backend> &backends)
{
    for (const AudioOutput::Backend backend : backends) {
        std::unique_ptr<AudioOutput> output = makeOutput(backend, source, settings);
        if (output && output->start())
            return output;
    }
    return nullptr;
}

int firstSoundingFrame(const float *interleavedStereo, int frames)
{
    constexpr float SilenceLevel = 1e-4f;
    for (int i = 0; i < frames * 2; ++i) {
        if (std::fabs(interleavedStereo[i]) > SilenceLevel)
            return i / 2;
    }
    return -1;
}

void raiseAudioThreadPriority()
{
    sched_param parameter{};
    parameter.sched_priority = RealTimePriority;
    if (pthread_setschedparam(pthread_self(), SCHED_FIFO | SCHED_RESET_ON_FORK, &parameter) == 0)
        return;
    // Without the right to real-time scheduling a lower niceness for this
    // thread alone may still be granted (a raised RLIMIT_NICE).
    setpriority(PRIO_PROCESS, id_t(gettid()), RaisedNiceness);
}

} // namespace tonaro
