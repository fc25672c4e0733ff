#pragma once

#include "NoteNames.h"

#include <QString>
#include <array>
#include <cstdint>

namespace tonaro {

// The question of note recognition and the answer being entered: the notes
// in playing order and the keys clicked so far. Judging and the Reveal text
// need no widgets.
class MelodyQuestion
{
public:
    // Notes of the question, 1 to 10; 0 before the first New.
    std::int16_t nnotes = 0;
    // The drawn note numbers; element i is written once note i has sounded.
    std::array<std::int16_t, melody::MaxNotes> notes{};
    // The keys (pitch classes) clicked for the answer, in click order.
    std::array<std::int16_t, melody::MaxNotes> answers{};
    std::int16_t nclicks = 0;

    // Counts one key towards the answer. True when it completes the answer,
    // which also starts the count afresh for the next one.
    bool addClick(int key);
    // Every key names the pitch class of the note at the same position.
    bool isRight() const;
    // Each note's name followed by one blank.
    QString revealText() const;
    // Long questions are revealed in smaller type so that they fit.
    double revealPointSize() const { return nnotes > 5 ? 10 : 18; }
};

} // namespace tonaro
