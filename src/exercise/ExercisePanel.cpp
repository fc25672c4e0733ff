#include "ExercisePanel.h"

#include "FocusChain.h"
#include "WaitMs.h"
#include "midi/Midi_interface.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace tonaro {

namespace {

constexpr SliderSpec AutoNewSlider{"sliderautonew", "sliderautonewlabel", 0, 3000, 100, 100, 250, 1250};

const QColor RightColour(0, 255, 0);
const QColor WrongColour(255, 0, 0);
const QColor AnswerBackground(255, 255, 192);
constexpr double VerdictPointSize = 12;
constexpr double PercentagePointSize = 19.5;

template<typename T>
T *named(T *widget, const char *name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

QLabel *captionLabel(const QString &text, const char *name, QWidget *parent)
{
    return named(new QLabel(text, parent), name);
}

void setPointSize(QWidget *widget, double points)
{
    QFont font = widget->font();
    font.setPointSizeF(points);
    widget->setFont(font);
}

} // namespace

std::pair<QSlider *, QLabel *> makeDelaySlider(const SliderSpec &spec, QWidget *parent)
{
    auto *slider = named(new QSlider(Qt::Horizontal, parent), spec.name);
    slider->setRange(spec.minimum, spec.maximum);
    slider->setSingleStep(spec.singleStep);
    slider->setPageStep(spec.pageStep);
    slider->setTickInterval(spec.tickInterval);
    slider->setTickPosition(QSlider::TicksBelow);
    slider->setValue(spec.startValue);
    auto *label = named(new QLabel(QString::number(spec.startValue), parent), spec.labelName);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 4);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QObject::connect(slider, &QSlider::valueChanged, label, [label](int value) { label->setNum(value); });
    return {slider, label};
}

ExercisePanel::ExercisePanel(const Services &services, const PanelTraits &traits, QWidget *parent)
    : QWidget(parent)
    , m_services(services)
    , m_traits(traits)
{
    buildPanel();
    if (m_traits.letterKeys)
        qApp->installEventFilter(this);
}

ExercisePanel::~ExercisePanel()
{
    // Anything still waiting for this window must not come back into it.
    m_unloaded = true;
}

void ExercisePanel::buildPanel()
{
    m_topArea = named(new QWidget(this), "toparea");
    m_exerciseArea = named(new QWidget(this), "exercisearea");

    auto *column = new QVBoxLayout;
    column->setSpacing(4);
    column->addWidget(buildControlsFrame());

    m_verdict = named(new QLabel(this), "rightwronglabel");
    setPointSize(m_verdict, VerdictPointSize);
    m_verdict->setAlignment(Qt::AlignCenter);
    m_verdict->setMinimumHeight(m_verdict->fontMetrics().height() + 4);
    column->addWidget(m_verdict);

    m_showLabel = named(new QLabel(this), "showlabel");
    m_showLabel->setAutoFillBackground(true);
    QPalette answerPalette = m_showLabel->palette();
    answerPalette.setColor(QPalette::Window, AnswerBackground);
    answerPalette.setColor(QPalette::WindowText, answerPalette.color(QPalette::Highlight));
    m_showLabel->setPalette(answerPalette);
    m_showLabel->setFrameShape(QFrame::Panel);
    m_showLabel->setFrameShadow(QFrame::Sunken);
    m_showLabel->setWordWrap(true);
    m_showLabel->setAlignment(Qt::AlignCenter);
    setPointSize(m_showLabel, m_traits.showLabelPointSize);
    m_showLabel->setMinimumHeight(QFontMetrics(m_showLabel->font()).height() * 2 + 8);
    // A description, not a name: the name is the text, so that a screen
    // reader reads the answer itself and hears it change.
    m_showLabel->setAccessibleDescription(tr("Answer"));
    column->addWidget(m_showLabel);

    column->addWidget(buildModeFrame());
    column->addWidget(buildScoreFrame());
    column->addStretch();

    std::tie(m_secondSlider, m_secondSliderLabel) = makeDelaySlider(m_traits.secondSlider, this);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(6, 6, 6, 6);
    grid->setSpacing(6);
    grid->addWidget(m_topArea, 0, 0, 1, 2);
    grid->addWidget(m_exerciseArea, 1, 0);
    grid->addLayout(column, 1, 1);
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(1, 1);
}

QWidget *ExercisePanel::buildControlsFrame()
{
    auto *frame = named(new QGroupBox(tr("Controls"), this), "controlsframe");
    m_new = named(new QPushButton(tr("&New"), frame), "New");
    m_repeat = named(new QPushButton(tr("&Repeat"), frame), "Repeat");
    m_reveal = named(new QPushButton(tr("Re&veal"), frame), "Reveal");
    m_stopNoise = named(new QPushButton(tr("Stop noise!"), frame), "stopnoise");
    m_stopNoise->setToolTip(tr("Silences every sounding note"));
    m_noAnswers = named(new QCheckBox(tr("Don't show anwers"), frame), "noanswers");
    m_autoNew = named(new QCheckBox(tr("Auto NEW"), frame), "autonewcheck");
    m_autoNew->setChecked(true);
    std::tie(m_autoNewSlider, m_autoNewLabel) = makeDelaySlider(AutoNewSlider, frame);
    m_autoNewSlider->setAccessibleName(tr("Auto NEW delay in milliseconds"));
    m_repeat->setEnabled(false);
    m_reveal->setEnabled(false);

    auto *grid = new QGridLayout(frame);
    grid->setContentsMargins(6, 4, 6, 4);
    grid->setSpacing(4);
    grid->addWidget(m_new, 0, 0);
    grid->addWidget(m_repeat, 0, 1);
    grid->addWidget(m_reveal, 1, 0);
    grid->addWidget(m_stopNoise, 1, 1);
    grid->addWidget(m_noAnswers, 2, 0, 1, 2);
    grid->addWidget(m_autoNew, 3, 0, 1, 2);
    auto *sliderRow = new QHBoxLayout;
    sliderRow->addWidget(m_autoNewSlider, 1);
    sliderRow->addWidget(m_autoNewLabel);
    grid->addLayout(sliderRow, 4, 0, 1, 2);

    connect(m_new, &QPushButton::clicked, this, [this] { New_Click(); });
    connect(m_repeat, &QPushButton::clicked, this, [this] { Repeat_Click(); });
    connect(m_reveal, &QPushButton::clicked, this, &ExercisePanel::Reveal_Click);
    connect(m_stopNoise, &QPushButton::clicked, this, &ExercisePanel::stopnoise_Click);
    connect(m_noAnswers, &QCheckBox::clicked, this, &ExercisePanel::noanswers_Click);
    return frame;
}

QWidget *ExercisePanel::buildModeFrame()
{
    auto *frame = named(new QGroupBox(tr("Test options"), this), "testoptionsframe");
    m_test = named(new QRadioButton(tr("Test mode"), frame), "Test");
    m_noTest = named(new QRadioButton(tr("No test"), frame), "Notest");
    m_test->setChecked(true);
    auto *row = new QHBoxLayout(frame);
    row->setContentsMargins(6, 2, 6, 2);
    row->addWidget(m_test);
    row->addWidget(m_noTest);
    connect(m_test, &QRadioButton::clicked, this, &ExercisePanel::Test_Click);
    connect(m_noTest, &QRadioButton::clicked, this, &ExercisePanel::Notest_Click);
    return frame;
}

QWidget *ExercisePanel::buildScoreFrame()
{
    m_scoreFrame = named(new QGroupBox(tr("Test"), this), "Frame5");
    auto *grid = new QGridLayout(m_scoreFrame);
    grid->setContentsMargins(6, 2, 6, 4);
    grid->setVerticalSpacing(2);

    auto *questionsCaption = captionLabel(tr("Questions"), "Label3", m_scoreFrame);
    auto *rightCaption = captionLabel(tr("Right answers"), m_traits.rightAnswersCaptionName, m_scoreFrame);
    auto *answersCaption = captionLabel(tr("Answers"), "Label8", m_scoreFrame);
    m_questions = captionLabel(QStringLiteral("0"), "questlabel", m_scoreFrame);
    m_rightAnswers = captionLabel(QStringLiteral("0"), "rightanslabel", m_scoreFrame);
    m_answers = captionLabel(QStringLiteral("0"), "anslabel", m_scoreFrame);
    m_percentage = captionLabel(QStringLiteral("0"), "perclabel", m_scoreFrame);
    auto *percentSign = captionLabel(QStringLiteral("%"), "Label6", m_scoreFrame);
    m_reset = named(new QPushButton(tr("Reset"), m_scoreFrame), "Reset");
    setPointSize(m_percentage, PercentagePointSize);
    setPointSize(percentSign, PercentagePointSize);
    m_percentage->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    const std::array<std::pair<QLabel *, QLabel *>, 3> rows{{
        {questionsCaption, m_questions}, {rightCaption, m_rightAnswers}, {answersCaption, m_answers}}};
    int row = 0;
    for (const auto &[caption, value] : rows) {
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        // The caption labels the counter; the counter's own name stays its
        // number, which is what a screen reader has to read out.
        caption->setBuddy(value);
        value->setAccessibleDescription(caption->text());
        grid->addWidget(caption, row, 0);
        grid->addWidget(value, row, 1, 1, 2);
        ++row;
    }
    m_percentage->setAccessibleDescription(tr("Percentage right"));
    grid->addWidget(m_percentage, row, 0, 1, 2);
    grid->addWidget(percentSign, row, 2);
    grid->addWidget(m_reset, row + 1, 0, 1, 3);
    grid->setColumnStretch(0, 1);
    connect(m_reset, &QPushButton::clicked, this, &ExercisePanel::Reset_Click);

    m_testOnlyControls = {m_scoreFrame, questionsCaption, rightCaption, answersCaption, m_questions,
                          m_answers, m_rightAnswers, m_percentage, percentSign, m_reset};
    return m_scoreFrame;
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
