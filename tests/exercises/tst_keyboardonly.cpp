// Every exercise played without the mouse: the window opened from the bar
// with Tab and Space, its options set with Space and the arrow keys, the
// question asked with Alt+N, answered with Tab and Space on the answer
// button, and the score read back.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/RandomSource.h"
#include "shell/MDIForm1.h"

#include <QAbstractButton>

using namespace tonaro;

namespace {

// One thing the user does: Tab to a control (none: stay where the focus is),
// then press a key there.
struct KeyStep {
    const char *control;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};
using Script = QList<KeyStep>;

constexpr KeyStep altN{nullptr, Qt::Key_N, Qt::AltModifier};
constexpr KeyStep untickAutoNew{"autonewcheck", Qt::Key_Space};

void tabTo(const QString &name)
{
    QWidget *target = QApplication::activeWindow()->findChild<QWidget *>(name);
    QVERIFY2(target, qPrintable(QStringLiteral("no control ") + name));
    for (int presses = 0; presses < 200 && QApplication::focusWidget() != target; ++presses)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY2(QApplication::focusWidget() == target, qPrintable(QStringLiteral("Tab never reaches ") + name));
}

} // namespace

Q_DECLARE_METATYPE(KeyStep)

class KeyboardOnlyTest : public QObject
{
    Q_OBJECT

private slots:
    void answersAQuestionWithKeysAlone_data();
    void answersAQuestionWithKeysAlone();
};

void KeyboardOnlyTest::answersAQuestionWithKeysAlone_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<QList<double>>("draws");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("reveal");

    // Note recognition: 4th to 7th octave and C major at start; the octave
    // is drawn first, then the note. Its letters have their own tests.
    QTest::newRow("melody, Space on a piano key")
        << Script{untickAutoNew, altN, {"tasto_9", Qt::Key_Space}} << QList{rFor(2, 4), rFor(5, 7)} << QList{81} << "A ";

    // Catalogue windows on "Fixed C" with their main entries ticked.
    QTest::newRow("intervals, a fifth downward")
        << Script{{"botton1_1", Qt::Key_Space}, untickAutoNew, {"ascending", Qt::Key_Down}, altN,
                  {"playint_7", Qt::Key_Space}}
        << QList{rFor(4, 8)} << QList{60, 53} << "Perfect 5th";
    QTest::newRow("chords, on the last root of the list")
        << Script{{"botton1_2", Qt::Key_Space}, untickAutoNew, {"Combo1", Qt::Key_End}, altN,
                  {"playchord_4", Qt::Key_Space}}
        << QList{rFor(4, 7)} << QList{59, 62, 66, 69} << "B min7";
    QTest::newRow("scales, on C sharp")
        << Script{{"botton1_3", Qt::Key_Space}, untickAutoNew, {"Combo1", Qt::Key_Down}, altN,
                  {"playscale_5", Qt::Key_Space}}
        << QList{rFor(5, 7)} << QList{61, 64, 66, 68, 71, 73} << "C# minor pentatonic";
    QTest::newRow("harmony, degree V of C minor")
        << Script{{"botton1_4", Qt::Key_Space}, untickAutoNew, {"optmajor", Qt::Key_Down}, altN,
                  {"playchord_4", Qt::Key_Space}}
        << QList{rFor(4, 7)} << QList{67, 70, 74, 55} << "G min (V)";
}

void KeyboardOnlyTest::answersAQuestionWithKeysAlone()
{
    QFETCH(Script, script);
    QFETCH(QList<double>, draws);
    QFETCH(QList<int>, notes);
    QFETCH(QString, reveal);

    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    fx.random.script({draws.begin(), draws.end()});
    fx.clearRecords();

    const auto anyButtonDown = [&window] {
        const QList<QAbstractButton *> buttons = window.findChildren<QAbstractButton *>();
        return std::any_of(buttons.begin(), buttons.end(), [](const QAbstractButton *b) { return b->isDown(); });
    };
    for (const KeyStep &step : script) {
        if (step.control)
            tabTo(QString::fromLatin1(step.control));
        if (QTest::currentTestFailed())
            return;
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        QTest::keyClick(focus, step.key, step.modifiers);
        // An Alt shortcut presses its button for a moment before it clicks.
        QTRY_VERIFY(!anyButtonDown());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    QVERIFY(fx.random.exhausted());
    QCOMPARE(fx.played(), notes);
    QCOMPARE(test::text(window.exerciseWindow(), "rightwronglabel"), "Right!");
    QCOMPARE(test::text(window.exerciseWindow(), "showlabel"), reveal);
    QCOMPARE(test::score(window.exerciseWindow()), QStringList({"1", "1", "1", "100"}));
}

QTEST_MAIN(KeyboardOnlyTest)
#include "tst_keyboardonly.moc"
