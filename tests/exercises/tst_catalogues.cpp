#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/formintervalli.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QSlider>

// Every entry of every catalogue and every preset, against the tables the
// exercises are taught from, written out here as the notes above the root,
// the captions and the answer texts.

using namespace tonaro;
using Ints = QList<int>;
using Draws = QList<double>;

namespace {

struct Window : test::Loaded<ExercisePanel> {
    explicit Window(const QString &name) : Loaded(false, [&](const Services &s) { return test::makeExercise(name, s); }) {}
    void pressAll(const QStringList &names)
    {
        for (const QString &name : names)
            press(name);
    }
    void setRoot(int item) { get<QComboBox>("Combo1")->setCurrentIndex(item); }
    // Whether every note came at least 25 ms after the one before.
    bool spaced()
    {
        const auto notes = platform.notesOn();
        for (std::size_t k = 1; k < notes.size(); ++k)
            if (notes[k].time - notes[k - 1].time < std::chrono::milliseconds(25))
                return false;
        return true;
    }
    // The indexes of the ticked boxes named prefix_0, prefix_1, ...
    QString ticked(const QString &prefix)
    {
        QStringList on;
        for (int i = 0; QCheckBox *box = w->findChild<QCheckBox *>(prefix + QString::number(i)); ++i)
            if (box->isChecked())
                on << QString::number(i);
        return on.join(u' ');
    }
};

Ints above(int root, const QString &semitones)
{
    Ints notes;
    for (const QString &s : semitones.split(u' '))
        notes << root + s.toInt();
    return notes;
}

// The entry is asked in practice mode on "Fixed C", revealed, and played
// again by its own button from the question's root.
void checkEntry(const QString &window, const QStringList &setup, int item, const QString &boxName,
                const QString &playName, int count, const Ints &notes)
{
    QFETCH(int, index);
    Window fx(window);
    fx.pressAll(setup);
    fx.setRoot(item);
    QTEST(fx.get<QCheckBox>(boxName + QString::number(index))->text(), "caption");
    fx.press("Notest");
    fx.random.script({rFor(index, count)});
    fx.press("New");
    QCOMPARE(fx.played(), notes);
    fx.press("Reveal");
    QTEST(fx.text("showlabel"), "reveal");
    fx.clearRecords();
    fx.press(playName + QString::number(index));
    QCOMPARE(fx.played(), notes);
}

void entryColumns()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("reveal");
    QTest::addColumn<QString>("above");
}

} // namespace

class tst_catalogues : public QObject
{
    Q_OBJECT

private slots:
    void intervals_data()
    {
        entryColumns();
        const char *rows[][2] = {{"Unison", "Unison"}, {"2nd minor", "2nd minor"}, {"2nd major", "2nd major"},
            {"3rd minor", "3rd minor"}, {"3rd major", "3rd major"}, {"4th perfect", "Perfect 4th"},
            {"5th diminished", "5th diminished"}, {"5th perfect", "Perfect 5th"}, {"6th minor", "6th minor"},
            {"6th major", "6th major"}, {"7th minor", "7th minor"}, {"7th major", "7th major"}, {"Octave", "Octave"}};
        for (int i = 0; i < 13; ++i)
            QTest::newRow(rows[i][0]) << i << rows[i][0] << rows[i][1] << QStringLiteral("0 %1").arg(i);
    }
    void intervals()
    {
        QFETCH(QString, above);
        checkEntry("formintervalli", {"All"}, 1, "inter_", "playint_", 13, ::above(60, above));
    }

    void chords_data()
    {
        entryColumns();
        const char *rows[][2] = {{"maj", "0 4 7"}, {"min", "0 3 7"}, {"7", "0 4 7 10"}, {"maj7", "0 4 7 11"},
            {"min7", "0 3 7 10"}, {"sus4", "0 5 7"}, {"7sus4", "0 5 7 10"}, {"6", "0 4 7 9"}, {"min6", "0 3 7 9"},
            {"9", "0 4 7 10 14"}, {"min9", "0 3 7 10 14"}, {"dim", "0 3 6"}, {"aug", "0 4 8"},
            {"maj9", "0 4 7 11 14"}, {"7-5", "0 4 6 10"}, {"7+5", "0 4 8 10"}, {"7+9", "0 4 7 10 15"},
            {"7-9", "0 4 7 10 13"}, {"11", "0 4 7 10 14 17"}, {"13", "0 4 7 10 14 21"}};
        for (int i = 0; i < 20; ++i)
            QTest::newRow(rows[i][0]) << i << rows[i][0] << QStringLiteral("C ") + rows[i][0] << rows[i][1];
    }
    void chords()
    {
        QFETCH(QString, above);
        checkEntry("Formchords", {"All"}, 1, "chord_", "playchord_", 20, ::above(60, above));
    }

    void scales_data()
    {
        entryColumns();
        const char *rows[][3] = {{"Major", "major", "0 2 4 5 7 9 11 12"}, {"Minor", "minor", "0 2 3 5 7 8 10 12"},
            {"Armonic Minor", "armonic minor", "0 2 3 5 7 8 11 12"}, {"Melodic Minor", "melodic minor", "0 2 3 5 7 9 11 12"},
            {"Major Pentatonic", "major pentatonic", "0 2 4 7 9 12"}, {"Minor Pentatonic", "minor pentatonic", "0 3 5 7 10 12"},
            {"Diminished", "diminished", "0 2 3 5 6 8 9 11 12"}, {"Exatonal", "exatonal", "0 2 4 6 8 10 12"},
            {"Cromatic", "cromatic", "0 1 2 3 4 5 6 7 8 9 10 11 12"}, {"Major Neapolitan", "major neapolitan", "0 1 3 5 7 9 11 12"},
            {"Minor Neapolitan", "minor neapolitan", "0 1 3 5 7 8 11 12"}, {"Enigmatic", "enigmatic", "0 1 4 6 8 10 11 12"},
            {"Ungarian", "ungarian", "0 2 3 6 7 8 11 12"}, {"Doric", "doric", "0 2 3 5 7 9 10 12"},
            {"Frigian", "frigian", "0 1 3 5 7 8 10 12"}, {"Lydian", "lydian", "0 2 4 6 7 9 11 12"},
            {"Mixolydian", "mixolydian", "0 2 4 5 7 9 10 12"}, {"Locrian", "locrian", "0 1 3 5 6 8 10 12"}};
        for (int i = 0; i < 18; ++i)
            QTest::newRow(rows[i][0]) << i << rows[i][0] << QStringLiteral("C ") + rows[i][1] << rows[i][2];
    }
    void scales()
    {
        QFETCH(QString, above);
        checkEntry("Formscales", {"Allscales", "Allmodes"}, 1, "scales_", "playscale_", 18, ::above(60, above));
    }

    // The triad of each degree over the tonic of the key chosen, with the
    // root an octave below ("2 roots" is ticked when the window opens).
    void harmony_data()
    {
        entryColumns();
        QTest::addColumn<int>("item");
        QTest::addColumn<int>("tonic");
        QTest::addColumn<QString>("mode");
        const char *captions[] = {"I", "II", "III", "IV", "V", "VI", "VII"};
        const char *major[][2] = {{"0 4 7", "C maj (I)"}, {"2 5 9", "D min (II)"}, {"4 7 11", "E min (III)"},
            {"5 9 12", "F maj (IV)"}, {"7 11 14", "G maj (V)"}, {"9 12 16", "A min (VI)"}, {"11 14 17", "B dim (VII)"}};
        const char *minor[][2] = {{"0 3 7", "C min (I)"}, {"2 5 8", "D dim (II)"}, {"3 7 10", "D# maj (III)"},
            {"5 8 12", "F min (IV)"}, {"7 10 14", "G min (V)"}, {"8 12 15", "G# mag (VI)"}, {"10 14 17", "A# mag (VII)"}};
        for (int i = 0; i < 7; ++i) {
            QTest::addRow("%s of C major", captions[i]) << i << captions[i] << major[i][1] << major[i][0] << 0 << 60 << "optmajor";
            QTest::addRow("%s of C minor", captions[i]) << i << captions[i] << minor[i][1] << minor[i][0] << 0 << 60 << "optminor";
        }
        // Tonics from 66 up are brought down an octave.
        QTest::newRow("VII of F major") << 6 << "VII" << "E dim (VII)" << "11 14 17" << 5 << 65 << "optmajor";
        QTest::newRow("V of F# minor") << 4 << "V" << "C# min (V)" << "7 10 14" << 6 << 54 << "optminor";
        QTest::newRow("VI of A minor") << 5 << "VI" << "F mag (VI)" << "8 12 15" << 9 << 57 << "optminor";
        QTest::newRow("II of B major") << 1 << "II" << "C# min (II)" << "2 5 9" << 11 << 59 << "optmajor";
    }
    void harmony()
    {
        QFETCH(QString, above);
        QFETCH(int, item);
        QFETCH(int, tonic);
        QFETCH(QString, mode);
        Ints notes = ::above(tonic, above);
        notes << notes.front() - 12;
        checkEntry("formarmonia", {mode}, item, "chord_", "playchord_", 7, notes);
    }

    // Note recognition: the name Reveal writes for each pitch class, the
    // caption of its box and of its key.
    void melodyNotes_data()
    {
        QTest::addColumn<int>("pitchClass");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("keyCaption");
        QTest::addColumn<QString>("reveal");
        const char *rows[][3] = {{"C", "", "C "}, {"C#", "C#", "C # "}, {"D", "", "D "}, {"D#", "D#", "D # "},
            {"E", "", "E "}, {"F", "", "F "}, {"F#", "F#", "F # "}, {"G", "", "G "}, {"G#", "G#", "G # "},
            {"A", "", "A "}, {"A#", "A#", "A# "}, {"B", "", "B "}};
        for (int i = 0; i < 12; ++i)
            QTest::newRow(rows[i][0]) << i << rows[i][0] << rows[i][1] << rows[i][2];
    }
    void melodyNotes()
    {
        QFETCH(int, pitchClass);
        Window fx("formmelody");
        fx.press("Command15");
        fx.press("Command17");
        QTEST(fx.get<QCheckBox>(QStringLiteral("Nota_%1").arg(pitchClass))->text(), "caption");
        QTEST(fx.get<QAbstractButton>(QStringLiteral("tasto_%1").arg(pitchClass))->text(), "keyCaption");
        fx.press(QStringLiteral("Nota_%1").arg(pitchClass));
        fx.press("octave_4");
        fx.press("Notest");
        fx.press("New");
        QCOMPARE(fx.played(), Ints{60 + pitchClass});
        fx.press("Reveal");
        QTEST(fx.text("showlabel"), "reveal");
    }

    // The boxes each preset leaves ticked, pressed after the buttons before it.
    void presets_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QStringList>("presses");
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<QString>("ticked");
        const QString I = "formintervalli", C = "Formchords", S = "Formscales", H = "formarmonia", M = "formmelody";
        QTest::newRow("intervals at start") << I << QStringList{} << "inter_" << "0 2 4 5 7 9 11 12";
        QTest::newRow("intervals All") << I << QStringList{"All"} << "inter_" << "0 1 2 3 4 5 6 7 8 9 10 11 12";
        QTest::newRow("intervals None") << I << QStringList{"None"} << "inter_" << "";
        QTest::newRow("intervals Main after All") << I << QStringList{"All", "mainintervals"} << "inter_" << "0 2 4 5 7 9 11 12";
        QTest::newRow("chords at start") << C << QStringList{} << "chord_" << "0 1 2 3 4 5 6";
        QTest::newRow("chords All") << C << QStringList{"All"} << "chord_" << "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19";
        QTest::newRow("chords None") << C << QStringList{"All", "None"} << "chord_" << "";
        QTest::newRow("chords Triads") << C << QStringList{"All", "Triads"} << "chord_" << "0 1 11 12";
        QTest::newRow("chords Main after All") << C << QStringList{"All", "mainbutton"} << "chord_" << "0 1 2 3 4 5 6";
        QTest::newRow("scales at start") << S << QStringList{} << "scales_" << "0 1 2 3 4 5 6";
        QTest::newRow("scales All  Scales") << S << QStringList{"Nonescales", "Allmodes", "Allscales"} << "scales_"
                                            << "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17";
        QTest::newRow("scales All Modes") << S << QStringList{"Allmodes"} << "scales_" << "0 1 2 3 4 5 6 13 14 15 16 17";
        QTest::newRow("scales only All  Scales") << S << QStringList{"Nonescales", "Allscales"} << "scales_" << "0 1 2 3 4 5 6 7 8 9 10 11 12";
        QTest::newRow("scales Main after all") << S << QStringList{"Allscales", "Allmodes", "Main"} << "scales_" << "0 1 2 3 4 5 6";
        QTest::newRow("harmony at start") << H << QStringList{} << "chord_" << "0 1 2 3 4 5 6";
        QTest::newRow("melody notes at start") << M << QStringList{} << "Nota_" << "0 2 4 5 7 9 11";
        QTest::newRow("melody notes ALL") << M << QStringList{"Command13"} << "Nota_" << "0 1 2 3 4 5 6 7 8 9 10 11";
        QTest::newRow("melody notes C major") << M << QStringList{"Command13", "Command14"} << "Nota_" << "0 2 4 5 7 9 11";
        QTest::newRow("melody notes NONE") << M << QStringList{"Command15"} << "Nota_" << "";
        QTest::newRow("melody octaves at start") << M << QStringList{} << "octave_" << "3 4 5 6";
        QTest::newRow("melody octaves ALL") << M << QStringList{"Command16"} << "octave_" << "0 1 2 3 4 5 6 7 8 9";
        QTest::newRow("melody octaves NONE") << M << QStringList{"Command17"} << "octave_" << "";
        QTest::newRow("melody Guitar") << M << QStringList{"Command16", "Command18"} << "octave_" << "3 4 5 6";
        QTest::newRow("melody Piano") << M << QStringList{"Command19"} << "octave_" << "2 3 4 5 6 7";
    }
    void presets()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, presses);
        QFETCH(QString, boxes);
        Window fx(window);
        fx.pressAll(presses);
        QTEST(fx.ticked(boxes), "ticked");
    }

    // Where the question's notes come from, apart from the entry: the
    // direction, the root list (brought into 54-65 for chords and scales)
    // and the sequence; the option selected when it plays decides only
    // whether the notes come apart or at once.
    void questionNotes_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<int>("item");
        QTest::addColumn<Draws>("draws");
        QTest::addColumn<Ints>("notes");
        QTest::addColumn<bool>("apart");
        QTest::addColumn<QString>("repeatWith");
        QTest::addColumn<bool>("repeatApart");
        const QString I = "formintervalli", C = "Formchords", S = "Formscales", H = "formarmonia";
        QTest::newRow("5th ascending") << I << QStringList{"ascending"} << 1 << Draws{rFor(4, 8)} << Ints{60, 67} << true << "together" << false;
        QTest::newRow("5th descending") << I << QStringList{"discending"} << 1 << Draws{rFor(4, 8)} << Ints{60, 53} << true << "" << true;
        QTest::newRow("5th together") << I << QStringList{"together"} << 1 << Draws{rFor(4, 8)} << Ints{60, 67} << false << "ascending" << true;
        QTest::newRow("interval on random F") << I << QStringList{} << 0 << Draws{rFor(3, 8), rFor(5, 12)} << Ints{65, 70} << true << "" << true;
        QTest::newRow("interval on Fixed B") << I << QStringList{} << 12 << Draws{rFor(0, 8)} << Ints{71, 71} << true << "" << true;
        QTest::newRow("chord on Fixed F#") << C << QStringList{} << 7 << Draws{rFor(0, 7)} << Ints{54, 58, 61} << false << "Arpeggiooption" << true;
        QTest::newRow("chord on Fixed F") << C << QStringList{} << 6 << Draws{rFor(0, 7)} << Ints{65, 69, 72} << false << "" << false;
        QTest::newRow("chord on random G") << C << QStringList{} << 0 << Draws{rFor(0, 7), rFor(7, 12)} << Ints{55, 59, 62} << false << "" << false;
        QTest::newRow("arpeggio") << C << QStringList{"Arpeggiooption"} << 1 << Draws{rFor(0, 7)} << Ints{60, 64, 67} << true << "Chordoption" << false;
        QTest::newRow("scale on Fixed F#") << S << QStringList{} << 7 << Draws{rFor(5, 7)} << Ints{54, 57, 59, 61, 64, 66} << true << "" << true;
        QTest::newRow("scale on Fixed G") << S << QStringList{"Allmodes"} << 8 << Draws{rFor(10, 12)} << Ints{55, 57, 59, 60, 62, 64, 65, 67} << true << "" << true;
        QTest::newRow("harmony I of F#, 2 roots") << H << QStringList{} << 6 << Draws{rFor(0, 7)} << Ints{54, 58, 61, 42} << false << "Arpeggiooption" << true;
        QTest::newRow("harmony arpeggio") << H << QStringList{"Arpeggiooption"} << 0 << Draws{rFor(0, 7)} << Ints{60, 64, 67} << true << "" << true;
    }
    void questionNotes()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, setup);
        QFETCH(Draws, draws);
        QFETCH(Ints, notes);
        QFETCH(bool, apart);
        QFETCH(QString, repeatWith);
        QFETCH(bool, repeatApart);
        Window fx(window);
        fx.pressAll(setup);
        QFETCH(int, item);
        fx.setRoot(item);
        QCOMPARE(fx.get("Frame3")->isEnabled(), apart);
        fx.w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).value(0)->setValue(25);
        fx.random.script({draws.begin(), draws.end()});
        setWaitScale(1);
        fx.press("New");
        QCOMPARE(fx.played(), notes);
        QCOMPARE(fx.random.drawsMade(), int(draws.size()));
        QCOMPARE(fx.spaced(), apart);
        fx.pressAll(repeatWith.isEmpty() ? QStringList() : QStringList{repeatWith});
        fx.clearRecords();
        fx.press("Repeat");
        QCOMPARE(fx.played(), notes);
        QCOMPARE(fx.spaced(), repeatApart);
    }

    // Reveal names the chord in the key selected now; Repeat plays it as it
    // was drawn.
    void harmonyRevealFollowsTheKey_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("reveal");
        QTest::newRow("D major") << 2 << "optmajor" << "D maj (II)";
        QTest::newRow("C minor") << 0 << "optminor" << "D dim (II)";
        QTest::newRow("C# major, no quality") << 1 << "optmajor" << "D (II)";
    }
    void harmonyRevealFollowsTheKey()
    {
        QFETCH(int, item);
        QFETCH(QString, mode);
        Window fx("formarmonia");
        fx.press("Notest");
        fx.random.script({rFor(1, 7)});
        fx.press("New");
        fx.setRoot(item);
        fx.press(mode);
        fx.press("Reveal");
        QTEST(fx.text("showlabel"), "reveal");
        fx.clearRecords();
        fx.press("Repeat");
        QCOMPARE(fx.played(), (Ints{62, 65, 69, 50}));
    }

    void harmonyArpeggioTakesAwayTheLowRoot()
    {
        Window fx("formarmonia");
        auto *twoRoots = fx.get<QCheckBox>("tworoots");
        fx.press("New");
        fx.press("Arpeggiooption");
        QVERIFY(!twoRoots->isChecked() && !twoRoots->isEnabled());
        fx.clearRecords();
        fx.press("Repeat");
        QCOMPARE(fx.played(), (Ints{60, 64, 67, 48}));
        fx.press("Chordoption");
        QVERIFY(!twoRoots->isChecked() && twoRoots->isEnabled());
    }

    void nothingTickedKeepsTheEmptyRecord_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("none");
        QTest::addColumn<Ints>("repeated");
        QTest::addColumn<QString>("reveal");
        QTest::newRow("intervals") << "formintervalli" << "None" << Ints{0, 0} << "Unison";
        QTest::newRow("chords") << "Formchords" << "None" << Ints{} << "C maj";
        QTest::newRow("scales") << "Formscales" << "Nonescales" << Ints{} << "C major";
        QTest::newRow("harmony") << "formarmonia" << "" << Ints{} << "C (I)";
    }
    void nothingTickedKeepsTheEmptyRecord()
    {
        QFETCH(QString, window);
        QFETCH(QString, none);
        Window fx(window);
        for (int i = 0; i < 7 && none.isEmpty(); ++i)
            fx.press(QStringLiteral("chord_%1").arg(i));
        fx.pressAll(none.isEmpty() ? QStringList() : QStringList{none});
        fx.press("New");
        QVERIFY(fx.get("Repeat")->isEnabled());
        QCOMPARE(fx.text("questlabel"), "0");
        QCOMPARE(fx.random.drawsMade(), 0);
        fx.press("Repeat");
        QTEST(fx.played(), "repeated");
        fx.press("Notest");
        fx.press("Reveal");
        QTEST(fx.text("showlabel"), "reveal");
    }
};

QTEST_MAIN(tst_catalogues)
#include "tst_catalogues.moc"
