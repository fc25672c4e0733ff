#include "TestServices.h"

#include "exercise/RootNames.h"
#include "exercise/WaitMs.h"
#include "exercises/Formchords/ChordCatalogue.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/Formscales/ScaleCatalogue.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/IntervalCatalogue.h"
#include "exercises/formintervalli/formintervalli.h"
#include "midi/MidiMessages.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <functional>
#include <numeric>

using namespace tonaro;
using test::child;
using test::click;

namespace {

// The recorder with a hook on every note-on: the only way to stand in for
// the program closing while a wait that processes no events is running.
class HookedPlatform : public RecordingMidiPlatform
{
public:
    std::function<void()> onNote;

    int sendShortMessage(MidiHandle handle, std::uint32_t message) override
    {
        const int result = RecordingMidiPlatform::sendShortMessage(handle, message);
        if (onNote && (message & midi::StatusTypeMask) == midi::NoteOnStatus)
            onNote();
        return result;
    }
};

// One catalogue window on the hooked recorder, loaded, in test mode.
struct Fixture {
    HookedPlatform platform;
    RecordingMessageBoxes boxes;
    ScriptedRandomSource random;
    Midi_interface midi{platform, boxes};
    Services services{midi, boxes, random};
    QPointer<CatalogueExercise> w;
    QString playName = "playchord";

    explicit Fixture(const QString &window)
    {
        setWaitScale(0);
        midi.MidiChannel = 1;
        midi.MidiVolume = 100;
        midi.ToggleMidiOut();
        if (window == "formintervalli") {
            w = new formintervalli(services);
            playName = "playint";
        } else if (window == "Formchords") {
            w = new Formchords(services);
        } else if (window == "Formscales") {
            w = new Formscales(services);
            playName = "playscale";
        } else {
            w = new formarmonia(services);
        }
        w->Form_Load();
        w->show();
        platform.clear();
    }
    ~Fixture()
    {
        delete w;
        resumeWaits();
        setWaitScale(0);
    }
    template<typename T = QAbstractButton>
    T *get(const QString &name) { return child<T>(w, name); }
    QAbstractButton *playButton(int index) { return get(QStringLiteral("%1_%2").arg(playName).arg(index)); }
    QList<QCheckBox *> checkBoxes() { return w->findChildren<QCheckBox *>(QRegularExpression("^[a-z]+_\\d+$")); }
    QList<int> ticked()
    {
        QList<int> indexes;
        for (QCheckBox *box : checkBoxes())
            if (box->isChecked())
                indexes << box->objectName().section('_', 1).toInt();
        return indexes;
    }
    QSlider *gapSlider() { return w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).constFirst(); }
    QList<int> played() const
    {
        QList<int> notes;
        for (const auto &record : platform.notesOn())
            notes << record.data1();
        return notes;
    }
    int notes() const { return int(platform.notesOn().size()); }
};

QList<int> range(int first, int last)
{
    QList<int> indexes(last - first + 1);
    std::iota(indexes.begin(), indexes.end(), first);
    return indexes;
}

const QStringList Windows{"formintervalli", "Formchords", "Formscales", "formarmonia"};

} // namespace

class CatalogueTest : public QObject
{
    Q_OBJECT

private slots:
    void tablesHoldTogether();
    void windowsShowTheirCatalogue_data();
    void windowsShowTheirCatalogue();
    void presetsSetTheirBoxes_data();
    void presetsSetTheirBoxes();
    void everyEntryPlaysItsNotes_data();
    void everyEntryPlaysItsNotes();
    void nothingTickedKeepsTheEmptyRecord_data();
    void nothingTickedKeepsTheEmptyRecord();
    void answerIsJudgedOnceAndAutoNewFollows_data();
    void answerIsJudgedOnceAndAutoNewFollows();
    void waitsLetEventsThroughOnlyInTheIntervalGap_data();
    void waitsLetEventsThroughOnlyInTheIntervalGap();
    void deletionDuringAnEventWaitEndsTheSequence_data();
    void deletionDuringAnEventWaitEndsTheSequence();
};

void CatalogueTest::tablesHoldTogether()
{
    for (std::size_t i = 0; i < IntervalCatalogue.size(); ++i) {
        QCOMPARE(IntervalCatalogue[i].steps.count(), 1);
        QCOMPARE(IntervalCatalogue[i].steps[0], int(i));
    }
    for (const CatalogueEntry &chord : ChordCatalogue) {
        QVERIFY2(chord.steps.count() >= 2 && chord.steps.count() <= 5, chord.caption);
        QVERIFY2(std::all_of(chord.steps.begin(), chord.steps.end(), [](int step) { return step > 0; }), chord.caption);
        QVERIFY2(std::accumulate(chord.steps.begin(), chord.steps.end(), 0) <= 21, chord.caption);
    }
    for (const CatalogueEntry &scale : ScaleCatalogue) {
        QVERIFY2(std::all_of(scale.steps.begin(), scale.steps.end(), [](int step) { return step > 0; }), scale.caption);
        QVERIFY2(std::accumulate(scale.steps.begin(), scale.steps.end(), 0) == 12, scale.caption);
    }
    // Each key is an octave of seven steps carried on by its first three, and
    // the quality table knows every triad it builds, in every key.
    for (const KeyMode mode : {KeyMode::Major, KeyMode::Minor}) {
        const auto &steps = ModeSteps[std::size_t(mode)];
        QCOMPARE(std::accumulate(steps.begin(), steps.begin() + 7, 0), 12);
        QVERIFY(std::equal(steps.begin() + 7, steps.end(), steps.begin()));
        for (int tonic = 54; tonic <= 65; ++tonic)
            for (int degree = 0; degree < 7; ++degree)
                QVERIFY(*triadQuality(mode, degreeTriad(tonic, mode, degree, false).root() - tonic) != '\0');
    }
    QCOMPARE(rootName(58), "A#");
    QCOMPARE(rootName(54), "F#");
}

void CatalogueTest::windowsShowTheirCatalogue_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<QString>("boxName");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("captions");
    QTest::addColumn<QStringList>("spoken");

    const auto spoken = [](const auto &table) {
        QStringList list;
        for (const CatalogueEntry &entry : table)
            list << QString::fromLatin1(entry.revealName);
        return list;
    };
    QTest::newRow("intervals") << "formintervalli" << "inter" << 13
        << QStringList{"Unison", "2nd minor", "2nd major", "3rd minor", "3rd major", "4th perfect", "5th diminished",
                       "5th perfect", "6th minor", "6th major", "7th minor", "7th major", "Octave"}
        << spoken(IntervalCatalogue);
    QTest::newRow("chords") << "Formchords" << "chord" << 20
        << QStringList{"maj", "min", "7", "maj7", "min7", "sus4", "7sus4", "6", "min6", "9", "min9", "dim", "aug",
                       "maj9", "7-5", "7+5", "7+9", "7-9", "11", "13"}
        << spoken(ChordCatalogue);
    QTest::newRow("scales") << "Formscales" << "scales" << 18
        << QStringList{"Major", "Minor", "Armonic Minor", "Melodic Minor", "Major Pentatonic", "Minor Pentatonic",
                       "Diminished", "Exatonal", "Cromatic", "Major Neapolitan", "Minor Neapolitan", "Enigmatic",
                       "Ungarian", "Doric", "Frigian", "Lydian", "Mixolydian", "Locrian"}
        << spoken(ScaleCatalogue);
    const QStringList degrees{"I", "II", "III", "IV", "V", "VI", "VII"};
    QTest::newRow("degrees") << "formarmonia" << "chord" << 7 << degrees << degrees;
    QCOMPARE(IntervalCatalogue[5].revealName, "Perfect 4th");
    QCOMPARE(IntervalCatalogue[7].revealName, "Perfect 5th");
}

void CatalogueTest::windowsShowTheirCatalogue()
{
    QFETCH(QString, window);
    QFETCH(QString, boxName);
    QFETCH(int, count);
    QFETCH(QStringList, captions);
    QFETCH(QStringList, spoken);

    Fixture fx(window);
    QCOMPARE(fx.checkBoxes().size(), count);
    QCOMPARE(captions.size(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(fx.get<QCheckBox>(QStringLiteral("%1_%2").arg(boxName).arg(i))->text(), captions[i]);
        QAbstractButton *play = fx.playButton(i);
        QCOMPARE(play->accessibleName(), "Play " + spoken[i]);
        QVERIFY(play->text().isEmpty() && !play->icon().isNull());
    }
}

void CatalogueTest::presetsSetTheirBoxes_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QList<int>>("after");

    QTest::newRow("intervals: All") << "formintervalli" << QList<int>{} << "All" << range(0, 12);
    QTest::newRow("intervals: None") << "formintervalli" << range(0, 12) << "None" << QList<int>{};
    QTest::newRow("intervals: Main intervals") << "formintervalli" << range(0, 12) << "mainintervals"
                                               << QList{0, 2, 4, 5, 7, 9, 11, 12};
    QTest::newRow("chords: All") << "Formchords" << QList{3} << "All" << range(0, 19);
    QTest::newRow("chords: None") << "Formchords" << range(0, 19) << "None" << QList<int>{};
    QTest::newRow("chords: Triads") << "Formchords" << range(0, 19) << "Triads" << QList{0, 1, 11, 12};
    QTest::newRow("chords: Main") << "Formchords" << range(0, 19) << "mainbutton" << range(0, 6);
    QTest::newRow("scales: All Scales keeps modes") << "Formscales" << QList{14} << "Allscales" << range(0, 12) + QList{14};
    QTest::newRow("scales: All Modes keeps scales") << "Formscales" << QList{2} << "Allmodes" << QList{2} + range(13, 17);
    QTest::newRow("scales: Main Scales") << "Formscales" << range(0, 17) << "Main" << range(0, 6);
    QTest::newRow("scales: None") << "Formscales" << range(0, 17) << "Nonescales" << QList<int>{};
}

void CatalogueTest::presetsSetTheirBoxes()
{
    QFETCH(QString, window);
    QFETCH(QList<int>, before);
    QFETCH(QString, preset);
    QFETCH(QList<int>, after);

    Fixture fx(window);
    for (QCheckBox *box : fx.checkBoxes())
        box->setChecked(before.contains(box->objectName().section('_', 1).toInt()));
    click(fx.get(preset));
    QCOMPARE(fx.ticked(), after);
}

void CatalogueTest::everyEntryPlaysItsNotes_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<int>("index");
    QTest::addColumn<QList<int>>("semitones");

    const QList<QList<int>> chords{
        {0, 4, 7}, {0, 3, 7}, {0, 4, 7, 10}, {0, 4, 7, 11}, {0, 3, 7, 10}, {0, 5, 7}, {0, 5, 7, 10},
        {0, 4, 7, 9}, {0, 3, 7, 9}, {0, 4, 7, 10, 14}, {0, 3, 7, 10, 14}, {0, 3, 6}, {0, 4, 8},
        {0, 4, 7, 11, 14}, {0, 4, 6, 10}, {0, 4, 8, 10}, {0, 4, 7, 10, 15}, {0, 4, 7, 10, 13},
        {0, 4, 7, 10, 14, 17}, {0, 4, 7, 10, 14, 21}};
    const QList<QList<int>> scales{
        {0, 2, 4, 5, 7, 9, 11, 12}, {0, 2, 3, 5, 7, 8, 10, 12}, {0, 2, 3, 5, 7, 8, 11, 12},
        {0, 2, 3, 5, 7, 9, 11, 12}, {0, 2, 4, 7, 9, 12}, {0, 3, 5, 7, 10, 12}, {0, 2, 3, 5, 6, 8, 9, 11, 12},
        {0, 2, 4, 6, 8, 10, 12}, range(0, 12), {0, 1, 3, 5, 7, 9, 11, 12}, {0, 1, 3, 5, 7, 8, 11, 12},
        {0, 1, 4, 6, 8, 10, 11, 12}, {0, 2, 3, 6, 7, 8, 11, 12}, {0, 2, 3, 5, 7, 9, 10, 12},
        {0, 1, 3, 5, 7, 8, 10, 12}, {0, 2, 4, 6, 7, 9, 11, 12}, {0, 2, 4, 5, 7, 9, 10, 12},
        {0, 1, 3, 5, 6, 8, 10, 12}};
    for (int i = 0; i < chords.size(); ++i)
        QTest::addRow("chord %s", ChordCatalogue[std::size_t(i)].caption) << "Formchords" << i << chords[i];
    for (int i = 0; i < scales.size(); ++i)
        QTest::addRow("scale %s", ScaleCatalogue[std::size_t(i)].caption) << "Formscales" << i << scales[i];
}

// On "Fixed C" before any question, a practice click plays the entry from 60.
void CatalogueTest::everyEntryPlaysItsNotes()
{
    QFETCH(QString, window);
    QFETCH(int, index);
    QFETCH(QList<int>, semitones);

    Fixture fx(window);
    click(fx.get("Notest"));
    fx.w->play_Click(index);
    QList<int> expected;
    for (int semitone : semitones)
        expected << 60 + semitone;
    QCOMPARE(fx.played(), expected);
}

void CatalogueTest::nothingTickedKeepsTheEmptyRecord_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<QList<int>>("repeated");
    QTest::addColumn<QString>("reveal");

    QTest::newRow("intervals") << "formintervalli" << QList{0, 0} << "Unison";
    QTest::newRow("chords") << "Formchords" << QList<int>{} << "C maj";
    QTest::newRow("scales") << "Formscales" << QList<int>{} << "C major";
    QTest::newRow("harmony") << "formarmonia" << QList<int>{} << "C (I)";
}

void CatalogueTest::nothingTickedKeepsTheEmptyRecord()
{
    QFETCH(QString, window);
    QFETCH(QList<int>, repeated);
    QFETCH(QString, reveal);

    Fixture fx(window);
    for (QCheckBox *box : fx.checkBoxes())
        box->setChecked(false);
    click(fx.get("New"));
    QVERIFY(fx.get("Repeat")->isEnabled());
    QCOMPARE(fx.get<QLabel>("questlabel")->text(), "0");
    QCOMPARE(fx.random.drawsMade(), 0);
    click(fx.get("Repeat"));
    QCOMPARE(fx.played(), repeated);

    click(fx.get("Notest"));
    click(fx.get("New"));
    click(fx.get("Reveal"));
    QCOMPARE(fx.get<QLabel>("showlabel")->text(), reveal);
}

void CatalogueTest::answerIsJudgedOnceAndAutoNewFollows_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<bool>("labelsKept");

    QTest::newRow("intervals") << "formintervalli" << true;
    QTest::newRow("chords") << "Formchords" << true;
    QTest::newRow("scales") << "Formscales" << false;
    QTest::newRow("harmony") << "formarmonia" << false;
}

// A right answer is scored once; the automatic New that follows keeps the
// verdict and the answer in view only in the interval and chord windows.
void CatalogueTest::answerIsJudgedOnceAndAutoNewFollows()
{
    QFETCH(QString, window);
    QFETCH(bool, labelsKept);

    Fixture fx(window);
    click(fx.get("New"));
    const int first = fx.ticked().constFirst();
    fx.platform.clear();
    click(fx.playButton(first));
    QCOMPARE(fx.get<QLabel>("rightanslabel")->text(), "1");
    QCOMPARE(fx.get<QLabel>("questlabel")->text(), "2");
    QCOMPARE(fx.get<QLabel>("perclabel")->text(), "100");
    QVERIFY2(fx.notes() > 0, "Auto NEW asked no question");
    QCOMPARE(fx.get<QLabel>("rightwronglabel")->text(), labelsKept ? "Right!" : "");
    QCOMPARE(fx.get<QLabel>("showlabel")->text().isEmpty(), !labelsKept);

    // The new question is pending: one wrong answer, then nothing more.
    fx.get<QCheckBox>("autonewcheck")->setChecked(false);
    fx.platform.clear();
    for (int click_ = 0; click_ < 2; ++click_)
        click(fx.playButton(first + 1));
    QCOMPARE(fx.get<QLabel>("anslabel")->text(), "2");
    QCOMPARE(fx.get<QLabel>("rightwronglabel")->text(), "Wrong!");
    QCOMPARE(fx.get<QLabel>("perclabel")->text(), "50");
    QCOMPARE(fx.notes(), 0);
}

void CatalogueTest::waitsLetEventsThroughOnlyInTheIntervalGap_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<QStringList>("setup");
    QTest::addColumn<QString>("trigger");
    QTest::addColumn<int>("notesBeforeEvents");

    QTest::newRow("interval question gap") << "formintervalli" << QStringList{} << "New" << 1;
    QTest::newRow("interval practice gap") << "formintervalli" << QStringList{"Notest"} << "play" << 2;
    QTest::newRow("chord arpeggio") << "Formchords" << QStringList{"Arpeggiooption"} << "New" << 3;
    QTest::newRow("chord practice arpeggio") << "Formchords" << QStringList{"Notest", "Arpeggiooption"} << "play" << 3;
    QTest::newRow("scale") << "Formscales" << QStringList{} << "New" << 8;
    QTest::newRow("scale practice") << "Formscales" << QStringList{"Notest"} << "play" << 8;
    QTest::newRow("harmony arpeggio") << "formarmonia" << QStringList{"Arpeggiooption"} << "New" << 3;
    QTest::newRow("harmony practice arpeggio") << "formarmonia" << QStringList{"Notest", "Arpeggiooption"} << "play" << 3;
}

// An event posted as the playing starts runs inside a wait that processes
// events, and only after the whole sequence where the waits do not. When
// the program closes during any of these waits, the sequence ends there and
// a question is not counted.
void CatalogueTest::waitsLetEventsThroughOnlyInTheIntervalGap()
{
    QFETCH(QString, window);
    QFETCH(QStringList, setup);
    QFETCH(QString, trigger);
    QFETCH(int, notesBeforeEvents);

    for (const bool closing : {false, true}) {
        Fixture fx(window);
        for (const QString &control : setup)
            click(fx.get(control));
        fx.gapSlider()->setValue(20);
        fx.platform.clear();
        setWaitScale(1);
        int notesWhenRun = -1;
        QMetaObject::invokeMethod(fx.w, [&] { notesWhenRun = fx.notes(); }, Qt::QueuedConnection);
        if (closing)
            fx.platform.onNote = [] { abandonWaits(); };
        if (trigger == "New")
            fx.w->New_Click();
        else
            fx.w->play_Click(0);
        QCoreApplication::processEvents();
        if (closing) {
            QCOMPARE(fx.notes(), 1);
            QCOMPARE(fx.get<QLabel>("questlabel")->text(), "0");
        } else {
            QCOMPARE(notesWhenRun, notesBeforeEvents);
        }
    }
}

void CatalogueTest::deletionDuringAnEventWaitEndsTheSequence_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<bool>("answer");   // the Auto NEW wait, else the gap of New
    QTest::addColumn<int>("notes");

    QTest::newRow("interval gap") << "formintervalli" << false << 1;
    for (const QString &window : Windows)
        QTest::addRow("%s: Auto NEW wait", qPrintable(window)) << window << true << 0;
}

void CatalogueTest::deletionDuringAnEventWaitEndsTheSequence()
{
    QFETCH(QString, window);
    QFETCH(bool, answer);
    QFETCH(int, notes);

    Fixture fx(window);
    if (answer)
        fx.w->New_Click();
    fx.get<QSlider>("sliderautonew")->setValue(300);
    fx.gapSlider()->setValue(300);
    fx.platform.clear();
    setWaitScale(1);
    QTimer::singleShot(30, [&fx] { delete fx.w; });
    if (answer)
        fx.w->play_Click(fx.ticked().constFirst());
    else
        fx.w->New_Click();
    QVERIFY(fx.w.isNull());
    QCOMPARE(fx.notes(), notes);
}

QTEST_MAIN(CatalogueTest)
#include "tst_catalogues.moc"
