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

// Gives the values a test scripted, in order; 0 when the script has run out.
class ScriptedRandomSource : public RandomSource
{
public:
    explicit ScriptedRandomSource(std::vector<double> values = {}) : m_values(std::move(values)) {}

    double draw() override;
    void script(std::vector<double> values);
    int drawsMade() const { return m_draws; }
    bool exhausted() const { return m_next >= m_values.size(); }

private:
    std::vector<double> m_values;
    std::size_t m_next = 0;
    int m_draws = 0;
};

// r for the index-th of count choices (0-based), for tests that script draws.
constexpr double rFor(int index, int count) { return (index + 0.5) / count; }

} // namespace tonaro
