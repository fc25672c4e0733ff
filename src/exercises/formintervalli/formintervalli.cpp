#include "formintervalli.h"

#include "IntervalCatalogue.h"

#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>

namespace tonaro {

namespace {

const PanelTraits Traits{
    .clearOnNew = PanelTraits::ClearOnNew::UnlessAutoNew,
    .secondSlider = {"slidermultinotes", "slidermultinoteslabel", 0, 2000, 10, 5, 100, 1250},
};

// The frame's caption lines "Play" up above the play buttons.
constexpr CatalogueView View{"Interval Choose              Play", "inter", "playint", 13, 19};

} // namespace

formintervalli::formintervalli(const Services &services, QWidget *parent)
    : CatalogueExercise(services, Traits, IntervalCatalogue, IntervalPresets, View, parent)
{
    setObjectName(QStringLiteral("formintervalli"));
    setWindowTitle(tr("Intervals"));

    auto *direction = new QGroupBox(tr("Direction"), exerciseArea());
    direction->setObjectName(QStringLiteral("Frame2"));
    m_ascending = makeOption(tr("Ascending"), "ascending", direction);
    m_discending = makeOption(tr("Discending"), "discending", direction);
    m_together = makeOption(tr("Together"), "together", direction);
    m_ascending->setChecked(true);
    auto *options = new QVBoxLayout(direction);
    options->setContentsMargins(6, 0, 6, 2);
    options->setSpacing(0);
    for (QRadioButton *option : {m_ascending, m_discending, m_together})
        options->addWidget(option);

    QGroupBox *gap = makeSliderFrame(tr("Interval time [ms]"), false);
    // Both notes at once have no gap to set; the slider keeps its value.
    connect(m_together, &QRadioButton::toggled, gap, [gap](bool checked) { gap->setEnabled(!checked); });

    stackColumn(2, {direction, gap}, {makeRootRow("Label9")});
    readPlayedNotesAs(PlayedAnswer::Gesture::Pair, &played::intervalOf);
}

void formintervalli::init()
{
    rootList()->setCurrentIndex(1);
    m_ascending->setChecked(true);
    initPanel();
    applyPreset(IntervalPresets[MainIntervals]);
    Answered = true;
}

bool formintervalli::downward() const
{
    return m_discending->isChecked();
}

bool formintervalli::together() const
{
    return m_together->isChecked();
}

int formintervalli::secondOf(int root, int index) const
{
    const int size = entry(index).steps[0];
    return downward() ? root - size : root + size;
}

void formintervalli::makeQuestion(int index)
{
    QuestionInterval = index;
    RootNote = listRoot();
    SecondNote = secondOf(RootNote, index);
}

bool formintervalli::playQuestion()
{
    return playPair(&formintervalli::RootNote, &formintervalli::SecondNote, true);
}

void formintervalli::practise(int index)
{
    ButtonRoot = practiceRoot(RootNote);
    ButtonSecond = secondOf(ButtonRoot, index);
    playPair(&formintervalli::ButtonRoot, &formintervalli::ButtonSecond, false);
}

bool formintervalli::playPair(int formintervalli::*root, int formintervalli::*second, bool processEvents)
{
    playNote(this->*root);
    if (!together() && !waitMs(m_secondSlider->value(), processEvents))
        return false;
    playNote(this->*second);
    return true;
}

QString formintervalli::revealText() const
{
    return QString::fromLatin1(entry(QuestionInterval).revealName);
}

} // namespace tonaro
