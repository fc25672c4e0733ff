#pragma once

#include "NoteNames.h"

#include <QWidget>
#include <array>
#include <span>

namespace tonaro {

class PianoKey;

// The revealed answer drawn over the piano: each key of the question's notes
// lit, with the numbers of the notes it plays in playing order ("1 3" on C
// for C, E, C). It lies over the keys and lets every click through.
class AnswerMarks : public QWidget
{
    Q_OBJECT

public:
    AnswerMarks(const std::array<PianoKey *, melody::PitchClassCount> &keys, QWidget *parent);

    // The question's notes in playing order; an empty span lights nothing.
    void show(std::span<const int> notes);
    void clear();
    // What each key shows: the numbers of its notes, empty for an unlit key.
    const std::array<QString, melody::PitchClassCount> &marks() const { return m_marks; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const std::array<PianoKey *, melody::PitchClassCount> &m_keys;
    std::array<QString, melody::PitchClassCount> m_marks;
};

} // namespace tonaro
