#pragma once

#include "Catalogue.h"

#include <array>

namespace tonaro {

// The notes of a question or of a practice playback, root first: up to a
// chromatic scale's thirteen. An all-zero row is the record before any
// question has been drawn.
struct NoteRow {
    static constexpr int Capacity = StepList::Capacity + 1;

    std::array<int, Capacity> notes{};
    int count = 0;

    constexpr int root() const { return notes[0]; }

    // The root followed by the running sums of the steps, upward.
    static constexpr NoteRow stacked(int root, const StepList &steps)
    {
        NoteRow row;
        row.notes[0] = root;
        for (int j = 0; j < steps.count(); ++j)
            row.notes[std::size_t(j + 1)] = row.notes[std::size_t(j)] + steps[j];
        row.count = steps.count() + 1;
        return row;
    }
};

} // namespace tonaro
