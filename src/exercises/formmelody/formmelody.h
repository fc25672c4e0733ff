#pragma once

#include "MelodyQuestion.h"
#include "NoteNames.h"
#include "exercise/ExercisePanel.h"

#include <array>

class QComboBox;
class QGroupBox;

namespace tonaro {

class PianoKeyboard;

// Note recognition: one to ten random notes, named by clicking the keys of a
// one-octave piano in playing order (or by typing the note letters). Only
// the pitch class counts; the score counts notes, not questions.
class formmelody : public ExercisePanel
{
    Q_OBJECT

public:
    explicit formmelody(const Services &services, QWidget *parent = nullptr);

    void init() override;
    void New_Click() override;
    void Repeat_Click() override;
    void tasto_Click(int index);
    void nnotescombo_Click();

    const MelodyQuestion &question() const { return m_question; }

protected:
    QString revealText() const override { return m_question.revealText(); }
    double revealPointSize() const override { return m_question.revealPointSize(); }
    void answerLetter(int key, bool ctrlAlone) override;
    void onReset() override;
    void onRevealed() override;
    void playedNote(int note, MidiInput::Moment struck) override;

private:
    QGroupBox *buildNotesFrame();
    QGroupBox *buildOctavesFrame();
    QWidget *buildCountRow();
    QGroupBox *buildDelayFrame();
    int chosenItem() const;
    void playNote(int note);
    void tickPresets(unsigned notes, unsigned octaves);

    MelodyQuestion m_question;
    PianoKeyboard *m_keyboard;
    std::array<QCheckBox *, melody::PitchClassCount> m_noteBoxes{};
    std::array<QCheckBox *, melody::OctaveCount> m_octaveBoxes{};
    QComboBox *m_nnotesCombo = nullptr;
};

} // namespace tonaro
