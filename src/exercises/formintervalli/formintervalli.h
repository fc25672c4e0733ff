#pragma once

#include "exercise/CatalogueExercise.h"

class QRadioButton;

namespace tonaro {

// Interval recognition: a root and a second note, upward, downward or
// together; the answer is the interval's size, whatever the root and the
// direction.
class formintervalli : public CatalogueExercise
{
    Q_OBJECT

public:
    explicit formintervalli(const Services &services, QWidget *parent = nullptr);

    void init() override;

    // The question; all zero until the first one is drawn.
    int RootNote = 0;
    int SecondNote = 0;
    int QuestionInterval = 0;
    // The last practice playback, kept apart so that practising never
    // changes the question.
    int ButtonRoot = 0;
    int ButtonSecond = 0;

protected:
    void makeQuestion(int index) override;
    bool playQuestion() override;
    void practise(int index) override;
    int questionIndex() const override { return QuestionInterval; }
    QString revealText() const override;

private:
    bool downward() const;
    bool together() const;
    int secondOf(int root, int index) const;
    // Root, the gap, then the second note as it stands after the gap: a New
    // clicked during an event-processing gap has replaced it by then.
    bool playPair(int formintervalli::*root, int formintervalli::*second, bool processEvents);

    QRadioButton *m_ascending;
    QRadioButton *m_discending;
    QRadioButton *m_together;
};

} // namespace tonaro
