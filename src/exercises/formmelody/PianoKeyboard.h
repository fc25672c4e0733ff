#pragma once

#include "NoteNames.h"

#include <QWidget>
#include <array>
#include <span>

namespace tonaro {

class AnswerMarks;
class PianoKey;

// One octave of a piano, C to B: seven white keys side by side and five
// shorter black keys over the gaps between them. The keys are placed by
// hand, since a layout cannot overlap them.
class PianoKeyboard : public QWidget
{
    Q_OBJECT

public:
    static constexpr int KeyboardHeight = 80;

    explicit PianoKeyboard(QWidget *parent = nullptr);

    const std::array<PianoKey *, melody::PitchClassCount> &keys() const { return m_keys; }
    // Lights the keys of the question's notes, numbered in playing order,
    // until clearAnswer.
    void showAnswer(std::span<const int> notes);
    void clearAnswer();
    // What each key shows of the answer: its note numbers, or nothing.
    const std::array<QString, melody::PitchClassCount> &answerMarks() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void placeKeys();
    QRect keyboardRect() const;

    std::array<PianoKey *, melody::PitchClassCount> m_keys{};
    AnswerMarks *m_marks;
};

} // namespace tonaro
