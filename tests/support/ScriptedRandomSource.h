#pragma once

#include "exercise/RandomSource.h"

#include <vector>

namespace tonaro {

// Gives the values a test scripted, in order; 0 when the script has run out.
class ScriptedRandomSource : public RandomSource
{
public:
    double draw() override
    {
        ++m_draws;
        return m_next < m_values.size() ? m_values[m_next++] : 0.0;
    }
    void script(std::vector<double> values)
    {
        m_values = std::move(values);
        m_next = 0;
    }
    int drawsMade() const { return m_draws; }

private:
    std::vector<double> m_values;
    std::size_t m_next = 0;
    int m_draws = 0;
};

// r for the index-th of count choices (0-based), for tests that script draws.
constexpr double rFor(int index, int count) { return (index + 0.5) / count; }

} // namespace tonaro
