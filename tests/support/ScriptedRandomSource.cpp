#include "ScriptedRandomSource.h"

namespace tonaro {

double ScriptedRandomSource::draw()
{
    ++m_draws;
    if (m_next >= m_values.size())
        return 0.0;
    return m_values[m_next++];
}

void ScriptedRandomSource::script(std::vector<double> values)
{
    m_values = std::move(values);
    m_next = 0;
}

} // namespace tonaro
