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
    if (x.empty())
        return 0;
    double sum = 0;
    for (const float v : x)
        sum += double(v) * v;
    return std::sqrt(sum / double(x.size()));
}

// The fundamental by the YIN method (de Cheveigné and Kawahara, 2002): the
// first lag whose cumulative-mean-normalised difference dips under the
// threshold, refined by a parabola. Taking the first good dip, not the
// deepest, keeps a strong second harmonic from reading an octave high, and
// the normalisation keeps multiples of the period from reading an octave low.
inline double estimatePitch(Samples x, int sampleRate, double lowestHz = 60, double highestHz = 2000)
{
    const auto maxLag = std::size_t(sampleRate / lowestHz);
    const auto minLag = std::size_t(sampleRate / highestHz);
    if (x.size() < 2 * maxLag + 2)
        return 0;
    const std::size_t window = std::min<std::size_t>(x.size() - maxLag - 1, 8192);
    std::vector<double> normalised(maxLag + 1, 1.0);
    double runningSum = 0;
    for (std::size_t lag = 1; lag <= maxLag; ++lag) {
        double difference = 0;
        for (std::size_t j = 0; j < window; ++j) {
            const double delta = double(x[j]) - x[j + lag];
            difference += delta * delta;
        }
        runningSum += difference;
        normalised[lag] = runningSum > 0 ? difference * double(lag) / runningSum : 1.0;
    }
    constexpr double Threshold = 0.15;
    std::size_t best = minLag;
    for (std::size_t lag = minLag; lag < maxLag; ++lag) {
        if (normalised[lag] < Threshold) {
            while (lag + 1 < maxLag && normalised[lag + 1] < normalised[lag])
                ++lag;
            best = lag;
            break;
        }
        if (normalised[lag] < normalised[best])
            best = lag;
    }
    double lag = double(best);
    if (best > 1 && best < maxLag) {
        const double a = normalised[best - 1], b = normalised[best], c = normalised[best + 1];
        const double curvature = a - 2 * b + c;
        if (curvature > 0)
            lag += 0.5 * (a - c) / curvature;
    }
    return sampleRate / lag;
}

// The amplitude at one frequency (Goertzel), for a window of whole samples.
inline double amplitudeAt(Samples x, int sampleRate, double hz)
{
    const double coefficient = 2 * std::cos(2 * std::numbers::pi * hz / sampleRate);
    double previous = 0, beforePrevious = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        // A Hann window keeps the leakage of the strong harmonics out of the
        // weak ones.
        const double hann = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i) / double(x.size()));
        const double current = hann * x[i] + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power = previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    return std::sqrt(std::max(power, 0.0)) / double(x.size());
}

// The levels of the first harmonics of fundamental in decibels below the
// strongest of them, floored at -90 dB: the timbre, whatever the loudness.
inline std::vector<double> harmonicProfile(Samples x, int sampleRate, double fundamental, int harmonics = 8)
{
    constexpr double Floor = -90;
    std::vector<double> amplitudes;
    for (int k = 1; k <= harmonics; ++k)
        amplitudes.push_back(amplitudeAt(x, sampleRate, k * fundamental));
    const double strongest = *std::max_element(amplitudes.begin(), amplitudes.end());
    std::vector<double> profile;
    for (const double amplitude : amplitudes)
        profile.push_back(strongest > 0 && amplitude > 0 ? std::max(Floor, 20 * std::log10(amplitude / strongest)) : Floor);
    return profile;
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
    const auto found = std::find_if(x.begin(), x.end(), [level](float v) { return std::fabs(v) > level; });
    return std::size_t(found - x.begin());
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
