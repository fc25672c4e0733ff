#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/Formscales/Formscales.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

using namespace tonaro;
using test::child;
using test::click;

namespace {

QList<int> played(const test::TestServices &fx)
{
    const std::vector<int> notes = fx.notesPlayed();
    return {notes.begin(), notes.end()};
}

QList<int> upward(int root, std::initializer_list<int> semitones)
{
    QList<int> notes;
    for (int semitone : semitones)
        notes << root + semitone;
    return notes;
}

const std::initializer_list<int> MajorScale{0, 2, 4, 5, 7, 9, 11, 12};

struct ScaleWindow {
    test::TestServices fx;
    Formscales w{fx.services};

    ScaleWindow()
    {
        w.Form_Load();
        w.show();
        child<QCheckBox>(&w, "autonewcheck")->setChecked(false);
    }
    template<typename T = QWidget>
    T *get(const QString &name) { return child<T>(&w, name); }
    void press(const QString &name) { click(get<QAbstractButton>(name)); }
    void playButton(int index) { press(QStringLiteral("playscale_%1").arg(index)); }
    void chooseRoot(int item) { get<QComboBox>("Combo1")->setCurrentIndex(item); }
    QString shown() { return get<QLabel>("showlabel")->text(); }
};

} // namespace

class ScaleTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setWaitScale(0); }

    void questionPlaysUpwardFromItsRoot_data();
    void questionPlaysUpwardFromItsRoot();
    void practiceStartsOnListRootUntilAQuestion();
    void clickDuringAScaleAnswersItAfterwards();
};

void ScaleTest::questionPlaysUpwardFromItsRoot_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<int>("scale");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("reveal");

    QTest::newRow("Major on Fixed C") << 1 << 0 << upward(60, MajorScale) << "C major";
    QTest::newRow("Mixolydian on Fixed G") << 8 << 16 << QList{55, 57, 59, 60, 62, 64, 65, 67} << "G mixolydian";
    QTest::newRow("Doric on Fixed F#") << 7 << 13 << QList{54, 56, 57, 59, 61, 63, 64, 66} << "F# doric";
    QTest::newRow("Cromatic on Fixed F")
        << 6 << 8 << upward(65, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}) << "F cromatic";
    QTest::newRow("Armonic Minor on Fixed B") << 12 << 2 << QList{59, 61, 62, 64, 66, 67, 70, 71} << "B armonic minor";
}

void ScaleTest::questionPlaysUpwardFromItsRoot()
{
    QFETCH(int, item);
    QFETCH(int, scale);
    QFETCH(QList<int>, notes);
    QFETCH(QString, reveal);

    ScaleWindow win;
    win.press("Allscales");
    win.press("Allmodes");
    win.chooseRoot(item);
    win.fx.random.script({rFor(scale, 18)});
    win.press("New");
    QCOMPARE(played(win.fx), notes);

    win.playButton(scale);
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), "Right!");
    QCOMPARE(win.shown(), reveal);
}

void ScaleTest::practiceStartsOnListRootUntilAQuestion()
{
    ScaleWindow win;
    win.press("Notest");
    win.chooseRoot(12);
    win.playButton(0);
    QCOMPARE(played(win.fx), upward(71, MajorScale));

    // The question on the same item starts an octave lower; practising the
    // chromatic scale after it neither moves its root nor changes its notes.
    win.fx.random.script({rFor(0, 7)});
    win.fx.clearRecords();
    win.press("New");
    QCOMPARE(played(win.fx), upward(59, MajorScale));
    win.chooseRoot(1);
    win.fx.clearRecords();
    win.playButton(8);
    QCOMPARE(win.fx.notesPlayed().size(), 13u);
    QCOMPARE(win.fx.notesPlayed().front(), 59);

    win.fx.clearRecords();
    win.press("Repeat");
    QCOMPARE(played(win.fx), upward(59, MajorScale));
    win.press("Reveal");
    QCOMPARE(win.shown(), "B major");
}

// The scale's notes are timed by waits that let no click through: a click
// made while the question plays is taken afterwards, when the question is
// already pending, and answers it.
void ScaleTest::clickDuringAScaleAnswersItAfterwards()
{
    ScaleWindow win;
    win.get<QSlider>("sliderintervals")->setValue(20);
    win.fx.random.script({rFor(0, 7)});
    setWaitScale(1);
    QMetaObject::invokeMethod(win.get<QPushButton>("playscale_0"), &QPushButton::click, Qt::QueuedConnection);
    win.w.New_Click();
    QCOMPARE(win.fx.notesPlayed().size(), 8u);
    QCOMPARE(win.get<QLabel>("anslabel")->text(), "0");

    QCoreApplication::processEvents();
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), "Right!");
    QCOMPARE(win.get<QLabel>("anslabel")->text(), "1");
    QCOMPARE(win.shown(), "C major");
}

QTEST_MAIN(ScaleTest)
#include "tst_Formscales.moc"
