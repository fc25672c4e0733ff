#include "TestServices.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QSlider>

using namespace tonaro;
using Ints = QList<int>;

namespace {

// The two draws that give each note under the start presets (4th to 7th
// octave, C major): the octave first, then the pitch class.
std::vector<double> startPresetDraws(std::initializer_list<int> notes)
{
    const Ints cMajor{0, 2, 4, 5, 7, 9, 11};
    std::vector<double> draws;
    for (int note : notes) {
        draws.push_back(rFor(note / 12 - 4, 4));
        draws.push_back(rFor(int(cMajor.indexOf(note % 12)), 7));
    }
    return draws;
}

struct Melody : test::Loaded<formmelody> {
    QAbstractButton *key(int k) { return get<QAbstractButton>(QStringLiteral("tasto_%1").arg(k)); }
    void ask(std::vector<double> draws, int nnotes = 1)
    {
        get<QComboBox>("nnotescombo")->setCurrentIndex(nnotes - 1);
        random.script(std::move(draws));
        clearRecords();
        press("New");
    }
    void tick(const char *name, int count, const Ints &indices)
    {
        for (int i = 0; i < count; ++i)
            get<QCheckBox>(QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i))->setChecked(indices.contains(i));
    }
};

} // namespace

class tst_formmelody : public QObject
{
    Q_OBJECT

private slots:
    void drawsFromTheTickedBoxesOnly_data()
    {
        QTest::addColumn<Ints>("octaveBoxes");
        QTest::addColumn<Ints>("noteBoxes");
        QTest::addColumn<double>("octaveR");
        QTest::addColumn<double>("noteR");
        QTest::addColumn<int>("note"); // drawn and judged; 0 when nothing is drawn
        QTest::addColumn<int>("sent");
        QTest::newRow("first of each") << Ints({3, 4, 5, 6}) << Ints({0, 2, 4}) << 0.0 << 0.0 << 48 << 48;
        QTest::newRow("last of each") << Ints({3, 4, 5, 6}) << Ints({0, 2, 4}) << 0.9999 << 0.9999 << 88 << 88;
        QTest::newRow("gaps in the lists") << Ints({0, 9}) << Ints({1, 11}) << 0.5 << 0.49 << 121 << 121;
        // The top of the 10th octave lies past the last MIDI note and sounds an octave lower.
        QTest::newRow("10th octave G#") << Ints({9}) << Ints({8}) << 0.3 << 0.6 << 128 << 116;
        QTest::newRow("10th octave B") << Ints({9}) << Ints({8, 11}) << 0.3 << 0.6 << 131 << 119;
        QTest::newRow("no octave") << Ints() << Ints({0}) << 0.0 << 0.0 << 0 << 0;
        QTest::newRow("no note") << Ints({4}) << Ints() << 0.0 << 0.0 << 0 << 0;
    }

    void drawsFromTheTickedBoxesOnly()
    {
        QFETCH(double, octaveR);
        QFETCH(double, noteR);
        QFETCH(int, note);
        QFETCH(int, sent);
        Melody m;
        QFETCH(Ints, octaveBoxes);
        QFETCH(Ints, noteBoxes);
        m.tick("octave", 10, octaveBoxes);
        m.tick("Nota", 12, noteBoxes);
        m.ask({octaveR, noteR}, note ? 1 : 3);
        QCOMPARE(m.played(), note ? Ints({sent}) : Ints());
        QVERIFY(m.boxes.boxes().empty());
        QCOMPARE(m.text("questlabel"), note ? "1" : "0");
        QCOMPARE(m.get("Repeat")->isEnabled(), note != 0);
        if (note) {
            QCOMPARE(int(m.w->question().notes[0]), note);
            test::click(m.key(note % 12));
            QCOMPARE(m.text("rightwronglabel"), "Right!");
        }
    }

    void answersThreeNotesInPlayingOrder_data()
    {
        QTest::addColumn<Ints>("keys");
        QTest::addColumn<bool>("byLetters");
        QTest::addColumn<QString>("verdict");
        QTest::addColumn<QString>("rightAnswers");
        QTest::newRow("right") << Ints({0, 4, 0}) << false << "Right!" << "3";
        QTest::newRow("right by letters") << Ints({0, 4, 0}) << true << "Right!" << "3";
        QTest::newRow("right notes, wrong order") << Ints({0, 0, 4}) << false << "Wrong!" << "0";
    }

    void answersThreeNotesInPlayingOrder()
    {
        QFETCH(Ints, keys);
        QFETCH(bool, byLetters);
        Melody m;
        m.ask(startPresetDraws({60, 64, 72}), 3);
        QCOMPARE(m.played(), Ints({60, 64, 72}));
        QCOMPARE(m.text("questlabel"), "3");
        for (int k : keys) {
            QCOMPARE(m.text("rightwronglabel"), "");
            if (byLetters)
                QTest::keyClick(m.w, k == 0 ? Qt::Key_C : Qt::Key_E);
            else
                test::click(m.key(k));
        }
        QTEST(m.text("rightwronglabel"), "verdict");
        QTEST(m.text("rightanslabel"), "rightAnswers");
        QCOMPARE(m.text("anslabel"), "1");
        QCOMPARE(m.text("showlabel"), "C E C ");
        QCOMPARE(int(m.played().size()), 3); // test-mode keys are silent
    }

    void lettersTakeCtrlAloneForSharps_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("note");
        QTest::newRow("C") << int(Qt::Key_C) << int(Qt::NoModifier) << 60;
        QTest::newRow("Ctrl+C") << int(Qt::Key_C) << int(Qt::ControlModifier) << 61;
        QTest::newRow("Ctrl+A") << int(Qt::Key_A) << int(Qt::ControlModifier) << 70;
        QTest::newRow("Ctrl+E has no sharp") << int(Qt::Key_E) << int(Qt::ControlModifier) << 64;
        QTest::newRow("Shift+C") << int(Qt::Key_C) << int(Qt::ShiftModifier) << 60;
        QTest::newRow("Ctrl+Shift+G") << int(Qt::Key_G) << int(Qt::ControlModifier | Qt::ShiftModifier) << 67;
    }

    void lettersTakeCtrlAloneForSharps()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, note);
        Melody m;
        m.press("Notest");
        // The letters reach the window whichever of its controls has the
        // focus (but the text field of the number box: tst_exactness).
        QTest::keyClick(m.get("Nota_1"), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QTest::keyClick(m.key(11), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QCOMPARE(m.played(), Ints({note, note}));
        QVERIFY(!m.get<QCheckBox>("Nota_1")->isChecked());
        QCOMPARE(m.text("questlabel"), "0");
    }

    void keyDuringANoteGapCountsAtOnce()
    {
        Melody m;
        m.get<QSlider>("slidermultinotes")->setValue(200);
        setWaitScale(1);
        int clicksDuringGap = -1;
        QTimer::singleShot(50, m.w, [&] {
            test::click(m.key(0));
            clicksDuringGap = m.w->question().nclicks;
        });
        m.ask(startPresetDraws({60, 64, 72}), 3);
        QCOMPARE(clicksDuringGap, 1);
        QCOMPARE(m.played(), Ints({60, 64, 72}));
        test::click(m.key(4));
        test::click(m.key(0));
        QCOMPARE(m.text("rightwronglabel"), "Right!");
    }
};

QTEST_MAIN(tst_formmelody)
#include "tst_formmelody.moc"
