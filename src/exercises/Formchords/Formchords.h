#pragma once

#include "exercise/CatalogueExercise.h"

class QRadioButton;

namespace tonaro {

// Chord recognition: a chord type from the catalogue on a root from 54 to
// 65, as a block chord or an arpeggio; the answer is the type alone.
class Formchords : public CatalogueExercise
{
    Q_OBJECT

public:
    explicit Formchords(const Services &services, QWidget *parent = nullptr);

    void init() override;

    // The question, all zero until the first one is drawn.
    NoteRow QuestionNotes;
    int QuestionChord = 0;
    // The last practice playback, kept apart from the question.
    NoteRow ButtonNotes;

protected:
    void makeQuestion(int index) override;
    bool playQuestion() override;
    void practise(int index) override;
    int questionIndex() const override { return QuestionChord; }
    QString revealText() const override;

private:
    bool arpeggio() const;

    QRadioButton *m_chordOption;
    QRadioButton *m_arpeggioOption;
};

} // namespace tonaro
