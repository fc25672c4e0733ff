#include "Formscales.h"

#include "ScaleCatalogue.h"
#include "exercise/RootChoice.h"
#include "exercise/RootNames.h"

#include <QComboBox>
#include <QGroupBox>

namespace tonaro {

namespace {

// This window's "Label2" is its root label, so the score's caption is Label1.
const PanelTraits Traits{
    .clearOnNew = PanelTraits::ClearOnNew::Always,
    .noanswersClearsLabels = false,
    .showLabelPointSize = 9.75,
    .rightAnswersCaptionName = "Label1",
    .secondSlider = {"sliderintervals", "sliderintervalslabel", 0, 2000, 1, 5, 100, 250},
};

// Eighteen rows have to fit the window's height: compact rows.
constexpr CatalogueView View{"Scales and Modes", "scales", "playscale", 18, 18};

} // namespace

Formscales::Formscales(const Services &services, QWidget *parent)
    : CatalogueExercise(services, Traits, ScaleCatalogue, ScalePresets, View, parent)
{
    setObjectName(QStringLiteral("Formscales"));
    setWindowTitle(tr("Scales"));

    QGroupBox *gap = makeSliderFrame(tr("Intervals [ms]"), false);

    // Eighteen rows of answer buttons fill the catalogue's column.
    stackColumn(2, {}, {gap, makeRootRow("Label2")});
    readPlayedNotesAs(PlayedAnswer::Gesture::RisingOctave,
                      [](std::span<const int> notes) { return played::scaleOf(notes, ScaleCatalogue); });
}

void Formscales::init()
{
    rootList()->setCurrentIndex(1);
    initPanel();
    applyPreset(ScalePresets[MainScales]);
    Answered = true;
}

void Formscales::makeQuestion(int index)
{
    QuestionScale = index;
    const int root = roots::intoQuestionOctave(listRoot());
    QuestionNotes = NoteRow::stacked(root, entry(index).steps);
}

bool Formscales::playQuestion()
{
    return playNotes(QuestionNotes, true);
}

void Formscales::practise(int index)
{
    // Before the first question the list's root is not brought down.
    ButtonNotes = NoteRow::stacked(practiceRoot(QuestionNotes.root()), entry(index).steps);
    playNotes(ButtonNotes, true);
}

QString Formscales::revealText() const
{
    return rootName(QuestionNotes.root()) + QLatin1Char(' ') + QString::fromLatin1(entry(QuestionScale).revealName);
}

} // namespace tonaro
