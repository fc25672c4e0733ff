#pragma once

// Hears what the built-in synthesizer played on one sound setup and judges
// each note: its pitch, no dropout inside it, and when it began.

#include "AudioAnalysis.h"
#include "MonitorTap.h"
#include "PrivateAlsaDevice.h"
#include "PrivateSoundServer.h"

#include <QString>

#include <chrono>
#include <cmath>

namespace tonaro::test {

struct PlayedNote {
    double hz = 0;
    std::chrono::steady_clock::time_point on;
    // What the output reported for the onset; the ALSA setup has no
    // recorder with a clock, so its onset is taken from this account.
    std::chrono::steady_clock::time_point onsetWritten;
    std::chrono::microseconds onsetLatency{0};
};

class SoundListener
{
public:
    static constexpr int Rate = PrivateSoundServer::SampleRate;

    // From a sink's monitor, with the arrival time of every block.
    explicit SoundListener(MonitorTap &tap)
        : m_tap(&tap)
    {
    }
    // From the file the ALSA device writes, from what it holds now on.
    explicit SoundListener(const PrivateAlsaDevice &device)
        : m_device(&device)
        , m_alreadyPlayed(device.played().size())
    {
    }

    struct Bounds {
        // From the note-on call to the sound: the median of the notes, and
        // any one note, which a moment of a busy machine may delay.
        double medianMs;
        double worstMs;
    };

    // Judges the notes, played one after another, each held holdMs and
    // followed by gapMs of silence: what was wrong, or nothing.
    QString judge(const std::vector<PlayedNote> &notes, int holdMs, int gapMs, Bounds bounds)
    {
        std::vector<MonitorTap::Block> blocks;
        if (m_tap)
            m_tap->take(m_samples, blocks);
        else
            m_samples = m_device->played();
        const Samples sound(m_samples);
        const auto held = std::size_t(holdMs) * Rate / 1000;
        std::size_t from = m_alreadyPlayed;
        std::vector<double> latencies;
        for (const PlayedNote &note : notes) {
            if (m_tap) {
                const auto block = std::find_if(blocks.begin(), blocks.end(),
                                                [&](const MonitorTap::Block &b) { return b.arrived >= note.on; });
                if (block != blocks.begin() && block != blocks.end())
                    from = std::max(from, std::prev(block)->first);
            }
            const std::size_t onset = from + onsetIndex(sound.subspan(std::min(from, sound.size())), 0.01f);
            if (onset + held > sound.size())
                return QStringLiteral("the %1 Hz note never sounded whole").arg(note.hz);
            double latencyMs = toMs(note.onsetWritten - note.on) + double(note.onsetLatency.count()) / 1000;
            if (m_tap) {
                const auto holder = std::prev(std::upper_bound(
                    blocks.begin(), blocks.end(), onset, [](std::size_t i, const MonitorTap::Block &b) { return i < b.first; }));
                latencyMs = toMs(holder->arrived - note.on);
            }
            latencies.push_back(latencyMs);
            if (latencyMs > bounds.worstMs)
                return QStringLiteral("the %1 Hz note sounded %2 ms after its note-on").arg(note.hz).arg(latencyMs);
            // A dropout shows as a run of digital zero far longer than a
            // zero crossing; the end of the note is left out for its release.
            const Samples sustain = sound.subspan(onset + Rate / 50, held - Rate / 10);
            const double dropoutMs = 1000.0 * double(longestQuietRun(sustain, 2.0f / 32768)) / Rate;
            if (dropoutMs >= 3.0)
                return QStringLiteral("a %1 ms dropout inside the %2 Hz note").arg(dropoutMs).arg(note.hz);
            const double hz = estimatePitch(sound.subspan(onset + Rate / 10, Rate / 4), Rate);
            if (std::fabs(hz - note.hz) > note.hz / 100)
                return QStringLiteral("%1 Hz instead of %2 Hz").arg(hz).arg(note.hz);
            // The next note is sought from the middle of the silence after this one.
            from = onset + held + std::size_t(gapMs) * Rate / 2000;
        }
        std::sort(latencies.begin(), latencies.end());
        const double median = latencies.empty() ? 0 : latencies[latencies.size() / 2];
        if (median > bounds.medianMs)
            return QStringLiteral("the notes sounded %1 ms after their note-ons (median)").arg(median);
        return {};
    }

    // The pitch of the first sound heard, or 0 when there was none.
    double firstPitch()
    {
        std::vector<MonitorTap::Block> blocks;
        m_tap->take(m_samples, blocks);
        const Samples sound(m_samples);
        const std::size_t onset = onsetIndex(sound, 0.01f);
        return onset + Rate / 3 < sound.size() ? estimatePitch(sound.subspan(onset + Rate / 10, Rate / 5), Rate) : 0;
    }

private:
    static double toMs(std::chrono::steady_clock::duration d)
    {
        return std::chrono::duration<double, std::milli>(d).count();
    }

    MonitorTap *m_tap = nullptr;
    const PrivateAlsaDevice *m_device = nullptr;
    std::size_t m_alreadyPlayed = 0;
    std::vector<float> m_samples;
};

} // namespace tonaro::test
