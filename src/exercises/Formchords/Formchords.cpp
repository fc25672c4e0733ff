#include "Formchords.h"

#include "ChordCatalogue.h"
#include "exercise/RootChoice.h"
#include "exercise/RootNames.h"

#include <QComboBox>
#include <QGroupBox>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tonaro {

namespace {

const PanelTraits Traits{
    .clearOnNew = PanelTraits::ClearOnNew::UnlessAutoNew,
    .secondSlider = {"slidermultinotes", "slidermultinoteslabel", 0, 2000, 1, 5, 100, 1250},
};

// Two columns of ten: the triads and sevenths left, the rest right.
constexpr CatalogueView View{"Chords", "chord", "playchord", 10, 0};

} // namespace

Formchords::Formchords(const Services &services, QWidget *parent)
    : CatalogueExercise(services, Traits, ChordCatalogue, ChordPresets, View, parent)
{
    setObjectName(QStringLiteral("Formchords"));
    setWindowTitle(tr("Chords"));

    auto *sequence = new QGroupBox(tr("Sequence"), exerciseArea());
    sequence->setObjectName(QStringLiteral("Frame2"));
    m_chordOption = makeOption(tr("Chord"), "Chordoption", sequence);
    m_arpeggioOption = makeOption(tr("Arpeggio"), "Arpeggiooption", sequence);
    m_chordOption->setChecked(true);
    auto *options = new QHBoxLayout(sequence);
    options->setContentsMargins(6, 0, 6, 2);
    options->addWidget(m_chordOption);
    options->addWidget(m_arpeggioOption);

    QGroupBox *gap = makeSliderFrame(tr("Interval time [ms]"), true);
    // A block chord has no interval time to set.
    gap->setEnabled(false);
    connect(m_arpeggioOption, &QRadioButton::toggled, gap, &QWidget::setEnabled);

    stackColumn(4, {sequence, gap, makeRootRow("Label9")});
    readPlayedNotesAs(PlayedAnswer::Gesture::Struck,
                      [](std::span<const int> notes) { return played::chordOf(notes, ChordCatalogue); });
}

void Formchords::init()
{
    rootList()->setCurrentIndex(1);
    initPanel();
    m_chordOption->setChecked(true);
    applyPreset(ChordPresets[MainChords]);
    Answered = true;
}

bool Formchords::arpeggio() const
{
    return m_arpeggioOption->isChecked();
}

void Formchords::makeQuestion(int index)
{
    QuestionChord = index;
    const int root = roots::intoQuestionOctave(listRoot());
    QuestionNotes = NoteRow::stacked(root, entry(index).steps);
}

bool Formchords::playQuestion()
{
    return playNotes(QuestionNotes, arpeggio());
}

void Formchords::practise(int index)
{
    // Before the first question the list's root is not brought down.
    ButtonNotes = NoteRow::stacked(practiceRoot(QuestionNotes.root()), entry(index).steps);
    playNotes(ButtonNotes, arpeggio());
}

QString Formchords::revealText() const
{
    return rootName(QuestionNotes.root()) + QLatin1Char(' ') + QString::fromLatin1(entry(QuestionChord).revealName);
}

} // namespace tonaro
