#pragma once

#include "PanelTraits.h"
#include "Services.h"
#include "midi/MidiInput.h"

#include <QWidget>

class QCheckBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QSlider;
class QVBoxLayout;

namespace tonaro {

// The panel that every exercise window carries: New, Repeat, Reveal,
// Stop noise!, Reset, test and practice mode, "Don't show anwers", Auto NEW,
// the verdict, the revealed answer and the score. The score lives in the
// label captions and nowhere else. A window derives from this class, puts
// its own controls into exerciseArea() (and topArea()), and supplies its
// question, its player and its Reveal text; where the windows differ in the
// panel's own behaviour, its PanelTraits say so.
class ExercisePanel : public QWidget
{
    Q_OBJECT

public:
    ExercisePanel(const Services &services, const PanelTraits &traits, QWidget *parent = nullptr);
    ~ExercisePanel() override;

    // True when the current question has been scored or none is pending.
    bool Answered = true;

    // The window's load: every control starts as designed, then init.
    void Form_Load();
    virtual void init() = 0;

    virtual void New_Click() = 0;
    virtual void Repeat_Click() = 0;
    void Reveal_Click();
    void Test_Click();
    void Notest_Click();
    void Reset_Click();
    void stopnoise_Click();
    void noanswers_Click();
    void UpdatePercentage();

    bool isTestMode() const;

    // A key struck on a MIDI keyboard: it acts as the on-screen answer it
    // stands for, if any, exactly as a click on it would.
    void notePlayed(int note, MidiInput::Moment struck);

    // The controls Tab stops at now, in the order it visits them.
    QList<QWidget *> tabStops() const;
    // Focus arriving from outside the window: the first stop going forward,
    // the last going back.
    void enterFocus(bool forward);
    // New, the first thing a user does in a fresh window.
    void focusStartControl();

    // The window was unloaded (another exercise chosen, or the program is
    // closing): whatever sequence is still running for it stops.
    void unload();
    bool isUnloaded() const { return m_unloaded; }

signals:
    // Tab on the last stop, or Shift+Tab on the first: the window hands the
    // focus on instead of wrapping round inside itself. Unconnected, it wraps.
    void focusLeaving(bool forward);

protected:
    // The window's own controls go here (below the top area, left of the panel).
    QWidget *exerciseArea() const { return m_exerciseArea; }
    // A full-width strip above everything, for the piano of note recognition.
    QWidget *topArea() const { return m_topArea; }
    // The panel's column; what a window adds goes below the score.
    QVBoxLayout *panelColumn() const { return m_panelColumn; }

    // The panel's steps of init: sliders and labels, test mode, Reveal and
    // Repeat disabled, Auto NEW enabled where the window does so, Answered.
    void initPanel();
    // The panel's part of New before the question is drawn.
    void beginNew();
    // The panel's part of New after one question (or note) was played in test mode.
    void countQuestion();
    // Judges an answer in test mode and runs the answer sequence; weight is
    // what a right answer adds (the number of notes in note recognition).
    void answer(bool right, int weight = 1);
    void clearLabels();
    void setCounter(QLabel *label, double value);
    static double counter(const QLabel *label);

    virtual QString revealText() const = 0;
    virtual double revealPointSize() const { return m_traits.showLabelPointSize; }
    // A letter typed anywhere in the window (only with traits.letterKeys).
    virtual void answerLetter(int key, bool ctrlAlone);
    // After the panel's Reset: a window drops what it keeps of an unfinished answer.
    virtual void onReset() {}
    // After Reveal has written the answer text.
    virtual void onRevealed() {}
    // What the window makes of a played note; by default nothing.
    virtual void playedNote(int, MidiInput::Moment) {}

    // WaitMs, then whether the caller may carry on: false when the window
    // was unloaded or the program closed meanwhile. After false the caller
    // returns at once without touching the window.
    bool waitMs(int milliseconds, bool processEvents);

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

    Services m_services;
    const PanelTraits &m_traits;

    QPushButton *m_new;
    QPushButton *m_repeat;
    QPushButton *m_reveal;
    QPushButton *m_stopNoise;
    QCheckBox *m_noAnswers;
    QCheckBox *m_autoNew;
    QSlider *m_autoNewSlider;
    QLabel *m_autoNewLabel;
    QLabel *m_verdict;
    QLabel *m_showLabel;
    QRadioButton *m_test;
    QRadioButton *m_noTest;
    QGroupBox *m_scoreFrame;
    QPushButton *m_reset;
    QLabel *m_questions;
    QLabel *m_rightAnswers;
    QLabel *m_answers;
    QLabel *m_percentage;
    QSlider *m_secondSlider;
    QLabel *m_secondSliderLabel;

private:
    void buildPanel();
    QWidget *buildControlsFrame();
    QWidget *buildModeFrame();
    QWidget *buildScoreFrame();
    void setScoreEnabled(bool enabled);
    void arrangeTabOrder();

    QWidget *m_topArea;
    QWidget *m_exerciseArea;
    QVBoxLayout *m_panelColumn = nullptr;
    QList<QWidget *> m_testOnlyControls;
    bool m_unloaded = false;
};

// A horizontal slider and its value label made from a SliderSettings; the label
// follows the slider while it is dragged.
std::pair<QSlider *, QLabel *> makeDelaySlider(const SliderSettings &settings, QWidget *parent);

} // namespace tonaro
