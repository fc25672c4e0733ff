#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace tonaro {

// The semitones from each note of a chord, scale or interval to the next,
// starting at the root. Room for the chromatic scale's twelve.
class StepList
{
public:
    static constexpr int Capacity = 12;

    constexpr StepList() = default;
    constexpr StepList(std::initializer_list<int> steps)
    {
        for (int step : steps)
            m_steps[std::size_t(m_count++)] = std::int8_t(step);
    }

    constexpr int count() const { return m_count; }
    constexpr int operator[](int index) const { return m_steps[std::size_t(index)]; }
    constexpr const std::int8_t *begin() const { return m_steps.data(); }
    constexpr const std::int8_t *end() const { return m_steps.data() + m_count; }

private:
    std::array<std::int8_t, Capacity> m_steps{};
    int m_count = 0;
};

// One entry of an exercise's catalogue. Its index in the table is at once the
// index of its check box, of its play (answer) button and of its Reveal name.
struct CatalogueEntry {
    const char *caption;      // the check box
    const char *revealName;   // what Reveal shows, and what the play button is called
    StepList steps;
};

// A set of catalogue indexes as bits, for the preset buttons.
using EntrySet = std::uint32_t;

constexpr EntrySet entries(std::initializer_list<int> indexes)
{
    EntrySet set = 0;
    for (int index : indexes)
        set |= EntrySet(1) << index;
    return set;
}

constexpr EntrySet entryRange(int first, int last)
{
    EntrySet set = 0;
    for (int index = first; index <= last; ++index)
        set |= EntrySet(1) << index;
    return set;
}

constexpr bool contains(EntrySet set, int index)
{
    return (set >> index) & 1U;
}

// A button below the check boxes that ticks, unticks or sets a group of them.
struct CataloguePreset {
    enum class Action {
        Tick,         // ticks the set and leaves the other boxes as they are
        Untick,       // unticks the set and leaves the others
        SetExactly,   // ticks the set and unticks every other box
    };

    const char *name;
    const char *caption;
    EntrySet boxes;
    Action action;
};

} // namespace tonaro
