#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/Formchords/Formchords.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <chrono>

using namespace tonaro;
using test::child;
using test::click;

namespace {

QList<int> played(const test::TestServices &fx)
{
    const std::vector<int> notes = fx.notesPlayed();
    return {notes.begin(), notes.end()};
}

struct ChordWindow {
    test::TestServices fx;
    Formchords w{fx.services};

    ChordWindow()
    {
        w.Form_Load();
        w.show();
        child<QCheckBox>(&w, "autonewcheck")->setChecked(false);
    }
    template<typename T = QWidget>
    T *get(const QString &name) { return child<T>(&w, name); }
    void press(const QString &name) { click(get<QAbstractButton>(name)); }
    void playButton(int index) { press(QStringLiteral("playchord_%1").arg(index)); }
    QString shown() { return get<QLabel>("showlabel")->text(); }
};

} // namespace

class ChordTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setWaitScale(0); }

    void questionRootStaysWithinOneOctave_data();
    void questionRootStaysWithinOneOctave();
    void practiceNeverChangesTheQuestion_data();
    void practiceNeverChangesTheQuestion();
    void sequenceOptionDecidesHowNotesArePlayed_data();
    void sequenceOptionDecidesHowNotesArePlayed();
};

void ChordTest::questionRootStaysWithinOneOctave_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<int>("chord");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("reveal");

    QTest::newRow("maj on Fixed F#") << 7 << 0 << QList{54, 58, 61} << "F# maj";
    QTest::newRow("13 on Fixed F") << 6 << 19 << QList{65, 69, 72, 75, 79, 86} << "F 13";
    QTest::newRow("7-5 on Fixed D") << 3 << 14 << QList{62, 66, 68, 72} << "D 7-5";
    QTest::newRow("13 on Fixed A#") << 11 << 19 << QList{58, 62, 65, 68, 72, 79} << "A# 13";
    QTest::newRow("min on a random B") << 0 << 1 << QList{59, 62, 66} << "B min";
}

void ChordTest::questionRootStaysWithinOneOctave()
{
    QFETCH(int, item);
    QFETCH(int, chord);
    QFETCH(QList<int>, notes);
    QFETCH(QString, reveal);

    ChordWindow win;
    win.press("All");
    win.get<QComboBox>("Combo1")->setCurrentIndex(item);
    win.fx.random.script({rFor(chord, 20), rFor(11, 12)});
    win.press("New");
    QCOMPARE(played(win.fx), notes);

    win.fx.clearRecords();
    win.playButton(chord);
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), "Right!");
    QCOMPARE(win.shown(), reveal);
    QVERIFY2(win.fx.notesPlayed().empty(), "an answer button sounded in test mode");
}

void ChordTest::practiceNeverChangesTheQuestion_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<QList<double>>("draws");
    QTest::addColumn<QList<int>>("firstRoots");

    // Before the first question the list's root is not brought down: a "13"
    // on Fixed B reaches 92.
    QTest::newRow("Fixed B") << 12 << QList<double>{} << QList{71, 71};
    QTest::newRow("Random draws at every click") << 0 << QList{rFor(2, 12), rFor(9, 12)} << QList{62, 69};
}

void ChordTest::practiceNeverChangesTheQuestion()
{
    QFETCH(int, item);
    QFETCH(QList<double>, draws);
    QFETCH(QList<int>, firstRoots);

    ChordWindow win;
    auto *roots = win.get<QComboBox>("Combo1");
    win.press("Notest");
    roots->setCurrentIndex(item);
    win.fx.random.script({draws.begin(), draws.end()});
    for (int root : firstRoots) {
        win.fx.clearRecords();
        win.playButton(19);
        QCOMPARE(played(win.fx), (QList{root, root + 4, root + 7, root + 10, root + 14, root + 21}));
    }

    // A "maj" on Fixed C, drawn from the seven main chords.
    roots->setCurrentIndex(1);
    win.fx.random.script({rFor(0, 7)});
    win.press("New");
    roots->setCurrentIndex(item);
    win.fx.random.script({rFor(5, 12)});
    win.fx.clearRecords();
    win.playButton(19);
    QCOMPARE(played(win.fx), (QList{60, 64, 67, 70, 74, 81}));

    win.fx.clearRecords();
    win.press("Repeat");
    QCOMPARE(played(win.fx), (QList{60, 64, 67}));
    win.press("Reveal");
    QCOMPARE(win.shown(), "C maj");
}

void ChordTest::sequenceOptionDecidesHowNotesArePlayed_data()
{
    QTest::addColumn<QString>("newWith");
    QTest::addColumn<QString>("repeatWith");
    QTest::addColumn<int>("gapMs");

    QTest::newRow("chord, repeated as arpeggio") << "Chordoption" << "Arpeggiooption" << 30;
    QTest::newRow("arpeggio, repeated as chord") << "Arpeggiooption" << "Chordoption" << 30;
    QTest::newRow("arpeggio with no time") << "Arpeggiooption" << "Arpeggiooption" << 0;
}

// An arpeggio waits after every note, the last one included; a block chord
// does not wait at all.
void ChordTest::sequenceOptionDecidesHowNotesArePlayed()
{
    QFETCH(QString, newWith);
    QFETCH(QString, repeatWith);
    QFETCH(int, gapMs);

    ChordWindow win;
    win.get<QSlider>("slidermultinotes")->setValue(gapMs);
    setWaitScale(1);
    const QList<int> seventh{60, 64, 67, 70};
    for (const QString &option : {newWith, repeatWith}) {
        win.press(option);
        const bool arpeggio = option == "Arpeggiooption";
        QCOMPARE(win.get("Frame3")->isEnabled(), arpeggio);
        win.fx.clearRecords();
        win.fx.random.script({rFor(2, 7)});
        QElapsedTimer clock;
        clock.start();
        win.press(option == newWith ? "New" : "Repeat");
        const qint64 elapsed = clock.elapsed();
        QCOMPARE(played(win.fx), seventh);

        const auto notes = win.fx.platform.notesOn();
        for (std::size_t k = 1; k < notes.size(); ++k) {
            const auto gap = std::chrono::duration_cast<std::chrono::milliseconds>(notes[k].time - notes[k - 1].time);
            QVERIFY2(arpeggio ? gap.count() >= gapMs : gap.count() < 10, qPrintable(QString::number(gap.count())));
        }
        if (arpeggio)
            QVERIFY2(elapsed >= 4 * gapMs, qPrintable(QString::number(elapsed)));
        else
            QVERIFY2(elapsed < gapMs, qPrintable(QString::number(elapsed)));
    }
}

QTEST_MAIN(ChordTest)
#include "tst_Formchords.moc"
