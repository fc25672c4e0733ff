#include "CatalogueExercise.h"

#include "PlayButton.h"
#include "PlayedNotes.h"
#include "RandomSource.h"
#include "RootChoice.h"
#include "midi/Midi_interface.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QButtonGroup>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStyle>
#include <QVBoxLayout>

namespace tonaro {

namespace {

QString arrayName(const char *name, int index)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(index);
}

} // namespace

CatalogueExercise::CatalogueExercise(const Services &services, const PanelTraits &traits,
                                     std::span<const CatalogueEntry> catalogue,
                                     std::span<const CataloguePreset> presets, const CatalogueView &view,
                                     QWidget *parent)
    : ExercisePanel(services, traits, parent)
    , m_catalogue(catalogue)
    , m_presets(presets)
{
    buildCatalogueFrame(view);
}

void CatalogueExercise::buildCatalogueFrame(const CatalogueView &view)
{
    m_frame = new QGroupBox(QString::fromLatin1(view.frameCaption), exerciseArea());
    m_frame->setObjectName(QStringLiteral("Frame1"));
    auto *grid = new QGridLayout(m_frame);
    grid->setContentsMargins(6, 2, 6, 4);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(0);

    // The answer buttons form a group for the arrow keys, as option buttons
    // do: a keyboard user moves from answer to answer in a few presses,
    // while Tab still runs through the rows in reading order.
    auto *answers = new QButtonGroup(this);
    answers->setExclusive(false);
    const int count = int(m_catalogue.size());
    for (int index = 0; index < count; ++index) {
        const CatalogueEntry &row = m_catalogue[std::size_t(index)];
        auto *check = new QCheckBox(QString::fromLatin1(row.caption), m_frame);
        check->setObjectName(arrayName(view.boxName, index));
        auto *play = new PlayButton(m_frame);
        play->setObjectName(arrayName(view.buttonName, index));
        answers->addButton(play, index);
        const QString spoken = tr("Play %1").arg(QString::fromLatin1(row.revealName));
        play->setAccessibleName(spoken);
        play->setToolTip(spoken);
        // Compact rows, but never lower than the box's caption in the font in use.
        if (view.rowHeight > 0)
            check->setFixedHeight(std::max(view.rowHeight, check->sizeHint().height()));

        const int column = 2 * (index / view.rowsPerColumn);
        const int line = index % view.rowsPerColumn;
        grid->addWidget(check, line, column);
        grid->addWidget(play, line, column + 1, Qt::AlignLeft | Qt::AlignVCenter);
        connect(play, &QPushButton::clicked, this, [this, index] { play_Click(index); });
        m_boxes.push_back(check);
    }
    const int columns = 2 * ((count + view.rowsPerColumn - 1) / view.rowsPerColumn);
    for (int column = 0; column < columns; column += 2)
        grid->setColumnStretch(column, 1);

    // The preset buttons stand below the rows, one above the other, as
    // compact as the rows where the window is short of height.
    int line = std::min(count, view.rowsPerColumn);
    for (const CataloguePreset &preset : m_presets) {
        auto *button = new QPushButton(QString::fromLatin1(preset.caption), m_frame);
        button->setObjectName(QString::fromLatin1(preset.name));
        if (view.rowHeight > 0)
            button->setFixedHeight(std::max(view.rowHeight + 2, button->sizeHint().height()));
        grid->addWidget(button, line++, 0, 1, columns);
        connect(button, &QPushButton::clicked, this, [this, &preset] { applyPreset(preset); });
    }
}

std::vector<int> CatalogueExercise::tickedEntries() const
{
    std::vector<int> ticked;
    for (std::size_t index = 0; index < m_boxes.size(); ++index)
        if (m_boxes[index]->isChecked())
            ticked.push_back(int(index));
    return ticked;
}

void CatalogueExercise::applyPreset(const CataloguePreset &preset)
{
    for (std::size_t index = 0; index < m_boxes.size(); ++index) {
        const bool member = contains(preset.boxes, int(index));
        switch (preset.action) {
        case CataloguePreset::Action::Tick:
            if (member)
                m_boxes[index]->setChecked(true);
            break;
        case CataloguePreset::Action::Untick:
            if (member)
                m_boxes[index]->setChecked(false);
            break;
        case CataloguePreset::Action::SetExactly:
            m_boxes[index]->setChecked(member);
            break;
        }
    }
}

void CatalogueExercise::New_Click()
{
    // A new question starts with no played notes gathered.
    onReset();
    beginNew();
    const std::vector<int> ticked = tickedEntries();
    if (ticked.empty())
        return;
    makeQuestion(m_services.random.pick(ticked));
    if (!playQuestion())
        return;
    countQuestion();
}

void CatalogueExercise::Repeat_Click()
{
    playQuestion();
}

void CatalogueExercise::play_Click(int index)
{
    if (!isTestMode()) {
        practise(index);
        return;
    }
    if (Answered)
        return;
    answer(index == questionIndex());
}

void CatalogueExercise::readPlayedNotesAs(PlayedAnswer::Gesture gesture, PlayedAnswer::Reader reader)
{
    // The played answer goes through the button it stands for; a reading that
    // matches no button is an index no question has, judged wrong.
    m_played = new PlayedNotes(PlayedAnswer(gesture, std::move(reader)), [this](int index) {
        if (isTestMode())
            play_Click(index);
    }, this);
}

void CatalogueExercise::playedNote(int note, MidiInput::Moment struck)
{
    if (!m_played)
        return;
    if (isTestMode())
        m_played->add(note, struck);
    else
        m_played->clear();
}

void CatalogueExercise::onReset()
{
    if (m_played)
        m_played->clear();
}

QComboBox *CatalogueExercise::makeRootList(bool withRandom)
{
    m_rootList = new QComboBox(exerciseArea());
    m_rootList->setObjectName(QStringLiteral("Combo1"));
    m_rootList->setEditable(false);
    m_rootList->addItems(roots::listItems(withRandom));
    return m_rootList;
}

QHBoxLayout *CatalogueExercise::makeRootRow(const char *labelName)
{
    auto *label = new QLabel(tr("Root"), exerciseArea());
    label->setObjectName(QString::fromLatin1(labelName));
    QComboBox *roots = makeRootList(true);
    label->setBuddy(roots);
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(roots, 1);
    return row;
}

QRadioButton *CatalogueExercise::makeOption(const QString &caption, const char *name, QWidget *frame)
{
    auto *button = new QRadioButton(caption, frame);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

namespace {

void addPart(QBoxLayout *column, QObject *part)
{
    if (auto *layout = qobject_cast<QLayout *>(part))
        column->addLayout(layout);
    else
        column->addWidget(static_cast<QWidget *>(part));
}

} // namespace

void CatalogueExercise::stackColumn(int spacing, std::initializer_list<QObject *> parts,
                                    std::initializer_list<QObject *> underPanel)
{
    for (QObject *part : underPanel)
        addPart(panelColumn(), part);
    auto *column = new QVBoxLayout(exerciseArea());
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing);
    column->addWidget(m_frame);
    for (QObject *part : parts)
        addPart(column, part);
    column->addStretch();
}

int CatalogueExercise::listRoot()
{
    return roots::rootOfItem(m_rootList->currentIndex(), m_services.random);
}

int CatalogueExercise::practiceRoot(int questionRoot)
{
    const int fallback = listRoot();
    return questionRoot != 0 ? questionRoot : fallback;
}

QGroupBox *CatalogueExercise::makeSliderFrame(const QString &caption, bool labelBelow)
{
    auto *frame = new QGroupBox(caption, exerciseArea());
    frame->setObjectName(QStringLiteral("Frame3"));
    auto *grid = new QGridLayout(frame);
    grid->setContentsMargins(6, 2, 6, 4);
    grid->setSpacing(2);
    grid->addWidget(m_secondSlider, 0, 0);
    if (labelBelow) {
        m_secondSliderLabel->setAlignment(Qt::AlignCenter);
        grid->addWidget(m_secondSliderLabel, 1, 0);
    } else {
        grid->addWidget(m_secondSliderLabel, 0, 1);
    }
    return frame;
}

void CatalogueExercise::playNote(int note)
{
    Midi_interface &midi = m_services.midi;
    midi.NoteOn(midi.MidiChannel, std::int16_t(note), midi.MidiVolume);
}

bool CatalogueExercise::playNotes(NoteRow row, bool withGaps)
{
    for (int k = 0; k < row.count; ++k) {
        playNote(row.notes[std::size_t(k)]);
        if (withGaps && !waitMs(m_secondSlider->value(), false))
            return false;
    }
    return true;
}

} // namespace tonaro
