#include "formmelody.h"

#include "PianoKey.h"
#include "PianoKeyboard.h"
#include "exercise/PlayedAnswer.h"
#include "exercise/RandomSource.h"
#include "midi/Midi_interface.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

namespace tonaro {

namespace {

const PanelTraits MelodyTraits{
    .clearOnNew = PanelTraits::ClearOnNew::ByWindow,
    .answerOrder = PanelTraits::AnswerOrder::RevealAfterScore,
    .noanswersClearsLabels = true,
    .initEnablesAutoNew = false,
    .letterKeys = true,
    .showLabelPointSize = 16.5,
    .rightAnswersCaptionName = "Label2",
    .secondSlider = {"slidermultinotes", "slidermultinoteslabel", 0, 3000, 100, 100, 250, 1250},
};

// Boxes as bits: bit k stands for the box of index k.
constexpr unsigned bits(std::initializer_list<int> indices)
{
    unsigned mask = 0;
    for (int index : indices)
        mask |= 1u << index;
    return mask;
}

// A preset button and the boxes it leaves ticked, whatever was ticked before.
struct Preset {
    const char *name;
    const char *caption;
    unsigned ticked;
};

constexpr unsigned AllNotes = bits({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
constexpr unsigned CMajor = bits({0, 2, 4, 5, 7, 9, 11});
constexpr unsigned Guitar = bits({3, 4, 5, 6});      // notes 48 to 95
constexpr unsigned Piano = bits({2, 3, 4, 5, 6, 7});  // notes 36 to 107

constexpr std::array<Preset, 3> NotePresets{{
    {"Command13", "ALL", AllNotes}, {"Command14", "C major", CMajor}, {"Command15", "NONE", 0}}};
constexpr std::array<Preset, 4> OctavePresets{{
    {"Command16", "ALL", bits({0, 1, 2, 3, 4, 5, 6, 7, 8, 9})}, {"Command17", "NONE", 0},
    {"Command18", "Guitar", Guitar}, {"Command19", "Piano", Piano}}};

// The letters that answer, with the key each stands for alone and with Ctrl
// alone (E and B have no sharp: Ctrl changes nothing).
struct LetterKey {
    int key;
    int plain;
    int withCtrl;
};
constexpr std::array<LetterKey, 7> LetterKeys{{
    {Qt::Key_C, 0, 1}, {Qt::Key_D, 2, 3}, {Qt::Key_E, 4, 4}, {Qt::Key_F, 5, 6},
    {Qt::Key_G, 7, 8}, {Qt::Key_A, 9, 10}, {Qt::Key_B, 11, 11}}};

template<std::size_t N>
void tick(const std::array<QCheckBox *, N> &boxes, unsigned mask)
{
    for (std::size_t i = 0; i < N; ++i)
        boxes[i]->setChecked(mask & (1u << i));
}

template<std::size_t N>
std::vector<int> ticked(const std::array<QCheckBox *, N> &boxes)
{
    std::vector<int> indices;
    for (std::size_t i = 0; i < N; ++i) {
        if (boxes[i]->isChecked())
            indices.push_back(int(i));
    }
    return indices;
}

QGridLayout *compactGrid(QWidget *frame)
{
    auto *grid = new QGridLayout(frame);
    grid->setContentsMargins(6, 2, 6, 4);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(0);
    return grid;
}

// Lays the boxes out in rows of three, with the preset buttons in a column
// of their own on the right. Both frames have an "ALL" and a "NONE": a
// screen reader says which boxes a preset acts on.
template<std::size_t N, std::size_t P>
void fillFrame(QGroupBox *frame, std::array<QCheckBox *, N> &boxes, const char *name,
               const std::array<const char *, N> &captions, const std::array<Preset, P> &presets,
               std::array<QPushButton *, P> &buttons, const QString &boxesSpoken)
{
    constexpr int Columns = 3;
    auto *grid = compactGrid(frame);
    for (std::size_t i = 0; i < N; ++i) {
        boxes[i] = new QCheckBox(QLatin1String(captions[i]), frame);
        boxes[i]->setObjectName(QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i));
        grid->addWidget(boxes[i], int(i) / Columns, int(i) % Columns);
    }
    for (std::size_t p = 0; p < P; ++p) {
        buttons[p] = new QPushButton(QLatin1String(presets[p].caption), frame);
        buttons[p]->setObjectName(QLatin1String(presets[p].name));
        buttons[p]->setAccessibleName(QStringLiteral("%1 %2").arg(buttons[p]->text(), boxesSpoken));
        grid->addWidget(buttons[p], int(p), Columns);
    }
    grid->setColumnStretch(Columns, 1);
}

} // namespace

formmelody::formmelody(const Services &services, QWidget *parent)
    : ExercisePanel(services, MelodyTraits, parent)
{
    setObjectName(QStringLiteral("formmelody"));
    setWindowTitle(tr("Melody"));

    auto *top = new QVBoxLayout(topArea());
    top->setContentsMargins(0, 0, 0, 0);
    m_keyboard = new PianoKeyboard(topArea());
    top->addWidget(m_keyboard);
    for (int k = 0; k < melody::PitchClassCount; ++k)
        connect(m_keyboard->keys()[std::size_t(k)], &QAbstractButton::clicked, this, [this, k] { tasto_Click(k); });

    auto *column = new QVBoxLayout(exerciseArea());
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(buildNotesFrame());
    column->addWidget(buildOctavesFrame());
    column->addWidget(buildCountRow());
    column->addWidget(buildDelayFrame());
    column->addStretch();
}

QGroupBox *formmelody::buildNotesFrame()
{
    auto *frame = new QGroupBox(tr("Notes"), exerciseArea());
    frame->setObjectName(QStringLiteral("notesframe"));
    std::array<QPushButton *, NotePresets.size()> buttons{};
    fillFrame(frame, m_noteBoxes, "Nota", melody::KeyCaptions, NotePresets, buttons, tr("notes"));
    for (std::size_t p = 0; p < buttons.size(); ++p)
        connect(buttons[p], &QPushButton::clicked, this, [this, p] { tick(m_noteBoxes, NotePresets[p].ticked); });
    return frame;
}

QGroupBox *formmelody::buildOctavesFrame()
{
    auto *frame = new QGroupBox(tr("Octaves"), exerciseArea());
    frame->setObjectName(QStringLiteral("octavesframe"));
    std::array<QPushButton *, OctavePresets.size()> buttons{};
    fillFrame(frame, m_octaveBoxes, "octave", melody::OctaveCaptions, OctavePresets, buttons, tr("octaves"));
    for (std::size_t p = 0; p < buttons.size(); ++p)
        connect(buttons[p], &QPushButton::clicked, this, [this, p] { tick(m_octaveBoxes, OctavePresets[p].ticked); });
    return frame;
}

QWidget *formmelody::buildCountRow()
{
    auto *row = new QWidget(exerciseArea());
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(6, 0, 6, 0);
    auto *label = new QLabel(tr("N° of notes"), row);
    label->setObjectName(QStringLiteral("nnoteslabel"));
    m_nnotesCombo = new QComboBox(row);
    m_nnotesCombo->setObjectName(QStringLiteral("nnotescombo"));
    // The user may also type a number; what is typed is never added to the list.
    m_nnotesCombo->setEditable(true);
    m_nnotesCombo->setInsertPolicy(QComboBox::NoInsert);
    for (int n = 1; n <= melody::MaxNotes; ++n)
        m_nnotesCombo->addItem(QString::number(n));
    label->setBuddy(m_nnotesCombo);
    layout->addWidget(label);
    layout->addWidget(m_nnotesCombo);
    layout->addStretch();
    connect(m_nnotesCombo, &QComboBox::currentIndexChanged, this, &formmelody::nnotescombo_Click);
    return row;
}

QGroupBox *formmelody::buildDelayFrame()
{
    auto *frame = new QGroupBox(tr("Multiple notes delay [ms]"), exerciseArea());
    frame->setObjectName(QStringLiteral("delayframe"));
    m_secondSlider->setAccessibleName(tr("Multiple notes delay in milliseconds"));
    auto *row = new QHBoxLayout(frame);
    row->setContentsMargins(6, 2, 6, 2);
    row->addWidget(m_secondSlider, 1);
    row->addWidget(m_secondSliderLabel);
    return frame;
}

void formmelody::init()
{
    // Sliders and their labels, Reveal and Repeat, test mode, Answered.
    initPanel();
    for (QLabel *label : {m_questions, m_answers, m_rightAnswers})
        setCounter(label, 0);
    m_nnotesCombo->setCurrentIndex(0);
    nnotescombo_Click();
    tickPresets(CMajor, Guitar);
}

void formmelody::tickPresets(unsigned notes, unsigned octaves)
{
    tick(m_noteBoxes, notes);
    tick(m_octaveBoxes, octaves);
}

void formmelody::nnotescombo_Click()
{
    const bool several = m_nnotesCombo->currentIndex() > 0;
    m_secondSlider->setEnabled(several);
    m_secondSliderLabel->setEnabled(several);
}

int formmelody::chosenItem() const
{
    // Typed text that is no item leaves the box without a choice (-1).
    return m_nnotesCombo->findText(m_nnotesCombo->currentText(), Qt::MatchExactly);
}

void formmelody::playNote(int note)
{
    m_services.midi.NoteOn(m_services.midi.MidiChannel, std::int16_t(melody::playableNote(note)),
                           m_services.midi.MidiVolume);
}

void formmelody::New_Click()
{
    m_question.nnotes = std::int16_t(chosenItem() + 1);
    // A new question starts with no keys counted and no answer on the piano.
    m_question.nclicks = 0;
    m_keyboard->clearAnswer();
    // The count is taken once: a New clicked during a gap asks its own
    // question, and this one then plays on to its own end.
    const int count = m_question.nnotes;
    for (int i = 0; i < count; ++i) {
        clearLabels();
        const std::vector<int> octaveBoxes = ticked(m_octaveBoxes);
        if (octaveBoxes.empty())
            return;
        // Octave first, then pitch class: each its own draw after its own reseed.
        const int octave = m_services.random.pick(octaveBoxes) + 1;
        const std::vector<int> pitchClasses = ticked(m_noteBoxes);
        if (pitchClasses.empty())
            return;
        const int pitchClass = m_services.random.pick(pitchClasses);
        const int note = melody::noteNumber(octave, pitchClass);
        playNote(note);
        // Repeat and Reveal become usable once a note has sounded; in test
        // mode each note counts as a question.
        beginNew();
        countQuestion();
        if (i < m_question.nnotes - 1 && !waitMs(m_secondSlider->value(), true))
            return;
        m_question.notes[std::size_t(i)] = std::int16_t(note);
    }
}

void formmelody::Repeat_Click()
{
    const int count = m_question.nnotes;
    for (int i = 0; i < count; ++i) {
        playNote(m_question.notes[std::size_t(i)]);
        if (i < m_question.nnotes - 1 && !waitMs(m_secondSlider->value(), true))
            return;
    }
}

void formmelody::tasto_Click(int index)
{
    if (!isTestMode()) {
        playNote(melody::PracticeBaseNote + index);
        return;
    }
    if (!m_question.addClick(index) || Answered)
        return;
    answer(m_question.isRight(), m_question.nnotes);
}

void formmelody::answerLetter(int key, bool ctrlAlone)
{
    for (const LetterKey &letter : LetterKeys) {
        if (letter.key == key) {
            tasto_Click(ctrlAlone ? letter.withCtrl : letter.plain);
            return;
        }
    }
}

void formmelody::onReset()
{
    m_question.nclicks = 0;
    m_keyboard->clearAnswer();
}

void formmelody::onRevealed()
{
    // Reveal shows the notes on the piano as well as in words.
    const int count = std::clamp<int>(m_question.nnotes, 0, melody::MaxNotes);
    std::array<int, melody::MaxNotes> notes{};
    std::copy_n(m_question.notes.begin(), count, notes.begin());
    m_keyboard->showAnswer(std::span<const int>(notes.data(), std::size_t(count)));
}

void formmelody::playedNote(int note, MidiInput::Moment)
{
    // In practice mode too: a played key sounds as a clicked one does.
    const int single[] = {note};
    if (const played::Reading key = played::keyOf(single))
        tasto_Click(*key);
}

} // namespace tonaro
