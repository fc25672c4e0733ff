#include "RandomSource.h"

#include <chrono>

namespace tonaro {

namespace {

// SplitMix64: a strong 64-bit mixer, so that seeds one apart give unrelated outputs.
std::uint64_t splitMix64(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

} // namespace

double ClockRandomSource::draw()
{
    const auto ticks = std::uint64_t(std::chrono::high_resolution_clock::now().time_since_epoch().count());
    const std::uint64_t seed = splitMix64(ticks) ^ splitMix64(++m_count * 0xD1B54A32D192ED03ull);
    const std::uint64_t value = splitMix64(seed);
    return double(value >> 11) * 0x1.0p-53; // 53 random bits: 0 <= r < 1
}

} // namespace tonaro
