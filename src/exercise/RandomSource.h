#pragma once

#include <cstdint>
#include <vector>

namespace tonaro {

// The random draw of every exercise: before each draw the generator is
// reseeded from the clock, then r (0 <= r < 1) is drawn and an item picked
// from the listed choices as element Int(r x count + 1), counted from 1.
class RandomSource
{
public:
    virtual ~RandomSource() = default;

    // Reseeds and draws one r in [0, 1).
    virtual double draw() = 0;

    // Int(r x count + 1): 1 to count.
    static int pickFrom(double r, int count) { return int(r * count + 1); }
    // The drawn element of a list of choices; the list must not be empty.
    template<typename T>
    T pick(const std::vector<T> &choices)
    {
        return choices[std::size_t(pickFrom(draw(), int(choices.size())) - 1)];
    }
};

// Reseeds from the high-resolution clock before every draw. Two reseeds in
// one clock tick still give unrelated values: the seed mixes the clock with
// a running count, and the mixer scatters neighbouring seeds.
class ClockRandomSource : public RandomSource
{
public:
    double draw() override;

private:
    std::uint64_t m_count = 0;
};

} // namespace tonaro
