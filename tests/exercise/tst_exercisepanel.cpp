#include "TestServices.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/formmelody.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QSlider>

// The shared panel's behaviour, driven through the note-recognition window.
// The scripted draws run out at once, so every question is the note 48 (C):
// key 0 answers it right, key 1 wrong.

using namespace tonaro;
using test::child;

namespace {

const QStringList Counters{"questlabel", "rightanslabel", "anslabel", "perclabel"};
const QStringList TestOnly{"Frame5", "Reset", "Label3", "Label2", "Label8", "questlabel", "rightanslabel",
                           "anslabel", "perclabel", "Label6", "autonewcheck", "sliderautonew", "sliderautonewlabel"};

struct Panel {
    test::TestServices fx;
    QPointer<formmelody> w = new formmelody(fx.services);

    Panel(bool autoNew = false)
    {
        w->Form_Load();
        w->show();
        if (!autoNew)
            test::click(button("autonewcheck"));
    }
    ~Panel() { delete w; }
    QAbstractButton *button(const QString &name) { return child<QAbstractButton>(w, name); }
    QString text(const QString &name) { return child<QLabel>(w, name)->text(); }
    QStringList counters()
    {
        QStringList texts;
        for (const QString &name : Counters)
            texts << text(name);
        return texts;
    }
    void ask() { test::click(button("New")); }
    void key(int k) { test::click(button(QStringLiteral("tasto_%1").arg(k))); }
};

enum class Wait { NoteGap, RepeatGap, AutoNew };

} // namespace

class tst_exercisepanel : public QObject
{
    Q_OBJECT

private slots:
    void percentageDropsTheFraction_data()
    {
        QTest::addColumn<int>("right");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("counters");
        QTest::newRow("2 of 3") << 2 << 3 << QStringList({"3", "2", "3", "66"});
        QTest::newRow("1 of 3") << 1 << 3 << QStringList({"3", "1", "3", "33"});
        QTest::newRow("3 of 3") << 3 << 3 << QStringList({"3", "3", "3", "100"});
        QTest::newRow("0 of 4") << 0 << 4 << QStringList({"4", "0", "4", "0"});
    }

    void percentageDropsTheFraction()
    {
        QFETCH(int, right);
        QFETCH(int, questions);
        Panel p;
        for (int q = 0; q < questions; ++q) {
            p.ask();
            p.key(q < right ? 0 : 1);
        }
        QTEST(p.counters(), "counters");
    }

    void closedQuestionIgnoresKeys_data()
    {
        QTest::addColumn<QString>("closing");
        QTest::addColumn<QStringList>("counters");
        QTest::addColumn<QString>("verdict");
        QTest::newRow("scored") << "tasto_0" << QStringList({"2", "2", "1", "100"}) << "Right!";
        QTest::newRow("Reset while pending") << "Reset" << QStringList({"0", "0", "0", "0"}) << "";
    }

    void closedQuestionIgnoresKeys()
    {
        QFETCH(QString, closing);
        Panel p;
        child<QComboBox>(p.w, "nnotescombo")->setCurrentIndex(1);
        p.ask();
        p.key(0); // half an answer, which Reset drops
        test::click(p.button(closing));
        QCOMPARE(int(p.w->question().nclicks), 0);
        p.fx.clearRecords();
        p.key(0);
        p.key(1);
        QTEST(p.counters(), "counters");
        QTEST(p.text("rightwronglabel"), "verdict");
        QVERIFY(p.fx.notesPlayed().empty());
        QVERIFY(p.w->Answered);
    }

    void practiceModeGreysTheScoreAndKeepsThePendingQuestion()
    {
        Panel p;
        p.ask();
        p.key(1);
        p.ask();
        test::click(p.button("Notest"));
        for (const QString &name : TestOnly)
            QVERIFY2(!child<QWidget>(p.w, name)->isEnabled(), qPrintable(name));
        QVERIFY(p.button("Reveal")->isEnabled());
        QCOMPARE(p.text("rightwronglabel"), "");
        QCOMPARE(p.counters(), QStringList({"2", "0", "1", "0"}));

        test::click(p.button("Test"));
        for (const QString &name : TestOnly)
            QVERIFY2(child<QWidget>(p.w, name)->isEnabled(), qPrintable(name));
        QVERIFY(!p.button("Reveal")->isEnabled());
        p.key(0);
        QCOMPARE(p.counters(), QStringList({"2", "1", "2", "50"}));
    }

    void autoNewAsksAtOnceWithNoDelay_data()
    {
        QTest::addColumn<bool>("autoNew");
        QTest::addColumn<int>("notes");
        QTest::addColumn<QString>("verdict");
        QTest::newRow("ticked") << true << 2 << "";
        QTest::newRow("unticked") << false << 1 << "Right!";
    }

    void autoNewAsksAtOnceWithNoDelay()
    {
        QFETCH(bool, autoNew);
        Panel p(autoNew);
        child<QSlider>(p.w, "sliderautonew")->setValue(0);
        QCOMPARE(p.text("sliderautonewlabel"), "0");
        p.ask();
        p.key(0); // the next question is left unanswered, which ends the chain
        QTEST(int(p.fx.notesPlayed().size()), "notes");
        QTEST(p.text("rightwronglabel"), "verdict");
        QCOMPARE(p.w->Answered, !autoNew);
        QCOMPARE(p.text("rightanslabel"), "1");
    }

    void dontShowAnswersKeepsTheVerdictOnly()
    {
        Panel p;
        QTest::keyClick(p.w, Qt::Key_N); // the letters run the panel's buttons
        QTest::keyClick(p.w, Qt::Key_R);
        QCOMPARE(p.fx.notesPlayed(), std::vector<int>({48, 48}));
        p.key(0);
        QCOMPARE(p.text("showlabel"), "C ");
        test::click(p.button("noanswers"));
        QCOMPARE(p.text("rightwronglabel") + p.text("showlabel"), "");
        p.ask();
        p.key(1);
        QTest::keyClick(p.w, Qt::Key_V);
        QCOMPARE(p.text("rightwronglabel"), "Wrong!");
        QCOMPARE(p.text("showlabel"), "");
        test::click(p.button("noanswers"));
        QCOMPARE(p.text("rightwronglabel"), "");
        QTest::keyClick(p.w, Qt::Key_V); // although the button is disabled
        QCOMPARE(p.text("showlabel"), "C ");
        test::click(p.button("Notest"));
        QTest::keyClick(p.w, Qt::Key_S); // resets in practice mode too
        QCOMPARE(p.counters(), QStringList({"0", "0", "0", "0"}));
    }

    void unloadOrClosingDuringAWaitStopsTheSequence_data()
    {
        QTest::addColumn<Wait>("wait");
        QTest::addColumn<bool>("closing");
        QTest::addColumn<int>("notes");
        for (bool closing : {false, true}) {
            const char *how = closing ? "program closing" : "window unloaded";
            QTest::addRow("%s in a note gap", how) << Wait::NoteGap << closing << 1;
            QTest::addRow("%s in a Repeat gap", how) << Wait::RepeatGap << closing << 1;
            QTest::addRow("%s in the Auto NEW wait", how) << Wait::AutoNew << closing << 0;
        }
    }

    void unloadOrClosingDuringAWaitStopsTheSequence()
    {
        QFETCH(Wait, wait);
        QFETCH(bool, closing);
        Panel p(wait == Wait::AutoNew);
        child<QComboBox>(p.w, "nnotescombo")->setCurrentIndex(2);
        child<QSlider>(p.w, "slidermultinotes")->setValue(100);
        child<QSlider>(p.w, "sliderautonew")->setValue(100);
        p.ask();
        if (wait == Wait::AutoNew) {
            p.key(0);
            p.key(0);
        }
        p.fx.clearRecords();
        setWaitScale(1);
        QObject context;
        QTimer::singleShot(30, &context, [&] { closing ? abandonWaits() : delete p.w; });
        if (wait == Wait::AutoNew)
            p.key(0);
        else
            test::click(p.button(wait == Wait::NoteGap ? "New" : "Repeat"));
        resumeWaits();
        QTEST(int(p.fx.notesPlayed().size()), "notes");
        QCOMPARE(p.w.isNull(), !closing);
    }
};

QTEST_MAIN(tst_exercisepanel)
#include "tst_exercisepanel.moc"
