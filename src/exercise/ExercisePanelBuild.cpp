// How the panel is built: its three frames, the verdict and answer labels,
// and the area each window fills with its own controls.
#include "ExercisePanel.h"

#include "AnswerLabel.h"
#include "PanelStyle.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>

namespace tonaro {

using namespace panelstyle;

namespace {

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

std::pair<QSlider *, QLabel *> makeDelaySlider(const SliderSettings &settings, QWidget *parent)
{
    auto *slider = named(new QSlider(Qt::Horizontal, parent), settings.name);
    slider->setRange(settings.minimum, settings.maximum);
    slider->setSingleStep(settings.singleStep);
    slider->setPageStep(settings.pageStep);
    slider->setTickInterval(settings.tickInterval);
    slider->setTickPosition(QSlider::TicksBelow);
    slider->setValue(settings.startValue);
    auto *label = named(new QLabel(QString::number(settings.startValue), parent), settings.labelName);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 4);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QObject::connect(slider, &QSlider::valueChanged, label, [label](int value) { label->setNum(value); });
    return {slider, label};
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

    m_showLabel = named(new AnswerLabel(this), "showlabel");
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
    // Below the score: whatever a window puts there, then the stretch.
    m_panelColumn = new QVBoxLayout;
    m_panelColumn->setSpacing(2);
    column->addLayout(m_panelColumn);
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
    // The handlers of the check box and the option buttons follow their
    // state, not the click: a screen reader's or an automation tool's toggle
    // changes the state without clicking, and must still run them once.
    connect(m_noAnswers, &QCheckBox::toggled, this, &ExercisePanel::noanswers_Click);
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
    connect(m_test, &QRadioButton::toggled, this, [this](bool selected) {
        if (selected)
            Test_Click();
    });
    connect(m_noTest, &QRadioButton::toggled, this, [this](bool selected) {
        if (selected)
            Notest_Click();
    });
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

} // namespace tonaro
