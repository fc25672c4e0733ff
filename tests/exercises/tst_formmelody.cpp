#include "TestServices.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QSlider>

using namespace tonaro;
using Ints = QList<int>;

namespace {

struct Melody : test::Loaded<formmelody> {
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
    void key(int k) { press(QStringLiteral("tasto_%1").arg(k)); }
};

// The draws for the notes 60 (C), 64 (E), 72 (C) with the start presets:
// the octave among the 4th to 7th, then the pitch class among C major's seven.
const std::vector<double> CEC{rFor(1, 4), rFor(0, 7), rFor(1, 4), rFor(2, 7), rFor(2, 4), rFor(0, 7)};

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
        QTest::addColumn<int>("key");  // the key that answers right; -1 when nothing is drawn
        QTest::addColumn<Ints>("sent");
        QTest::newRow("first of each") << Ints({3, 4, 5, 6}) << Ints({0, 2, 4}) << 0.0 << 0.0 << 0 << Ints{48};
        QTest::newRow("last of each") << Ints({3, 4, 5, 6}) << Ints({0, 2, 4}) << 0.9999 << 0.9999 << 4 << Ints{88};
        QTest::newRow("gaps in the lists") << Ints({0, 9}) << Ints({1, 11}) << 0.5 << 0.49 << 1 << Ints{121};
        // The top of the 10th octave lies past the last MIDI note and sounds an octave lower.
        QTest::newRow("10th octave G#") << Ints({9}) << Ints({8}) << 0.3 << 0.6 << 8 << Ints{116};
        QTest::newRow("10th octave B") << Ints({9}) << Ints({8, 11}) << 0.3 << 0.6 << 11 << Ints{119};
        QTest::newRow("no octave") << Ints() << Ints({0}) << 0.0 << 0.0 << -1 << Ints{};
        QTest::newRow("no note") << Ints({4}) << Ints() << 0.0 << 0.0 << -1 << Ints{};
    }
    void drawsFromTheTickedBoxesOnly()
    {
        QFETCH(Ints, octaveBoxes);
        QFETCH(Ints, noteBoxes);
        QFETCH(double, octaveR);
        QFETCH(double, noteR);
        QFETCH(int, key);
        Melody m;
        m.tick("octave", 10, octaveBoxes);
        m.tick("Nota", 12, noteBoxes);
        m.ask({octaveR, noteR}, key >= 0 ? 1 : 3);
        QTEST(m.played(), "sent");
        QVERIFY(m.boxes.boxes().empty());
        QCOMPARE(m.text("questlabel"), key >= 0 ? "1" : "0");
        QCOMPARE(m.get("Repeat")->isEnabled(), key >= 0);
        if (key >= 0) {
            m.key(key);
            QCOMPARE(m.text("rightwronglabel"), "Right!");
        }
    }

    void answersThreeNotesInPlayingOrder_data()
    {
        QTest::addColumn<Ints>("keys");
        QTest::addColumn<QString>("verdict");
        QTest::addColumn<QStringList>("score");
        QTest::newRow("right") << Ints({0, 4, 0}) << "Right!" << QStringList{"3", "3", "1", "100"};
        QTest::newRow("right notes, wrong order") << Ints({0, 0, 4}) << "Wrong!" << QStringList{"3", "0", "1", "0"};
    }
    void answersThreeNotesInPlayingOrder()
    {
        QFETCH(Ints, keys);
        Melody m;
        m.ask(CEC, 3);
        QCOMPARE(m.played(), Ints({60, 64, 72}));
        for (int k : keys) {
            QCOMPARE(m.text("rightwronglabel"), "");
            m.key(k);
        }
        QTEST(m.text("rightwronglabel"), "verdict");
        QTEST(test::score(m.w), "score");
        QCOMPARE(m.text("showlabel"), "C E C ");
        QCOMPARE(m.played().size(), 3); // test-mode keys are silent
        m.key(0);
        m.key(0);
        m.key(0);
        QCOMPARE(m.text("anslabel"), "1");
    }

    // Six notes or more are revealed in 10-point type, five or fewer in 18.
    void revealTypeSize_data()
    {
        QTest::addColumn<int>("nnotes");
        QTest::addColumn<double>("points");
        QTest::newRow("5 notes") << 5 << 18.0;
        QTest::newRow("6 notes") << 6 << 10.0;
        QTest::newRow("10 notes") << 10 << 10.0;
    }
    void revealTypeSize()
    {
        QFETCH(int, nnotes);
        Melody m;
        m.press("Notest");
        m.ask({}, nnotes);
        QCOMPARE(m.played().size(), nnotes);
        m.press("Reveal");
        QTEST(m.get("showlabel")->font().pointSizeF(), "points");
        QCOMPARE(m.text("showlabel"), QString("C ").repeated(nnotes));
    }

    // Every letter, with each modifier state: Ctrl alone gives the sharp,
    // any other state acts as the plain letter. In practice mode a key plays
    // its note in the 5th octave.
    void letters_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("note");
        const struct { const char *letter; int plain, ctrl; } letters[] = {
            {"C", 60, 61}, {"D", 62, 63}, {"E", 64, 64}, {"F", 65, 66}, {"G", 67, 68}, {"A", 69, 70}, {"B", 71, 71}};
        const struct { const char *name; Qt::KeyboardModifiers modifiers; bool ctrl; } states[] = {
            {"", Qt::NoModifier, false}, {"Ctrl+", Qt::ControlModifier, true}, {"Shift+", Qt::ShiftModifier, false},
            {"Alt+", Qt::AltModifier, false}, {"Ctrl+Shift+", Qt::ControlModifier | Qt::ShiftModifier, false},
            {"Ctrl+Alt+", Qt::ControlModifier | Qt::AltModifier, false}};
        for (const auto &l : letters)
            for (const auto &s : states)
                QTest::addRow("%s%s", s.name, l.letter) << int(Qt::Key_A + (l.letter[0] - 'A')) << int(s.modifiers) << (s.ctrl ? l.ctrl : l.plain);
        QTest::newRow("X does nothing") << int(Qt::Key_X) << int(Qt::NoModifier) << 0;
        QTest::newRow("H does nothing") << int(Qt::Key_H) << int(Qt::ControlModifier) << 0;
    }
    void letters()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, note);
        Melody m;
        m.press("Notest");
        // The letters reach the window whichever of its controls has the
        // focus (but the text field of the number box: tst_exactness).
        QTest::keyClick(m.get("Nota_1"), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QTest::keyClick(m.get("tasto_11"), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QCOMPARE(m.played(), note ? Ints({note, note}) : Ints());
        QVERIFY(!m.get<QCheckBox>("Nota_1")->isChecked());
    }

    // N, R, V and S run their buttons' handlers with or without Ctrl, also
    // where the button is disabled: V reveals in test mode, S resets in
    // practice mode.
    void commandLetters_data()
    {
        QTest::addColumn<int>("modifiers");
        QTest::newRow("plain") << int(Qt::NoModifier);
        QTest::newRow("Ctrl") << int(Qt::ControlModifier);
        QTest::newRow("Shift") << int(Qt::ShiftModifier);
    }
    void commandLetters()
    {
        QFETCH(int, modifiers);
        const auto type = [&](QWidget *w, Qt::Key key) { QTest::keyClick(w, key, Qt::KeyboardModifiers(modifiers)); };
        Melody m;
        m.random.script(CEC);
        type(m.w, Qt::Key_N);
        QCOMPARE(m.played(), Ints{60});
        QCOMPARE(m.text("questlabel"), "1");
        type(m.get("tasto_3"), Qt::Key_R);
        QCOMPARE(m.played(), Ints({60, 60}));
        QVERIFY(!m.get("Reveal")->isEnabled());
        type(m.w, Qt::Key_V);
        QCOMPARE(m.text("showlabel"), "C ");
        m.press("Notest");
        type(m.w, Qt::Key_S);
        QCOMPARE(test::score(m.w), QStringList({"0", "0", "0", "0"}));
        QCOMPARE(m.text("showlabel"), "");
    }
};

QTEST_MAIN(tst_formmelody)
#include "tst_formmelody.moc"
