#include "formarmonia.h"

#include "exercise/RootChoice.h"
#include "exercise/RootNames.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tonaro {

namespace {

const PanelTraits Traits{
    .clearOnNew = PanelTraits::ClearOnNew::Always,
    .noanswersClearsLabels = false,
    .secondSlider = {"sliderintervals", "sliderintervalslabel", 0, 2000, 1, 5, 100, 250},
};

constexpr CatalogueView View{"Chord", "chord", "playchord", 7, 0};

} // namespace

formarmonia::formarmonia(const Services &services, QWidget *parent)
    : CatalogueExercise(services, Traits, DegreeCatalogue, {}, View, parent)
{
    setObjectName(QStringLiteral("formarmonia"));
    setWindowTitle(tr("Harmony"));
    for (int degree = 0; degree < int(DegreeCatalogue.size()); ++degree)
        box(degree)->setChecked(true);

    auto *key = new QGroupBox(tr("Key"), exerciseArea());
    key->setObjectName(QStringLiteral("Frame7"));
    auto *keyLabel = new QLabel(tr("Key"), key);
    keyLabel->setObjectName(QStringLiteral("Label1"));
    QComboBox *keys = makeRootList(false);
    keyLabel->setBuddy(keys);
    m_major = makeOption(tr("Major"), "optmajor", key);
    m_minor = makeOption(tr("Minor"), "optminor", key);
    m_major->setChecked(true);
    auto *keyGrid = new QGridLayout(key);
    keyGrid->setContentsMargins(6, 2, 6, 2);
    keyGrid->setVerticalSpacing(0);
    keyGrid->addWidget(keyLabel, 0, 0);
    keyGrid->addWidget(keys, 0, 1);
    keyGrid->addWidget(m_major, 1, 0, 1, 2);
    keyGrid->addWidget(m_minor, 2, 0, 1, 2);
    keyGrid->setColumnStretch(1, 1);

    auto *sequence = new QGroupBox(tr("Sequence"), exerciseArea());
    sequence->setObjectName(QStringLiteral("Frame2"));
    m_chordOption = makeOption(tr("Chord"), "Chordoption", sequence);
    m_arpeggioOption = makeOption(tr("Arpeggio"), "Arpeggiooption", sequence);
    m_twoRoots = new QCheckBox(tr("2 roots"), sequence);
    m_twoRoots->setObjectName(QStringLiteral("tworoots"));
    m_chordOption->setChecked(true);
    m_twoRoots->setChecked(true);
    auto *sequenceColumn = new QVBoxLayout(sequence);
    sequenceColumn->setContentsMargins(6, 0, 6, 2);
    sequenceColumn->setSpacing(0);
    for (QWidget *control : std::initializer_list<QWidget *>{m_chordOption, m_arpeggioOption, m_twoRoots})
        sequenceColumn->addWidget(control);

    QGroupBox *gap = makeSliderFrame(tr("Arpeggio time [ms]"), true);
    gap->setEnabled(false);
    // An arpeggio carries no low root; back on Chord the box may be ticked
    // again by hand.
    connect(m_arpeggioOption, &QRadioButton::toggled, this, [this, gap](bool arpeggio) {
        gap->setEnabled(arpeggio);
        if (arpeggio)
            m_twoRoots->setChecked(false);
        m_twoRoots->setEnabled(!arpeggio);
    });

    stackColumn(4, {key, sequence, gap});
    // A triad answers in the key selected when it is played.
    readPlayedNotesAs(PlayedAnswer::Gesture::Struck, [this](std::span<const int> notes) {
        std::array<NoteRow, DegreeCatalogue.size()> triads;
        for (std::size_t degree = 0; degree < triads.size(); ++degree)
            triads[degree] = degreeTriad(tonic(), mode(), int(degree), false);
        return played::triadOf(notes, triads);
    });
}

void formarmonia::init()
{
    rootList()->setCurrentIndex(0);
    initPanel();
    Answered = true;
}

int formarmonia::tonic() const
{
    return roots::intoQuestionOctave(roots::tonicOfItem(rootList()->currentIndex()));
}

KeyMode formarmonia::mode() const
{
    return m_minor->isChecked() ? KeyMode::Minor : KeyMode::Major;
}

bool formarmonia::arpeggio() const
{
    return m_arpeggioOption->isChecked();
}

NoteRow formarmonia::triadOf(int degree) const
{
    return degreeTriad(tonic(), mode(), degree, m_twoRoots->isChecked());
}

void formarmonia::makeQuestion(int index)
{
    QuestionDegree = index;
    QuestionNotes = triadOf(index);
}

bool formarmonia::playQuestion()
{
    return playNotes(QuestionNotes, arpeggio());
}

void formarmonia::practise(int index)
{
    QuestionNotes = triadOf(index);
    if (!playQuestion())
        return;
    QuestionDegree = index;
}

QString formarmonia::revealText() const
{
    // The quality comes from the key selected now, which need not be the key
    // the chord was built in.
    const int distance = QuestionNotes.root() - tonic();
    return rootName(QuestionNotes.root()) + QString::fromLatin1(triadQuality(mode(), distance))
        + QStringLiteral(" (%1)").arg(QString::fromLatin1(entry(QuestionDegree).revealName));
}

} // namespace tonaro
