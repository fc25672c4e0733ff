#pragma once

// Measurements on mono sample blocks for the sound tests and the audio
// benchmark: pitch, level, harmonic profile, onset and gaps.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

namespace tonaro::test {

using Samples = std::span<const float>;

inline double rms(Samples x)
{
    double sum = 0;
    for (const float v : x)
        sum += double(v) * v;
    return x.empty() ? 0 : std::sqrt(sum / double(x.size()));
}

// The fundamental by the YIN method (de Cheveigné and Kawahara, 2002): the
// first lag whose cumulative-mean-normalised difference dips under the
// threshold. Taking the first good dip, not the deepest, keeps a strong
// second harmonic from reading an octave high; the normalisation keeps
// multiples of the period from reading an octave low.
inline double estimatePitch(Samples x, int sampleRate, double lowestHz = 60, double highestHz = 2000)
{
    const auto maxLag = std::size_t(sampleRate / lowestHz), minLag = std::size_t(sampleRate / highestHz);
    if (x.size() < 2 * maxLag + 2)
        return 0;
    const std::size_t window = std::min<std::size_t>(x.size() - maxLag - 1, 8192);
    std::vector<double> d(maxLag + 1, 1.0);
    double runningSum = 0;
    for (std::size_t lag = 1; lag <= maxLag; ++lag) {
        double difference = 0;
        for (std::size_t j = 0; j < window; ++j)
            difference += (double(x[j]) - x[j + lag]) * (double(x[j]) - x[j + lag]);
        runningSum += difference;
        d[lag] = runningSum > 0 ? difference * double(lag) / runningSum : 1.0;
    }
    std::size_t best = minLag;
    for (std::size_t lag = minLag; lag < maxLag; ++lag) {
        if (d[lag] < 0.15) {
            while (lag + 1 < maxLag && d[lag + 1] < d[lag])
                ++lag;
            best = lag;
            break;
        }
        if (d[lag] < d[best])
            best = lag;
    }
    double lag = double(best);
    const double curvature = best > 1 && best < maxLag ? d[best - 1] - 2 * d[best] + d[best + 1] : 0;
    if (curvature > 0) // a parabola through the dip and its neighbours
        lag += 0.5 * (d[best - 1] - d[best + 1]) / curvature;
    return sampleRate / lag;
}

// The levels of the first harmonics of fundamental (Goertzel over a Hann
// window) in decibels below the strongest of them, floored at -90 dB: the
// timbre, whatever the loudness.
inline std::vector<double> harmonicProfile(Samples x, int sampleRate, double fundamental, int harmonics = 8)
{
    std::vector<double> levels;
    for (int k = 1; k <= harmonics; ++k) {
        const double coefficient = 2 * std::cos(2 * std::numbers::pi * k * fundamental / sampleRate);
        double previous = 0, beforePrevious = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double hann = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i) / double(x.size()));
            const double current = hann * x[i] + coefficient * previous - beforePrevious;
            beforePrevious = previous;
            previous = current;
        }
        const double power = previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
        levels.push_back(std::sqrt(std::max(power, 0.0)));
    }
    const double strongest = *std::max_element(levels.begin(), levels.end());
    for (double &level : levels)
        level = strongest > 0 && level > 0 ? std::max(-90.0, 20 * std::log10(level / strongest)) : -90.0;
    return levels;
}

// The mean difference of two harmonic profiles, in decibels.
inline double profileDistance(const std::vector<double> &a, const std::vector<double> &b)
{
    const std::size_t count = std::min(a.size(), b.size());
    double distance = 0;
    for (std::size_t i = 0; i < count; ++i)
        distance += std::fabs(a[i] - b[i]);
    return count ? distance / double(count) : 0;
}

// The index of the first sample louder than level; x.size() when none is.
inline std::size_t onsetIndex(Samples x, float level)
{
    return std::size_t(std::find_if(x.begin(), x.end(), [level](float v) { return std::fabs(v) > level; }) - x.begin());
}

// The longest run of samples no louder than level: a dropout inside a
// sounding note shows as a run far longer than a zero crossing.
inline std::size_t longestQuietRun(Samples x, float level)
{
    std::size_t longest = 0, run = 0;
    for (const float v : x) {
        run = std::fabs(v) <= level ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace tonaro::test
