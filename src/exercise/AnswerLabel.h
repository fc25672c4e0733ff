#pragma once

#include <QLabel>

namespace tonaro {

// The revealed-answer label. Its text is the answer as the exercise writes
// it, and that is what a screen reader reads; on screen a line may break
// between note names but never inside one ("G #" stays on one line).
class AnswerLabel : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

    // The text as drawn: the blank inside a note name does not break.
    QString shownText() const;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int flags() const;
};

} // namespace tonaro
