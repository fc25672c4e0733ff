#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/formintervalli.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QSlider>

// The panel the five exercise windows share, and where the windows differ
// in it: one table, a row per window. Scripted draws run out at once, so
// every question is the first ticked entry on "Fixed C" (note recognition:
// the note 48, a C).

using namespace tonaro;
using Ints = QList<int>;

namespace {

struct Panel : test::Loaded<ExercisePanel> {
    Panel(const QString &name, bool autoNew = false) : Loaded(autoNew, [&](const Services &s) { return test::makeExercise(name, s); }) {}
    bool melody() const { return w->objectName() == "formmelody"; }
    // The answer button of entry (or key) index, by the user's click.
    QString answerButton(int index) const
    {
        const QString prefix = melody() ? "tasto_" : w->objectName() == "formintervalli" ? "playint_"
                             : w->objectName() == "Formscales" ? "playscale_" : "playchord_";
        return prefix + QString::number(index);
    }
    void answer(bool right) { press(answerButton(right ? 0 : 1)); }
    QSlider *slider(const char *name) const { return get<QSlider>(QString::fromLatin1(name)); }
    QSlider *gapSlider() const { return w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).value(0); }
    void pressAll(const QStringList &names)
    {
        for (const QString &name : names)
            press(name);
    }
};

const QStringList Windows{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};

} // namespace

class tst_exercisepanel : public QObject
{
    Q_OBJECT

private slots:
    void percentageDropsTheFraction_data()
    {
        QTest::addColumn<int>("right");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("score");
        QTest::newRow("2 of 3") << 2 << 3 << QStringList({"3", "2", "3", "66"});
        QTest::newRow("1 of 3") << 1 << 3 << QStringList({"3", "1", "3", "33"});
        QTest::newRow("0 of 4") << 0 << 4 << QStringList({"4", "0", "4", "0"});
        QTest::newRow("3 of 3") << 3 << 3 << QStringList({"3", "3", "3", "100"});
    }
    void percentageDropsTheFraction()
    {
        QFETCH(int, right);
        QFETCH(int, questions);
        Panel p("Formchords");
        for (int q = 0; q < questions; ++q) {
            p.press("New");
            p.answer(q < right);
            p.answer(true); // spent: the question is scored already
        }
        QTEST(test::score(p.w), "score");
        p.press("Reset");
        QCOMPARE(test::score(p.w), QStringList({"0", "0", "0", "0"}));
    }

    // How each window opens: the sliders and their labels, Auto NEW, the type sizes.
    void startState_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("secondSlider");
        QTest::addColumn<int>("secondValue");
        QTest::addColumn<double>("revealPoints"); // of the answer label after Reveal
        QTest::newRow("melody, one note") << "formmelody" << "slidermultinotes" << 1250 << 18.0;
        QTest::newRow("intervals") << "formintervalli" << "slidermultinotes" << 1250 << 16.5;
        QTest::newRow("chords") << "Formchords" << "slidermultinotes" << 1250 << 16.5;
        QTest::newRow("scales") << "Formscales" << "sliderintervals" << 250 << 9.75;
        QTest::newRow("harmony") << "formarmonia" << "sliderintervals" << 250 << 16.5;
    }
    void startState()
    {
        QFETCH(QString, window);
        QFETCH(QString, secondSlider);
        QFETCH(int, secondValue);
        Panel p(window);
        QCOMPARE(p.slider("sliderautonew")->value(), 1250);
        QCOMPARE(p.text("sliderautonewlabel"), "1250");
        QCOMPARE(p.get<QSlider>(secondSlider)->value(), secondValue);
        QCOMPARE(p.text(secondSlider + "label"), QString::number(secondValue));
        QVERIFY(p.get("autonewcheck")->isEnabled());
        QVERIFY(p.get("New")->isEnabled() && !p.get("Repeat")->isEnabled() && !p.get("Reveal")->isEnabled());
        QCOMPARE(p.get("rightwronglabel")->font().pointSizeF(), 12.0);
        QCOMPARE(p.get("perclabel")->font().pointSizeF(), 19.5);
        QCOMPARE(p.get("Label6")->font().pointSizeF(), 19.5);
        p.press("New");
        p.answer(true);
        QCOMPARE(p.text("rightwronglabel"), "Right!");
        QCOMPARE(p.get("rightwronglabel")->palette().color(QPalette::WindowText), QColor(0, 255, 0));
        QTEST(p.get("showlabel")->font().pointSizeF(), "revealPoints");
        p.press("New");
        p.answer(false);
        QCOMPARE(p.text("rightwronglabel"), "Wrong!");
        QCOMPARE(p.get("rightwronglabel")->palette().color(QPalette::WindowText), QColor(255, 0, 0));
    }

    // Which windows empty the verdict at New, and at a click on "Don't show anwers".
    void labelsEmptiedByWindow_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<bool>("autoNewKeepsVerdict");
        QTest::addColumn<bool>("noanswersEmpties");
        QTest::newRow("melody") << "formmelody" << false << true;
        QTest::newRow("intervals") << "formintervalli" << true << true;
        QTest::newRow("chords") << "Formchords" << true << true;
        QTest::newRow("scales") << "Formscales" << false << false;
        QTest::newRow("harmony") << "formarmonia" << false << false;
    }
    void labelsEmptiedByWindow()
    {
        QFETCH(QString, window);
        QFETCH(bool, autoNewKeepsVerdict);
        QFETCH(bool, noanswersEmpties);
        Panel automatic(window, true);
        automatic.press("New");
        automatic.answer(false);
        QCOMPARE(automatic.text("questlabel"), "2");
        QCOMPARE(automatic.text("rightwronglabel"), autoNewKeepsVerdict ? "Wrong!" : "");
        QCOMPARE(automatic.text("showlabel").isEmpty(), !autoNewKeepsVerdict);

        Panel p(window);
        p.press("New");
        p.answer(false);
        p.press("noanswers");
        QCOMPARE(p.text("rightwronglabel").isEmpty(), noanswersEmpties);
        QCOMPARE(p.text("showlabel").isEmpty(), noanswersEmpties);
        p.press("New");
        QCOMPARE(p.text("rightwronglabel"), "");
        p.answer(true);
        QCOMPARE(p.text("rightwronglabel"), "Right!");
        QCOMPARE(p.text("showlabel"), ""); // the answer stays hidden
    }

    // Test and practice mode in every window: practice greys the score,
    // plays on the answer buttons and never counts.
    void practiceModeLeavesTheScoreAlone_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<Ints>("practised"); // answer button 1, before any question
        QTest::newRow("melody") << "formmelody" << Ints{61};
        QTest::newRow("intervals") << "formintervalli" << Ints{60, 61};
        QTest::newRow("chords") << "Formchords" << Ints{60, 63, 67};
        QTest::newRow("scales") << "Formscales" << Ints{60, 62, 63, 65, 67, 68, 70, 72};
        QTest::newRow("harmony") << "formarmonia" << Ints{62, 65, 69, 50};
    }
    void practiceModeLeavesTheScoreAlone()
    {
        QFETCH(QString, window);
        Panel p(window);
        p.press("Notest");
        for (const char *name : {"questlabel", "rightanslabel", "anslabel", "perclabel", "Reset", "autonewcheck", "sliderautonew"})
            QVERIFY2(!p.get(name)->isEnabled(), name);
        QVERIFY(p.get("Reveal")->isEnabled());
        p.press(p.answerButton(1));
        QTEST(p.played(), "practised");
        p.press("New");
        p.press(p.answerButton(0));
        QCOMPARE(test::score(p.w), QStringList({"0", "0", "0", "0"}));
        p.press("Test");
        QVERIFY(p.get("questlabel")->isEnabled() && !p.get("Reveal")->isEnabled());
        p.clearRecords();
        p.press(p.answerButton(0)); // nothing pending: no sound, no count
        QVERIFY(p.played().isEmpty());
        QCOMPARE(p.text("anslabel"), "0");
    }

    // The practice root: the list's (not brought down) before any question,
    // the question's after one, whatever the list shows then. Repeat still
    // plays the question, except in harmony, where a practice click makes
    // the clicked degree the current chord.
    void practiceRoot_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("firstItem");
        QTest::addColumn<Ints>("before");
        QTest::addColumn<Ints>("question");
        QTest::addColumn<Ints>("after");   // practised with the list on item 1
        QTest::addColumn<Ints>("repeated");
        QTest::addColumn<QString>("revealed");
        QTest::newRow("intervals") << "formintervalli" << 12 << Ints{71, 72} << Ints{71, 71} << Ints{71, 72} << Ints{71, 71} << "Unison";
        QTest::newRow("chords") << "Formchords" << 12 << Ints{71, 74, 78} << Ints{59, 63, 66} << Ints{59, 62, 66} << Ints{59, 63, 66} << "B maj";
        QTest::newRow("scales") << "Formscales" << 12 << Ints{71, 73, 74, 76, 78, 79, 81, 83} << Ints{59, 61, 63, 64, 66, 68, 70, 71}
                                << Ints{59, 61, 62, 64, 66, 67, 69, 71} << Ints{59, 61, 63, 64, 66, 68, 70, 71} << "B major";
        QTest::newRow("harmony") << "formarmonia" << 11 << Ints{61, 64, 68, 49} << Ints{59, 63, 66, 47} << Ints{62, 65, 69, 50}
                                 << Ints{62, 65, 69, 50} << "D min (II)";
    }
    void practiceRoot()
    {
        QFETCH(QString, window);
        QFETCH(int, firstItem);
        Panel p(window);
        p.get<QComboBox>("Combo1")->setCurrentIndex(firstItem);
        p.press("Notest");
        p.press(p.answerButton(1));
        QTEST(p.played(), "before");
        p.clearRecords();
        p.press("New");
        QTEST(p.played(), "question");
        p.get<QComboBox>("Combo1")->setCurrentIndex(window == "formarmonia" ? 0 : 1);
        p.clearRecords();
        p.press(p.answerButton(1));
        QTEST(p.played(), "after");
        p.clearRecords();
        p.press("Repeat");
        QTEST(p.played(), "repeated");
        p.press("Reveal");
        QTEST(p.text("showlabel"), "revealed");
    }

    // Which waits let a click through while they run: a click posted before
    // the handler starts runs inside the first wait that processes events,
    // or after the handler when none does. The notes sent by then tell.
    void waitsLetClicksThrough_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("notesBeforeTheClick");
        QTest::newRow("melody, between the notes of New") << "formmelody" << QStringList{"nnotes 3"} << "New" << 1;
        QTest::newRow("melody, between the notes of Repeat") << "formmelody" << QStringList{"nnotes 3", "New"} << "Repeat" << 1;
        QTest::newRow("melody, Auto NEW wait") << "formmelody" << QStringList{"autonewcheck", "New"} << "tasto_0" << 0;
        QTest::newRow("intervals, question gap") << "formintervalli" << QStringList{} << "New" << 1;
        QTest::newRow("intervals, practice gap") << "formintervalli" << QStringList{"Notest"} << "playint_7" << 2;
        QTest::newRow("intervals, Auto NEW wait") << "formintervalli" << QStringList{"autonewcheck", "New"} << "playint_0" << 0;
        QTest::newRow("chords, arpeggio") << "Formchords" << QStringList{"Arpeggiooption"} << "New" << 3;
        QTest::newRow("chords, practice arpeggio") << "Formchords" << QStringList{"Arpeggiooption", "Notest"} << "playchord_1" << 3;
        QTest::newRow("scales, question") << "Formscales" << QStringList{} << "New" << 8;
        QTest::newRow("scales, practice") << "Formscales" << QStringList{"Notest"} << "playscale_4" << 6;
        QTest::newRow("harmony, arpeggio") << "formarmonia" << QStringList{"Arpeggiooption"} << "New" << 3;
        QTest::newRow("harmony, practice arpeggio") << "formarmonia" << QStringList{"Arpeggiooption", "Notest"} << "playchord_2" << 3;
        QTest::newRow("harmony, Auto NEW wait") << "formarmonia" << QStringList{"autonewcheck", "New"} << "playchord_0" << 0;
    }
    void waitsLetClicksThrough()
    {
        QFETCH(QString, window);
        QFETCH(QStringList, setup);
        QFETCH(QString, button);
        Panel p(window);
        for (const QString &step : setup)
            step == "nnotes 3" ? p.get<QComboBox>("nnotescombo")->setCurrentIndex(2) : p.press(step);
        p.gapSlider()->setValue(30);
        p.slider("sliderautonew")->setValue(30);
        p.clearRecords();
        setWaitScale(1);
        int seen = -1;
        QObject context;
        QMetaObject::invokeMethod(&context, [&] { seen = int(p.played().size()); }, Qt::QueuedConnection);
        p.get<QAbstractButton>(button)->click();
        QCoreApplication::processEvents();
        QTEST(seen, "notesBeforeTheClick");
    }

    // Another exercise chosen on the bar deletes the window; the program
    // closing abandons every wait. Either way the sequence stops there, and
    // under the address sanitizer any use of the freed window would show.
    void unloadOrClosingDuringAWaitStopsTheSequence_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("closing");
        QTest::addColumn<int>("notes");
        for (bool closing : {false, true}) {
            const char *how = closing ? "program closing" : "window unloaded";
            QTest::addRow("%s in a note gap", how) << "formmelody" << "New" << closing << 1;
            QTest::addRow("%s in a Repeat gap", how) << "formmelody" << "Repeat" << closing << 1;
            QTest::addRow("%s in the Auto NEW wait", how) << "formmelody" << "tasto_0" << closing << 0;
            QTest::addRow("%s in an interval gap", how) << "formintervalli" << "New" << closing << 1;
        }
    }
    void unloadOrClosingDuringAWaitStopsTheSequence()
    {
        QFETCH(QString, window);
        QFETCH(QString, button);
        QFETCH(bool, closing);
        Panel p(window, true);
        if (p.melody())
            p.get<QComboBox>("nnotescombo")->setCurrentIndex(2);
        p.gapSlider()->setValue(100);
        p.slider("sliderautonew")->setValue(100);
        p.press("New");
        p.pressAll(button == "tasto_0" ? QStringList{button, button} : QStringList{});
        p.clearRecords();
        setWaitScale(1);
        QObject context;
        QTimer::singleShot(30, &context, [&] { closing ? abandonWaits() : delete p.w; });
        p.get<QAbstractButton>(button)->click();
        resumeWaits();
        QTEST(int(p.played().size()), "notes");
        QCOMPARE(p.w.isNull(), !closing);
    }

    // Octave and pitch class are each their own reseeded draw, right after
    // the other: every pair must be equally likely. The threshold is for a
    // significance of 1e-6 with 10 x 12 - 1 degrees of freedom.
    void notesAreUniformOverTheTickedChoices()
    {
        ClockRandomSource random;
        constexpr int PerCell = 1000;
        std::vector<int> cells(120, 0);
        for (std::size_t i = 0; i < PerCell * cells.size(); ++i) {
            const int octave = RandomSource::pickFrom(random.draw(), 10) - 1;
            const int pitchClass = RandomSource::pickFrom(random.draw(), 12) - 1;
            QVERIFY(octave >= 0 && octave < 10 && pitchClass >= 0 && pitchClass < 12);
            ++cells[std::size_t(octave * 12 + pitchClass)];
        }
        double chiSquare = 0;
        for (int observed : cells)
            chiSquare += double(observed - PerCell) * (observed - PerCell) / PerCell;
        QVERIFY2(chiSquare < 207.2, qPrintable(QStringLiteral("chi-square %1").arg(chiSquare)));
    }
};

QTEST_MAIN(tst_exercisepanel)
#include "tst_exercisepanel.moc"
