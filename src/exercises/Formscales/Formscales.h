#pragma once

#include "exercise/CatalogueExercise.h"

namespace tonaro {

// Scale and mode recognition: a scale played upward from a root from 54 to
// 65 to its octave, note by note; the answer is the scale alone.
class Formscales : public CatalogueExercise
{
    Q_OBJECT

public:
    explicit Formscales(const Services &services, QWidget *parent = nullptr);

    void init() override;

    // The question, all zero until the first one is drawn.
    NoteRow QuestionNotes;
    int QuestionScale = 0;
    // The last practice playback, kept apart from the question.
    NoteRow ButtonNotes;

protected:
    void makeQuestion(int index) override;
    bool playQuestion() override;
    void practise(int index) override;
    int questionIndex() const override { return QuestionScale; }
    QString revealText() const override;
};

} // namespace tonaro
