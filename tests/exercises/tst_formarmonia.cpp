#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/formarmonia/formarmonia.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

using namespace tonaro;
using test::child;
using test::click;

namespace {

QList<int> played(const test::TestServices &fx)
{
    const std::vector<int> notes = fx.notesPlayed();
    return {notes.begin(), notes.end()};
}

struct HarmonyWindow {
    test::TestServices fx;
    formarmonia w{fx.services};

    HarmonyWindow()
    {
        w.Form_Load();
        w.show();
        child<QCheckBox>(&w, "autonewcheck")->setChecked(false);
    }
    template<typename T = QWidget>
    T *get(const QString &name) { return child<T>(&w, name); }
    void press(const QString &name) { click(get<QAbstractButton>(name)); }
    void chooseKey(int item, bool minor)
    {
        get<QComboBox>("Combo1")->setCurrentIndex(item);
        press(minor ? "optminor" : "optmajor");
    }
    QString reveal()
    {
        press("Reveal");
        return get<QLabel>("showlabel")->text();
    }
};

} // namespace

class HarmonyTest : public QObject
{
    Q_OBJECT

private slots:
    void degreeTriadIsNamedInItsKey_data();
    void degreeTriadIsNamedInItsKey();
    void revealLooksUpTheKeySelectedNow_data();
    void revealLooksUpTheKeySelectedNow();
    void arpeggioTakesAwayTheLowRoot();
    void practiceMakesTheDegreeTheCurrentChord();
};

void HarmonyTest::degreeTriadIsNamedInItsKey_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<bool>("minor");
    QTest::addColumn<int>("degree");
    QTest::addColumn<QList<int>>("notes");
    QTest::addColumn<QString>("reveal");

    // With "2 roots" ticked, as the window opens: the low root comes last.
    QTest::newRow("II in C major") << 0 << false << 1 << QList{62, 65, 69, 50} << "D min (II)";
    QTest::newRow("VI in A minor") << 9 << true << 5 << QList{65, 69, 72, 53} << "F mag (VI)";
    QTest::newRow("V in G major") << 7 << false << 4 << QList{62, 66, 69, 50} << "D maj (V)";
    QTest::newRow("VII in F major") << 5 << false << 6 << QList{76, 79, 82, 64} << "E dim (VII)";
    QTest::newRow("I in F# major") << 6 << false << 0 << QList{54, 58, 61, 42} << "F# maj (I)";
    QTest::newRow("VII in B minor") << 11 << true << 6 << QList{69, 73, 76, 57} << "A mag (VII)";
    QTest::newRow("III in D# minor") << 3 << true << 2 << QList{66, 70, 73, 54} << "F# maj (III)";
}

void HarmonyTest::degreeTriadIsNamedInItsKey()
{
    QFETCH(int, item);
    QFETCH(bool, minor);
    QFETCH(int, degree);
    QFETCH(QList<int>, notes);
    QFETCH(QString, reveal);

    HarmonyWindow win;
    win.chooseKey(item, minor);
    win.fx.random.script({rFor(degree, 7)});
    win.press("New");
    QCOMPARE(played(win.fx), notes);
    win.press(QStringLiteral("playchord_%1").arg(degree));
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), "Right!");
    QCOMPARE(win.get<QLabel>("showlabel")->text(), reveal);
}

void HarmonyTest::revealLooksUpTheKeySelectedNow_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<bool>("minor");
    QTest::addColumn<QString>("reveal");

    QTest::newRow("same key") << 0 << false << "D min (II)";
    QTest::newRow("D major") << 2 << false << "D maj (II)";
    QTest::newRow("C minor") << 0 << true << "D dim (II)";
    QTest::newRow("C# major, no quality") << 1 << false << "D (II)";
}

void HarmonyTest::revealLooksUpTheKeySelectedNow()
{
    QFETCH(int, item);
    QFETCH(bool, minor);
    QFETCH(QString, reveal);

    HarmonyWindow win;
    win.press("Notest");
    win.fx.random.script({rFor(1, 7)});
    win.press("New");
    win.chooseKey(item, minor);
    QCOMPARE(win.reveal(), reveal);
    win.fx.clearRecords();
    win.press("Repeat");
    QCOMPARE(played(win.fx), (QList{62, 65, 69, 50}));
}

void HarmonyTest::arpeggioTakesAwayTheLowRoot()
{
    HarmonyWindow win;
    auto *twoRoots = win.get<QCheckBox>("tworoots");
    QVERIFY(!win.get("Frame3")->isEnabled());
    win.fx.random.script({rFor(0, 7)});
    win.press("New");

    win.press("Arpeggiooption");
    QVERIFY(!twoRoots->isChecked());
    QVERIFY(!twoRoots->isEnabled());
    QVERIFY(win.get("Frame3")->isEnabled());
    // The chord drawn before keeps its low root; the next one has none.
    win.fx.clearRecords();
    win.press("Repeat");
    QCOMPARE(played(win.fx), (QList{60, 64, 67, 48}));
    win.fx.random.script({rFor(0, 7)});
    win.fx.clearRecords();
    win.press("New");
    QCOMPARE(played(win.fx), (QList{60, 64, 67}));

    win.press("Chordoption");
    QVERIFY(twoRoots->isEnabled());
    QVERIFY(!twoRoots->isChecked());
    QVERIFY(!win.get("Frame3")->isEnabled());
}

void HarmonyTest::practiceMakesTheDegreeTheCurrentChord()
{
    HarmonyWindow win;
    win.press("Notest");
    win.fx.random.script({rFor(0, 7)});
    win.press("New");
    win.fx.clearRecords();
    win.press("playchord_3");
    QCOMPARE(played(win.fx), (QList{65, 69, 72, 53}));
    win.chooseKey(2, false);
    win.fx.clearRecords();
    win.press("Repeat");
    QCOMPARE(played(win.fx), (QList{65, 69, 72, 53}));
    QCOMPARE(win.reveal(), "F (IV)");

    // Practising leaves nothing pending to answer.
    win.press("Test");
    win.fx.clearRecords();
    win.press("playchord_3");
    QCOMPARE(win.get<QLabel>("rightwronglabel")->text(), QString());
    QVERIFY(win.fx.notesPlayed().empty());
}

QTEST_MAIN(HarmonyTest)
#include "tst_formarmonia.moc"
