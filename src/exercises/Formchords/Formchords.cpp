#include "Formchords.h"

#include "ChordCatalogue.h"
#include "exercise/RootChoice.h"
#include "exercise/RootNames.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
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
    m_chordOption = new QRadioButton(tr("Chord"), sequence);
    m_arpeggioOption = new QRadioButton(tr("Arpeggio"), sequence);
    m_chordOption->setObjectName(QStringLiteral("Chordoption"));
    m_arpeggioOption->setObjectName(QStringLiteral("Arpeggiooption"));
    m_chordOption->setChecked(true);
    auto *options = new QHBoxLayout(sequence);
    options->setContentsMargins(6, 0, 6, 2);
    options->addWidget(m_chordOption);
    options->addWidget(m_arpeggioOption);

    QGroupBox *gap = makeSliderFrame(tr("Interval time [ms]"), true);
    // A block chord has no interval time to set.
    gap->setEnabled(false);
    connect(m_arpeggioOption, &QRadioButton::toggled, gap, &QWidget::setEnabled);

    auto *rootLabel = new QLabel(tr("Root"), exerciseArea());
    rootLabel->setObjectName(QStringLiteral("Label9"));
    QComboBox *roots = makeRootList(true);
    rootLabel->setBuddy(roots);
    auto *rootRow = new QHBoxLayout;
    rootRow->addWidget(rootLabel);
    rootRow->addWidget(roots, 1);

    auto *column = new QVBoxLayout(exerciseArea());
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(catalogueFrame());
    column->addWidget(sequence);
    column->addWidget(gap);
    column->addLayout(rootRow);
    column->addStretch();
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
