#include "ExercisePanel.h"

#include "FocusChain.h"
#include "PanelStyle.h"
#include "WaitMs.h"
#include "midi/Midi_interface.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <cmath>

namespace tonaro {

using namespace panelstyle;

ExercisePanel::ExercisePanel(const Services &services, const PanelTraits &traits, QWidget *parent)
    : QWidget(parent)
    , m_services(services)
    , m_traits(traits)
{
    buildPanel();
    if (m_traits.letterKeys)
        qApp->installEventFilter(this);
    if (services.input)
        connect(services.input, &MidiInput::notePlayed, this, &ExercisePanel::notePlayed);
}

ExercisePanel::~ExercisePanel()
{
    // Anything still waiting for this window must not come back into it.
    m_unloaded = true;
}

void ExercisePanel::Form_Load()
{
    arrangeTabOrder();
    init();
}

void ExercisePanel::arrangeTabOrder()
{
    // The panel's controls are made before the window's own, and the second
    // slider before the frame it ends up in, so creation order would jump
    // about. Tab follows the layout instead: the top strip, the window's
    // column, then the panel's column.
    focuschain::arrange(focuschain::inLayoutOrder(this));
}

QList<QWidget *> ExercisePanel::tabStops() const
{
    return focuschain::stops(this);
}

void ExercisePanel::enterFocus(bool forward)
{
    const QList<QWidget *> stops = tabStops();
    if (!stops.isEmpty())
        (forward ? stops.first() : stops.last())->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

void ExercisePanel::focusStartControl()
{
    m_new->setFocus(Qt::OtherFocusReason);
}

bool ExercisePanel::focusNextPrevChild(bool next)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&ExercisePanel::focusLeaving))) {
        const QList<QWidget *> stops = tabStops();
        if (!stops.isEmpty() && QApplication::focusWidget() == (next ? stops.last() : stops.first())) {
            emit focusLeaving(next);
            return true;
        }
    }
    return QWidget::focusNextPrevChild(next);
}

void ExercisePanel::initPanel()
{
    m_autoNewSlider->setValue(AutoNewSlider.startValue);
    m_secondSlider->setValue(m_traits.secondSlider.startValue);
    m_autoNewLabel->setNum(m_autoNewSlider->value());
    m_secondSliderLabel->setNum(m_secondSlider->value());
    m_test->setChecked(true);
    m_reveal->setEnabled(false);
    m_repeat->setEnabled(false);
    if (m_traits.initEnablesAutoNew)
        m_autoNew->setEnabled(true);
    Answered = true;
}

bool ExercisePanel::isTestMode() const
{
    return m_test->isChecked();
}

void ExercisePanel::clearLabels()
{
    m_showLabel->clear();
    m_verdict->clear();
}

void ExercisePanel::beginNew()
{
    switch (m_traits.clearOnNew) {
    case PanelTraits::ClearOnNew::Always:
        clearLabels();
        break;
    case PanelTraits::ClearOnNew::UnlessAutoNew:
        if (!m_autoNew->isChecked())
            clearLabels();
        break;
    case PanelTraits::ClearOnNew::ByWindow:
        break;
    }
    m_repeat->setEnabled(true);
    if (!isTestMode())
        m_reveal->setEnabled(true);
}

void ExercisePanel::countQuestion()
{
    if (!isTestMode())
        return;
    setCounter(m_questions, counter(m_questions) + 1);
    Answered = false;
    m_reveal->setEnabled(false);
}

double ExercisePanel::counter(const QLabel *label)
{
    return label->text().toDouble();
}

void ExercisePanel::setCounter(QLabel *label, double value)
{
    label->setText(QString::number(value, 'f', 0));
}

void ExercisePanel::answer(bool right, int weight)
{
    if (right) {
        setCounter(m_rightAnswers, counter(m_rightAnswers) + weight);
        QPalette palette = m_verdict->palette();
        palette.setColor(QPalette::WindowText, RightColour);
        m_verdict->setPalette(palette);
        m_verdict->setText(tr("Right!"));
    } else {
        QPalette palette = m_verdict->palette();
        palette.setColor(QPalette::WindowText, WrongColour);
        m_verdict->setPalette(palette);
        m_verdict->setText(tr("Wrong!"));
    }
    const bool revealFirst = m_traits.answerOrder == PanelTraits::AnswerOrder::RevealFirst;
    if (revealFirst)
        Reveal_Click();
    setCounter(m_answers, counter(m_answers) + 1);
    Answered = true;
    UpdatePercentage();
    if (!revealFirst)
        Reveal_Click();
    if (m_autoNew->isChecked()) {
        if (!waitMs(m_autoNewSlider->value(), true))
            return;
        New_Click();
    }
}

void ExercisePanel::UpdatePercentage()
{
    const double questions = counter(m_questions);
    if (questions != 0 && Answered)
        setCounter(m_percentage, std::trunc(counter(m_rightAnswers) * 100 / questions));
}

void ExercisePanel::Reveal_Click()
{
    if (m_noAnswers->isChecked())
        return;
    const QString text = revealText();
    QFont font = m_showLabel->font();
    font.setPointSizeF(revealPointSize());
    m_showLabel->setFont(font);
    m_showLabel->setText(text);
    onRevealed();
}

void ExercisePanel::setScoreEnabled(bool enabled)
{
    for (QWidget *control : std::as_const(m_testOnlyControls))
        control->setEnabled(enabled);
    m_autoNew->setEnabled(enabled);
    m_autoNewSlider->setEnabled(enabled);
    m_autoNewLabel->setEnabled(enabled);
}

void ExercisePanel::Test_Click()
{
    setScoreEnabled(true);
    m_reveal->setEnabled(false);
}

void ExercisePanel::Notest_Click()
{
    setScoreEnabled(false);
    m_reveal->setEnabled(true);
    clearLabels();
}

void ExercisePanel::Reset_Click()
{
    for (QLabel *label : {m_questions, m_answers, m_rightAnswers, m_percentage})
        setCounter(label, 0);
    clearLabels();
    Answered = true;
    onReset();
}

void ExercisePanel::stopnoise_Click()
{
    m_services.midi.restart();
}

void ExercisePanel::noanswers_Click()
{
    if (m_traits.noanswersClearsLabels)
        clearLabels();
}

void ExercisePanel::notePlayed(int note, MidiInput::Moment struck)
{
    if (!m_unloaded)
        playedNote(note, struck);
}

void ExercisePanel::answerLetter(int, bool)
{
}

void ExercisePanel::unload()
{
    m_unloaded = true;
    if (m_traits.letterKeys)
        qApp->removeEventFilter(this);
}

bool ExercisePanel::waitMs(int milliseconds, bool processEvents)
{
    QPointer<ExercisePanel> self(this);
    WaitMs(milliseconds, processEvents);
    return self && !self->m_unloaded && !waitsAbandoned();
}

bool ExercisePanel::eventFilter(QObject *watched, QEvent *event)
{
    // The window sees letter keys before its controls do, whichever of its
    // controls has the focus; modal dialogs over it keep their own keys.
    if (event->type() != QEvent::KeyPress || m_unloaded || !watched->isWidgetType())
        return false;
    auto *target = static_cast<QWidget *>(watched);
    if (target != this && !isAncestorOf(target))
        return false;
    if (QApplication::activeModalWidget() || QApplication::activePopupWidget())
        return false;
    // A field the user types text into keeps its letters.
    const auto *combo = qobject_cast<QComboBox *>(target);
    if (qobject_cast<QLineEdit *>(target) || (combo && combo->isEditable()))
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool ctrlAlone = key->modifiers() == Qt::ControlModifier;
    switch (key->key()) {
    case Qt::Key_N:
        New_Click();
        return true;
    case Qt::Key_R:
        Repeat_Click();
        return true;
    case Qt::Key_V:
        Reveal_Click();
        return true;
    case Qt::Key_S:
        Reset_Click();
        return true;
    case Qt::Key_A:
    case Qt::Key_B:
    case Qt::Key_C:
    case Qt::Key_D:
    case Qt::Key_E:
    case Qt::Key_F:
    case Qt::Key_G:
        answerLetter(key->key(), ctrlAlone);
        return true;
    default:
        return false;
    }
}

} // namespace tonaro
