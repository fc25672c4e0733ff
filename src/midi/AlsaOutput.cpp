#include "AlsaOutput.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>

namespace tonaro {

namespace {

constexpr int ChannelCount = 2;
constexpr int SoftResample = 1;
constexpr int Blocking = 0;

// ALSA writes every failed attempt to stderr; a missing device is an answer
// the program handles, and while a lost server is sought again the attempts
// would fill the terminal.
void quiet(const char *, int, const char *, int, const char *, ...) {}

std::chrono::microseconds framesToTime(long long frames, int sampleRate)
{
    return std::chrono::microseconds(frames * 1000000 / sampleRate);
}

} // namespace

void AlsaOutput::PcmDeleter::operator()(snd_pcm_t *pcm) const
{
    snd_pcm_close(pcm);
}

AlsaOutput::AlsaOutput(AudioSource &source, Settings settings)
    : m_source(source)
    , m_settings(settings)
{
}

AlsaOutput::~AlsaOutput()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_woken.notify_one();
    // The thread ends after the period it is writing, a few milliseconds.
    if (m_thread.joinable())
        m_thread.join();
}

bool AlsaOutput::start()
{
    snd_lib_error_set_handler(&quiet);
    snd_pcm_t *pcm = nullptr;
    // Opened without blocking, so that a device another program holds
    // answers at once instead of hanging the open; then writes block.
    if (snd_pcm_open(&pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0)
        return false;
    m_pcm.reset(pcm);
    if (snd_pcm_nonblock(pcm, Blocking) < 0 || !configure(m_settings.bufferTime))
        return false;
    m_alive = true;
    m_thread = std::thread([this] { run(); });
    return true;
}

bool AlsaOutput::configure(std::chrono::milliseconds bufferTime)
{
    // Float stereo at our rate; the `plug` layer of the default device
    // converts where the card cannot take it. The device starts playing
    // once its whole buffer is filled, so a resumed stream is prefilled.
    if (snd_pcm_set_params(m_pcm.get(), SND_PCM_FORMAT_FLOAT, SND_PCM_ACCESS_RW_INTERLEAVED, ChannelCount,
                           unsigned(m_settings.sampleRate), SoftResample,
                           unsigned(std::chrono::microseconds(bufferTime).count()))
        < 0)
        return false;
    snd_pcm_uframes_t bufferFrames = 0, periodFrames = 0;
    if (snd_pcm_get_params(m_pcm.get(), &bufferFrames, &periodFrames) < 0 || periodFrames == 0)
        return false;
    m_periodFrames = long(periodFrames);
    m_block.assign(std::size_t(m_periodFrames) * ChannelCount, 0.0f);
    std::lock_guard lock(m_mutex);
    m_figures.bufferTime = std::chrono::duration_cast<std::chrono::milliseconds>(
        framesToTime(static_cast<long long>(bufferFrames), m_settings.sampleRate));
    return true;
}

void AlsaOutput::wake()
{
    {
        std::lock_guard lock(m_mutex);
        m_wakeWanted = true;
    }
    m_woken.notify_one();
}

AudioOutput::Figures AlsaOutput::figures()
{
    std::lock_guard lock(m_mutex);
    return m_figures;
}

void AlsaOutput::run()
{
    raiseAudioThreadPriority();
    for (;;) {
        bool resumed = false;
        {
            std::unique_lock lock(m_mutex);
            if (m_paused)
                m_woken.wait(lock, [this] { return m_stopping || m_wakeWanted; });
            if (m_stopping)
                return;
            if (m_wakeWanted) {
                m_wakeWanted = false;
                m_silentFrames = 0;
                if (m_paused) {
                    m_paused = false;
                    ++m_figures.resumes;
                    resumed = true;
                }
            }
        }
        if (resumed) {
            snd_pcm_prepare(m_pcm.get());
            m_streamStart = std::chrono::steady_clock::now();
            m_framesSinceStart = 0;
        }
        if (!playPeriod()) {
            m_alive = false;
            return;
        }
        adaptBuffer();
        if (pauseWhenSilent())
            snd_pcm_drop(m_pcm.get());
    }
}

bool AlsaOutput::playPeriod()
{
    m_source.render(m_block.data(), int(m_periodFrames));
    noteOnset(int(m_periodFrames));
    long offset = 0;
    while (offset < m_periodFrames) {
        const snd_pcm_sframes_t written
            = snd_pcm_writei(m_pcm.get(), m_block.data() + offset * ChannelCount, snd_pcm_uframes_t(m_periodFrames - offset));
        if (written < 0) {
            if (!recoverFrom(written))
                return false;
            continue;
        }
        offset += written;
        m_framesSinceStart += written;
    }
    paceByClock();
    return true;
}

bool AlsaOutput::recoverFrom(long error)
{
    // An underrun (-EPIPE) or a suspend; anything else, such as a device
    // unplugged or a server behind it gone, ends the stream.
    if (error != -EPIPE && error != -ESTRPIPE)
        return false;
    if (error == -EPIPE) {
        std::lock_guard lock(m_mutex);
        ++m_figures.underflows;
        m_underflowed = true;
    }
    m_lastUnderflow = std::chrono::steady_clock::now();
    return snd_pcm_recover(m_pcm.get(), int(error), 1) == 0;
}

void AlsaOutput::noteOnset(int frames)
{
    const float *samples = m_block.data();
    const int first = firstSoundingFrame(samples, frames);
    const bool sounding = first >= 0;
    if (sounding && !m_wasSounding) {
        snd_pcm_sframes_t queued = 0;
        if (snd_pcm_delay(m_pcm.get(), &queued) < 0 || queued <= 0) {
            const auto elapsed = std::chrono::steady_clock::now() - m_streamStart;
            queued = snd_pcm_sframes_t(m_framesSinceStart
                                       - std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()
                                             * m_settings.sampleRate / 1000000);
        }
        std::lock_guard lock(m_mutex);
        m_figures.onsetWritten = std::chrono::steady_clock::now();
        m_figures.onsetLatency = framesToTime(std::max<long long>(0, queued) + first, m_settings.sampleRate);
    }
    m_wasSounding = sounding;
}

void AlsaOutput::paceByClock()
{
    snd_pcm_sframes_t queued = 0;
    if (snd_pcm_delay(m_pcm.get(), &queued) == 0 && queued > 0)
        return;
    // The device took the block without holding it: stay one buffer ahead
    // of the clock, as a device that plays would keep us. Only this thread
    // changes the buffer time, so it reads it without the lock.
    const long long ahead = m_framesSinceStart - m_figures.bufferTime.count() * m_settings.sampleRate / 1000;
    std::this_thread::sleep_until(m_streamStart + framesToTime(std::max(0LL, ahead), m_settings.sampleRate));
}

void AlsaOutput::adaptBuffer()
{
    const auto current = figures().bufferTime;
    std::chrono::milliseconds wanted = current;
    if (m_underflowed)
        wanted = std::min(m_settings.largestBufferTime, current * 2);
    else if (current > m_settings.bufferTime && !m_wasSounding
             && std::chrono::steady_clock::now() - m_lastUnderflow >= m_settings.calmBeforeShrinking)
        wanted = std::max(m_settings.bufferTime, current / 2);
    m_underflowed = false;
    if (wanted == current)
        return;
    m_lastUnderflow = std::chrono::steady_clock::now();
    // The device takes new sizes only while stopped; the gap is the one
    // the underrun made already, or lies in silence when calm.
    snd_pcm_drop(m_pcm.get());
    if (!configure(wanted))
        configure(current);
    snd_pcm_prepare(m_pcm.get());
    m_streamStart = std::chrono::steady_clock::now();
    m_framesSinceStart = 0;
}

bool AlsaOutput::pauseWhenSilent()
{
    if (m_source.isSounding()) {
        m_silentFrames = 0;
        return false;
    }
    m_silentFrames += m_periodFrames;
    if (m_silentFrames < m_settings.framesBeforePause())
        return false;
    // Under the lock, so that a message that wakes the output now is not
    // lost to the pause.
    std::lock_guard lock(m_mutex);
    if (m_wakeWanted)
        return false;
    m_paused = true;
    ++m_figures.pauses;
    return true;
}

} // namespace tonaro
