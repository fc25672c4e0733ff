#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/formintervalli/formintervalli.h"

#include <QComboBox>
#include <QGroupBox>
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

// Milliseconds between the first two note-ons the recorder saw.
double firstGapMs(const test::TestServices &fx)
{
    const auto notes = fx.platform.notesOn();
    return std::chrono::duration<double, std::milli>(notes.at(1).time - notes.at(0).time).count();
}

struct IntervalWindow {
    test::TestServices fx;
    formintervalli w{fx.services};

    IntervalWindow()
    {
        w.Form_Load();
        w.show();
    }
    template<typename T = QWidget>
    T *get(const QString &name) { return child<T>(&w, name); }
    void choose(const QString &option) { click(get<QRadioButton>(option)); }
    void button(const QString &name) { click(get<QPushButton>(name)); }
    void playButton(int index) { button(QStringLiteral("playint_%1").arg(index)); }
};

} // namespace

class IntervalTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setWaitScale(0); }

    void playsAndRepeatsQuestionByDirection_data();
    void playsAndRepeatsQuestionByDirection();
    void practiceRootComesFromListThenQuestion_data();
    void practiceRootComesFromListThenQuestion();
    void clickDuringQuestionGapIsHandledAtOnce_data();
    void clickDuringQuestionGapIsHandledAtOnce();
};

void IntervalTest::playsAndRepeatsQuestionByDirection_data()
{
    QTest::addColumn<QString>("direction");
    QTest::addColumn<int>("item");
    QTest::addColumn<int>("interval");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("reveal");
    QTest::addColumn<QString>("repeatDirection");

    QTest::newRow("fifth up on C") << "ascending" << 1 << 7 << QList{60, 67} << "Perfect 5th" << "together";
    QTest::newRow("fifth down on C") << "discending" << 1 << 7 << QList{60, 53} << "Perfect 5th" << "ascending";
    QTest::newRow("fifth together on C") << "together" << 1 << 7 << QList{60, 67} << "Perfect 5th" << "discending";
    QTest::newRow("unison together") << "together" << 1 << 0 << QList{60, 60} << "Unison" << "together";
    QTest::newRow("octave down from C") << "discending" << 1 << 12 << QList{60, 48} << "Octave" << "ascending";
    QTest::newRow("octave up from B") << "ascending" << 12 << 12 << QList{71, 83} << "Octave" << "discending";
    QTest::newRow("fourth on a random root") << "ascending" << 0 << 5 << QList{65, 70} << "Perfect 4th" << "ascending";
}

// The notes are fixed when the question is drawn; the direction selected at
// the time of playing only decides whether they come apart or at once.
void IntervalTest::playsAndRepeatsQuestionByDirection()
{
    QFETCH(QString, direction);
    QFETCH(int, item);
    QFETCH(int, interval);
    QFETCH(QList<int>, notes);
    QFETCH(QString, reveal);
    QFETCH(QString, repeatDirection);

    IntervalWindow win;
    constexpr int GapMs = 40;
    win.button("All");
    win.get<QCheckBox>("autonewcheck")->setChecked(false);
    win.get<QSlider>("slidermultinotes")->setValue(GapMs);
    win.get<QComboBox>("Combo1")->setCurrentIndex(item);
    win.choose(direction);
    QCOMPARE(win.get("Frame3")->isEnabled(), direction != "together");
    win.fx.random.script({rFor(interval, 13), rFor(notes[0] - 60, 12)});
    setWaitScale(1);

    win.button("New");
    QCOMPARE(played(win.fx), notes);
    QCOMPARE(win.fx.random.drawsMade(), item == 0 ? 2 : 1);
    QCOMPARE(firstGapMs(win.fx) >= GapMs, direction != "together");
    QCOMPARE(win.get<QLabel>("questlabel")->text(), "1");

    win.choose(repeatDirection);
    win.fx.clearRecords();
    win.button("Repeat");
    QCOMPARE(played(win.fx), notes);
    const double gap = firstGapMs(win.fx);
    QVERIFY2(repeatDirection == "together" ? gap < GapMs / 2 : gap >= GapMs, qPrintable(QString::number(gap)));

    win.fx.clearRecords();
    win.playButton(interval);
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), "Right!");
    QCOMPARE(win.get<QLabel>("showlabel")->text(), reveal);
    QVERIFY2(win.fx.notesPlayed().empty(), "an answer button sounded in test mode");
}

void IntervalTest::practiceRootComesFromListThenQuestion_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("direction");
    QTest::addColumn<int>("button");
    QTest::addColumn<QList<int>>("beforeQuestion");

    QTest::newRow("Fixed D") << 3 << "ascending" << 7 << QList{62, 69};
    QTest::newRow("Random") << 0 << "ascending" << 4 << QList{64, 68};
    QTest::newRow("Fixed B, octave down") << 12 << "discending" << 12 << QList{71, 59};
}

void IntervalTest::practiceRootComesFromListThenQuestion()
{
    QFETCH(int, item);
    QFETCH(QString, direction);
    QFETCH(int, button);
    QFETCH(QList<int>, beforeQuestion);

    IntervalWindow win;
    auto *roots = win.get<QComboBox>("Combo1");
    win.choose("Notest");
    win.choose(direction);
    roots->setCurrentIndex(item);
    win.fx.random.script({rFor(beforeQuestion[0] - 60, 12)});
    win.playButton(button);
    QCOMPARE(played(win.fx), beforeQuestion);
    QCOMPARE(win.fx.random.drawsMade(), item == 0 ? 1 : 0);

    // A fifth on Fixed E, drawn from the eight main intervals.
    roots->setCurrentIndex(5);
    win.choose("ascending");
    win.fx.random.script({rFor(4, 8)});
    win.button("New");
    roots->setCurrentIndex(item);
    win.choose(direction);
    win.fx.random.script({rFor(3, 12)});
    const int drawsBefore = win.fx.random.drawsMade();
    win.fx.clearRecords();
    win.playButton(button);
    const int step = direction == "ascending" ? button : -button;
    QCOMPARE(played(win.fx), (QList{64, 64 + step}));
    // With "Random" a root is drawn even though the question's is used.
    QCOMPARE(win.fx.random.drawsMade() - drawsBefore, item == 0 ? 1 : 0);

    win.fx.clearRecords();
    win.button("Repeat");
    QCOMPARE(played(win.fx), (QList{64, 71}));
    win.button("Reveal");
    QCOMPARE(win.get<QLabel>("showlabel")->text(), "Perfect 5th");
}

void IntervalTest::clickDuringQuestionGapIsHandledAtOnce_data()
{
    QTest::addColumn<bool>("practice");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("answers");

    // A practice third from the question's root sounds inside the gap.
    QTest::newRow("practice click") << true << QList{60, 60, 64, 67} << "0";
    // The previous question was scored and the new one is not pending until
    // it has been played, so the click is not scored.
    QTest::newRow("answer after a scored question") << false << QList{60, 67} << "1";
}

void IntervalTest::clickDuringQuestionGapIsHandledAtOnce()
{
    QFETCH(bool, practice);
    QFETCH(QList<int>, notes);
    QFETCH(QString, answers);

    IntervalWindow win;
    win.get<QCheckBox>("autonewcheck")->setChecked(false);
    if (practice) {
        win.choose("Notest");
    } else {
        win.fx.random.script({rFor(4, 8)});
        win.button("New");
        win.playButton(7);
    }
    win.fx.clearRecords();
    win.get<QSlider>("slidermultinotes")->setValue(200);
    win.fx.random.script({rFor(4, 8)});
    setWaitScale(0.5);
    QTimer::singleShot(30, &win.w, [&win, practice] { win.playButton(practice ? 4 : 7); });
    win.button("New");

    QCOMPARE(played(win.fx), notes);
    QCOMPARE(win.get<QLabel>("anslabel")->text(), answers);
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), QString());
    QCOMPARE(win.w.Answered, practice);
}

QTEST_MAIN(IntervalTest)
#include "tst_formintervalli.moc"
