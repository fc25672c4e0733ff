#pragma once

// Measurements on mono sample blocks for the sound tests and the audio
// benchmark: pitch, onset and gaps.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace tonaro::test {

using Samples = std::span<const float>;

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
