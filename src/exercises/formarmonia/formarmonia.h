#pragma once

#include "DegreeCatalogue.h"
#include "exercise/CatalogueExercise.h"

class QCheckBox;
class QRadioButton;

namespace tonaro {

// Harmony: the triad on a degree of the chosen key, with or without its root
// doubled an octave below; the answer is the degree. In practice mode a
// degree button makes its triad the current chord.
class formarmonia : public CatalogueExercise
{
    Q_OBJECT

public:
    explicit formarmonia(const Services &services, QWidget *parent = nullptr);

    void init() override;

    // The current chord: the last question, or the degree last practised.
    NoteRow QuestionNotes;
    int QuestionDegree = 0;

protected:
    void makeQuestion(int index) override;
    bool playQuestion() override;
    void practise(int index) override;
    int questionIndex() const override { return QuestionDegree; }
    QString revealText() const override;

private:
    // The key as the controls show it now; tonics lie from 54 to 65.
    int tonic() const;
    KeyMode mode() const;
    NoteRow triadOf(int degree) const;
    bool arpeggio() const;

    QRadioButton *m_major;
    QRadioButton *m_minor;
    QRadioButton *m_chordOption;
    QRadioButton *m_arpeggioOption;
    QCheckBox *m_twoRoots;
};

} // namespace tonaro
