#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/Formchords/ChordCatalogue.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/Formscales/ScaleCatalogue.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/IntervalCatalogue.h"
#include "exercises/formintervalli/formintervalli.h"

#include <QComboBox>
#include <QSlider>
#include <numeric>

// The interval, chord, scale and harmony windows, which share one shape: a
// catalogue of check boxes and play buttons, a root list, a gap slider.

using namespace tonaro;
using Ints = QList<int>;
using Draws = QList<double>;

namespace {

CatalogueExercise *make(const QString &window, const Services &services)
{
    if (window == "formintervalli")
        return new formintervalli(services);
    if (window == "Formchords")
        return new Formchords(services);
    if (window == "Formscales")
        return new Formscales(services);
    return new formarmonia(services);
}

constexpr int GapMs = 25;

struct Window : test::Loaded<CatalogueExercise> {
    explicit Window(const QString &name, bool autoNew = false)
        : Loaded(autoNew, [&](const Services &s) { return make(name, s); })
    {
    }
    QAbstractButton *playButton(int index)
    {
        return w->findChildren<QAbstractButton *>(QRegularExpression(QStringLiteral("^play[a-z]+_%1$").arg(index))).value(0);
    }
    QList<QCheckBox *> boxes() { return w->findChildren<QCheckBox *>(QRegularExpression("^[a-z]+_\\d+$")); }
    QSlider *gapSlider() { return w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).constFirst(); }
    void setRoot(int item) { get<QComboBox>("Combo1")->setCurrentIndex(item); }
    // Whether every note came at least GapMs after the one before (apart),
    // or all within half of that.
    bool spaced(bool apart)
    {
        const auto notes = platform.notesOn();
        for (std::size_t k = 1; k < notes.size(); ++k) {
            const auto gap = notes[k].time - notes[k - 1].time;
            if (apart ? gap < std::chrono::milliseconds(GapMs) : gap >= std::chrono::milliseconds(GapMs / 2))
                return false;
        }
        return true;
    }
};

Ints from(int root, const Ints &semitones)
{
    Ints notes;
    for (int semitone : semitones)
        notes << root + semitone;
    return notes;
}

const Ints Major{0, 2, 4, 5, 7, 9, 11, 12};
const Ints Thirteenth{0, 4, 7, 10, 14, 21};

} // namespace

class tst_catalogues : public QObject
{
    Q_OBJECT

private slots:
    void tablesHoldTogether()
    {
        for (std::size_t i = 0; i < IntervalCatalogue.size(); ++i)
            QVERIFY(IntervalCatalogue[i].steps.count() == 1 && IntervalCatalogue[i].steps[0] == int(i));
        for (const CatalogueEntry &chord : ChordCatalogue) {
            QVERIFY2(chord.steps.count() >= 2 && chord.steps.count() <= 5, chord.caption);
            QVERIFY2(std::all_of(chord.steps.begin(), chord.steps.end(), [](int step) { return step > 0; }), chord.caption);
            QVERIFY2(std::accumulate(chord.steps.begin(), chord.steps.end(), 0) <= 21, chord.caption);
        }
        for (const CatalogueEntry &scale : ScaleCatalogue) {
            QVERIFY2(std::all_of(scale.steps.begin(), scale.steps.end(), [](int step) { return step > 0; }), scale.caption);
            QVERIFY2(std::accumulate(scale.steps.begin(), scale.steps.end(), 0) == 12, scale.caption);
        }
        // Each key is an octave of seven steps carried on by its first three,
        // and the quality table knows every triad it builds, in every key.
        for (const KeyMode mode : {KeyMode::Major, KeyMode::Minor}) {
            const auto &steps = ModeSteps[std::size_t(mode)];
            QCOMPARE(std::accumulate(steps.begin(), steps.begin() + 7, 0), 12);
            QVERIFY(std::equal(steps.begin() + 7, steps.end(), steps.begin()));
            for (int tonic = 54; tonic <= 65; ++tonic)
                for (int degree = 0; degree < 7; ++degree)
                    QVERIFY(*triadQuality(mode, degreeTriad(tonic, mode, degree, false).root() - tonic) != '\0');
        }
    }

    // The notes are fixed when the question is drawn (the root brought into
    // 54-65 for chords and scales); the option selected when it plays only
    // decides whether they come apart or at once. Answer buttons are silent
    // in test mode.
    void questionPlaysRepeatsAndIsAnswered_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<int>("item");
        QTest::addColumn<Draws>("draws");
        QTest::addColumn<Ints>("notes");
        QTest::addColumn<bool>("apart");
        QTest::addColumn<QString>("repeatWith");
        QTest::addColumn<bool>("repeatApart");
        QTest::addColumn<QString>("reveal");

        const QString I = "formintervalli", C = "Formchords", S = "Formscales", H = "formarmonia";
        QTest::newRow("5th ascending on Fixed C") << I << QStringList{"All", "ascending"} << 1 << Draws{rFor(7, 13)}
            << Ints{60, 67} << true << "together" << false << "Perfect 5th";
        QTest::newRow("5th descending on Fixed C") << I << QStringList{"All", "discending"} << 1 << Draws{rFor(7, 13)}
            << Ints{60, 53} << true << "ascending" << true << "Perfect 5th";
        QTest::newRow("5th together on Fixed C") << I << QStringList{"All", "together"} << 1 << Draws{rFor(7, 13)}
            << Ints{60, 67} << false << "discending" << true << "Perfect 5th";
        QTest::newRow("4th on a random F") << I << QStringList{"All"} << 0 << Draws{rFor(5, 13), rFor(5, 12)}
            << Ints{65, 70} << true << "" << true << "Perfect 4th";
        QTest::newRow("maj on Fixed F#") << C << QStringList{"All"} << 7 << Draws{rFor(0, 20)}
            << Ints{54, 58, 61} << false << "Arpeggiooption" << true << "F# maj";
        QTest::newRow("13 on Fixed F") << C << QStringList{"All"} << 6 << Draws{rFor(19, 20)}
            << from(65, Thirteenth) << false << "" << false << "F 13";
        QTest::newRow("7 arpeggio on Fixed C") << C << QStringList{"All", "Arpeggiooption"} << 1 << Draws{rFor(2, 20)}
            << Ints{60, 64, 67, 70} << true << "Chordoption" << false << "C 7";
        const QStringList allScales{"Allscales", "Allmodes"};
        QTest::newRow("Major on Fixed C") << S << allScales << 1 << Draws{rFor(0, 18)}
            << from(60, Major) << true << "" << true << "C major";
        QTest::newRow("Cromatic on Fixed F") << S << allScales << 6 << Draws{rFor(8, 18)}
            << Ints{65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 77} << true << "" << true << "F cromatic";
        QTest::newRow("Armonic Minor on Fixed B") << S << allScales << 12 << Draws{rFor(2, 18)}
            << Ints{59, 61, 62, 64, 66, 67, 70, 71} << true << "" << true << "B armonic minor";
        // With "2 roots" ticked, as the window opens: the low root comes last.
        QTest::newRow("II in C major") << H << QStringList{"optmajor"} << 0 << Draws{rFor(1, 7)}
            << Ints{62, 65, 69, 50} << false << "" << false << "D min (II)";
        QTest::newRow("VI in A minor") << H << QStringList{"optminor"} << 9 << Draws{rFor(5, 7)}
            << Ints{65, 69, 72, 53} << false << "" << false << "F mag (VI)";
        QTest::newRow("V in G major") << H << QStringList{"optmajor"} << 7 << Draws{rFor(4, 7)}
            << Ints{62, 66, 69, 50} << false << "" << false << "D maj (V)";
    }

    void questionPlaysRepeatsAndIsAnswered()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, setup);
        QFETCH(Draws, draws);
        QFETCH(Ints, notes);
        QFETCH(bool, apart);
        QFETCH(QString, repeatWith);
        QFETCH(bool, repeatApart);

        Window fx(window);
        for (const QString &control : setup)
            fx.press(control);
        QFETCH(int, item);
        fx.setRoot(item);
        QCOMPARE(fx.get("Frame3")->isEnabled(), apart);
        fx.gapSlider()->setValue(GapMs);
        fx.random.script({draws.begin(), draws.end()});
        setWaitScale(1);
        fx.press("New");
        QCOMPARE(fx.played(), notes);
        QVERIFY(fx.spaced(apart));
        QCOMPARE(fx.random.drawsMade(), int(draws.size()));
        QCOMPARE(fx.text("questlabel"), "1");

        if (!repeatWith.isEmpty())
            fx.press(repeatWith);
        fx.clearRecords();
        fx.press("Repeat");
        QCOMPARE(fx.played(), notes);
        QVERIFY(fx.spaced(repeatApart));

        fx.clearRecords();
        test::click(fx.playButton(RandomSource::pickFrom(draws.front(), int(fx.boxes().size())) - 1));
        QCOMPARE(fx.text("rightwronglabel"), "Right!");
        QTEST(fx.text("showlabel"), "reveal");
        QVERIFY2(fx.played().isEmpty(), "an answer button sounded in test mode");
    }

    // Reveal names the chord in the key selected now; Repeat plays it as it
    // was drawn.
    void harmonyRevealFollowsTheKey_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("reveal");
        QTest::newRow("same key") << 0 << "optmajor" << "D min (II)";
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
        // The chord drawn before keeps its low root; the next one has none.
        fx.clearRecords();
        fx.press("Repeat");
        QCOMPARE(fx.played(), (Ints{60, 64, 67, 48}));
        fx.clearRecords();
        fx.press("New");
        QCOMPARE(fx.played(), (Ints{60, 64, 67}));
        fx.press("Chordoption");
        QVERIFY(!twoRoots->isChecked() && twoRoots->isEnabled());
    }

    void nothingTickedKeepsTheEmptyRecord_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<Ints>("repeated");
        QTest::addColumn<QString>("reveal");
        QTest::newRow("intervals") << "formintervalli" << Ints{0, 0} << "Unison";
        QTest::newRow("chords") << "Formchords" << Ints{} << "C maj";
        QTest::newRow("scales") << "Formscales" << Ints{} << "C major";
        QTest::newRow("harmony") << "formarmonia" << Ints{} << "C (I)";
    }

    void nothingTickedKeepsTheEmptyRecord()
    {
        QFETCH(QString, window);
        Window fx(window);
        for (QCheckBox *box : fx.boxes())
            box->setChecked(false);
        fx.press("New");
        QVERIFY(fx.get("Repeat")->isEnabled());
        QCOMPARE(fx.text("questlabel"), "0");
        QCOMPARE(fx.random.drawsMade(), 0);
        fx.press("Repeat");
        QTEST(fx.played(), "repeated");
        fx.press("Notest");
        fx.press("New");
        fx.press("Reveal");
        QTEST(fx.text("showlabel"), "reveal");
    }

    // Another exercise chosen on the bar in the interval's gap, a wait that
    // lets events through, deletes the window there: the question stops after
    // its first note.
    void unloadInTheIntervalGapStopsTheQuestion()
    {
        Window fx("formintervalli");
        fx.gapSlider()->setValue(20);
        setWaitScale(1);
        QObject context;
        QMetaObject::invokeMethod(&context, [&] { delete fx.w; }, Qt::QueuedConnection);
        fx.w->New_Click();
        QVERIFY(fx.w.isNull());
        QCOMPARE(int(fx.played().size()), 1);
    }

    // The scale's notes are timed by waits that let no click through: a
    // click made while the question plays is taken afterwards, when the
    // question is pending, and answers it.
    void clickDuringAScaleAnswersItAfterwards()
    {
        Window fx("Formscales");
        fx.gapSlider()->setValue(20);
        fx.random.script({rFor(0, 7)});
        setWaitScale(1);
        QMetaObject::invokeMethod(fx.playButton(0), &QAbstractButton::click, Qt::QueuedConnection);
        fx.w->New_Click();
        QCOMPARE(int(fx.played().size()), 8);
        QCOMPARE(fx.text("anslabel"), "0");
        QCoreApplication::processEvents();
        QCOMPARE(fx.text("rightwronglabel"), "Right!");
        QCOMPARE(fx.text("anslabel"), "1");
        QCOMPARE(fx.text("showlabel"), "C major");
    }
};

QTEST_MAIN(tst_catalogues)
#include "tst_catalogues.moc"
