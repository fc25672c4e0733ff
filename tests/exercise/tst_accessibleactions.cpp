// Every toggle control of every window operated as a screen reader, voice
// control or an automation tool operates it: through the accessibility
// action, not a click. The window must end as a click would leave it.
// And the arrow keys between a catalogue's answer buttons.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "shell/MDIForm1.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QToolButton>

using namespace tonaro;

namespace {

struct Shell : test::TestServices {
    MDIForm1 window{services};
    explicit Shell(int exercise) : TestServices(false)
    {
        window.MDIForm_Load();
        if (exercise != 0)
            window.botton1_Click(exercise);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QWidget *find(const QString &name) const { return test::child(&window, name); }
};

// "name prop" is true, "name !prop" false, "name text=abc" the caption;
// prop is "enabled" or "checked".
void check(const Shell &s, const QString &expectation)
{
    const QString name = expectation.section(u' ', 0, 0);
    const QString what = expectation.section(u' ', 1);
    QWidget *widget = s.find(name);
    if (what.startsWith(QLatin1String("text="))) {
        QCOMPARE(qobject_cast<QLabel *>(widget)->text(), what.mid(5));
        return;
    }
    const bool expected = !what.startsWith(u'!');
    const QString property = what.mid(expected ? 0 : 1);
    const bool actual = property == QLatin1String("enabled") ? widget->isEnabled()
                                                             : qobject_cast<QAbstractButton *>(widget)->isChecked();
    if (actual != expected)
        QFAIL(qPrintable(QStringLiteral("%1 is %2").arg(name, actual ? property : u'!' + property)));
}

} // namespace

class AccessibleActionsTest : public QObject
{
    Q_OBJECT

private slots:
    void toggleRunsTheHandler_data()
    {
        QTest::addColumn<int>("exercise");
        QTest::addColumn<QStringList>("toggled");
        QTest::addColumn<QStringList>("expected");
        const QStringList labelsEmpty{"rightwronglabel text=", "showlabel text="};
        const QStringList labelsKept{"rightwronglabel text=x", "showlabel text=x"};
        const QStringList practice{"Reveal enabled", "Frame5 !enabled", "Reset !enabled", "autonewcheck !enabled"};
        const QStringList test{"Reveal !enabled", "Frame5 enabled", "Reset enabled", "autonewcheck enabled"};
        const std::array<const char *, 5> windows{"melody", "intervals", "chords", "scales", "harmony"};
        for (int w = 0; w < 5; ++w) {
            const bool clears = w < 3;
            QTest::addRow("%s No test", windows[w]) << w << QStringList{"Notest"} << practice + labelsEmpty;
            QTest::addRow("%s back to Test mode", windows[w]) << w << QStringList{"Notest", "Test"} << test;
            QTest::addRow("%s Don't show anwers", windows[w])
                << w << QStringList{"noanswers"} << QStringList{"noanswers checked"} + (clears ? labelsEmpty : labelsKept);
        }
        QTest::newRow("bar: Intervals") << 0 << QStringList{"botton1_1"}
                                        << QStringList{"botton1_0 !checked", "botton1_1 checked", "formintervalli enabled"};
        QTest::newRow("bar: Melody pressed again") << 0 << QStringList{"botton1_0"}
                                                   << QStringList{"botton1_0 checked", "botton1_1 !checked", "formmelody enabled"};
        QTest::newRow("bar: Armony, then Chords") << 0 << QStringList{"botton1_4", "botton1_2"}
                                                  << QStringList{"botton1_4 !checked", "botton1_2 checked", "Formchords enabled"};
        QTest::newRow("intervals: Together") << 1 << QStringList{"together"} << QStringList{"together checked", "Frame3 !enabled"};
        QTest::newRow("intervals: Together, Discending")
            << 1 << QStringList{"together", "discending"} << QStringList{"ascending !checked", "Frame3 enabled"};
        QTest::newRow("chords: Arpeggio") << 2 << QStringList{"Arpeggiooption"} << QStringList{"Frame3 enabled"};
        QTest::newRow("chords: Arpeggio, Chord")
            << 2 << QStringList{"Arpeggiooption", "Chordoption"} << QStringList{"Frame3 !enabled"};
        QTest::newRow("harmony: Arpeggio")
            << 4 << QStringList{"Arpeggiooption"} << QStringList{"Frame3 enabled", "tworoots !checked", "tworoots !enabled"};
        QTest::newRow("harmony: Arpeggio, Chord") << 4 << QStringList{"Arpeggiooption", "Chordoption"}
                                                  << QStringList{"Frame3 !enabled", "tworoots !checked", "tworoots enabled"};
        QTest::newRow("harmony: Minor") << 4 << QStringList{"optminor"} << QStringList{"optmajor !checked", "optminor checked"};
    }

    void toggleRunsTheHandler()
    {
        QFETCH(int, exercise);
        QFETCH(QStringList, toggled);
        QFETCH(QStringList, expected);
        Shell s(exercise);
        s.window.exerciseWindow()->findChild<QLabel *>(QStringLiteral("rightwronglabel"))->setText(QStringLiteral("x"));
        s.window.exerciseWindow()->findChild<QLabel *>(QStringLiteral("showlabel"))->setText(QStringLiteral("x"));
        for (const QString &name : toggled) {
            QAccessibleInterface *control = QAccessible::queryAccessibleInterface(s.find(name));
            QVERIFY(control && control->actionInterface());
            QVERIFY(control->actionInterface()->actionNames().contains(QAccessibleActionInterface::toggleAction()));
            control->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        for (const QString &expectation : expected)
            check(s, expectation);
        QCOMPARE(s.window.findChildren<ExercisePanel *>().size(), 1);
    }

    // Press, the other action a check box offers, still runs the handler once:
    // ticking "Don't show anwers" by it empties the labels, unticking leaves
    // them as a second run would not find them.
    void pressRunsTheHandlerOnce()
    {
        Shell s(0);
        QWidget *box = s.find(QStringLiteral("noanswers"));
        QAccessibleInterface *control = QAccessible::queryAccessibleInterface(box);
        s.window.exerciseWindow()->findChild<QLabel *>(QStringLiteral("showlabel"))->setText(QStringLiteral("x"));
        int runs = 0;
        connect(qobject_cast<QAbstractButton *>(box), &QAbstractButton::toggled, this, [&runs] { ++runs; });
        control->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTest::qWait(300); // press clicks after a short animation
        QCOMPARE(runs, 1);
        check(s, QStringLiteral("noanswers checked"));
        check(s, QStringLiteral("showlabel text="));
    }

    void arrowsMoveBetweenAnswers_data()
    {
        QTest::addColumn<int>("exercise");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<QString>("end");
        QTest::newRow("intervals down") << 1 << "playint_0" << QList<int>{Qt::Key_Down, Qt::Key_Down, Qt::Key_Down} << "playint_3";
        QTest::newRow("intervals up") << 1 << "playint_5" << QList<int>{Qt::Key_Up, Qt::Key_Up} << "playint_3";
        QTest::newRow("chords across") << 2 << "playchord_1" << QList<int>{Qt::Key_Right} << "playchord_11";
        QTest::newRow("chords back") << 2 << "playchord_12" << QList<int>{Qt::Key_Left, Qt::Key_Down} << "playchord_3";
        QTest::newRow("scales to the end") << 3 << "playscale_15" << QList<int>{Qt::Key_Down, Qt::Key_Down} << "playscale_17";
        QTest::newRow("harmony") << 4 << "playchord_6" << QList<int>{Qt::Key_Up} << "playchord_5";
    }

    void arrowsMoveBetweenAnswers()
    {
        QFETCH(int, exercise);
        QFETCH(QString, start);
        QFETCH(QList<int>, keys);
        QFETCH(QString, end);
        Shell s(exercise);
        s.window.show();
        s.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.find(start)->setFocus(Qt::TabFocusReason);
        for (int key : keys)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        QCOMPARE(QApplication::focusWidget()->objectName(), end);
        // Arrows answer nothing: the score is untouched.
        QCOMPARE(test::score(s.window.exerciseWindow()), (QStringList{"0", "0", "0", "0"}));
    }
};

QTEST_MAIN(AccessibleActionsTest)
#include "tst_accessibleactions.moc"
