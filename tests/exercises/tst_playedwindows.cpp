// Played notes in the five windows, through the MIDI input double: a played
// answer scores, judges and reveals as the click it stands for, practice
// mode in the catalogue windows ignores it, and note recognition shows a
// revealed answer on its piano.

#include "PlayingMidiInput.h"
#include "TestServices.h"

#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/formintervalli.h"
#include "exercises/formmelody/PianoKeyboard.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QKeyEvent>

using namespace tonaro;
using namespace tonaro::test;
using Ints = QList<int>;
using Draws = QList<double>;

namespace {

// A window whose services carry the input double.
struct Played {
    PlayingMidiInput input;
    Loaded<ExercisePanel> window;

    Played(const QString &name, bool autoNew = false)
        : window(autoNew, [this, name](const Services &services) {
            Services withInput = services;
            withInput.input = &input;
            return test::makeExercise(name, withInput);
        })
    {
    }
};

// The start-up question settings: note recognition draws an octave of
// 4th-7th, then a note of C major; the catalogue windows draw one ticked
// entry ("Main" sets; all seven degrees), on the fixed root C.
// Each note of a chord is struck 10 ms after the one before.
void strikeAll(PlayingMidiInput &input, const Ints &notes)
{
    auto at = PlayingMidiInput::now();
    for (int note : notes) {
        input.strike(note, at);
        at += std::chrono::milliseconds(10);
    }
}

} // namespace

class PlayedWindowsTest : public QObject
{
    Q_OBJECT

private slots:
    void playedAnswerActsAsItsButton_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<Draws>("draws");
        QTest::addColumn<Ints>("notes");
        QTest::addColumn<QString>("verdict");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QStringList>("counters");

        // 5th octave (2nd of 4), E (3rd of 7): note 64.
        const Draws e64{rFor(1, 4), rFor(2, 7)};
        QTest::newRow("melody E in another octave") << "formmelody" << e64 << Ints{88} << "Right!" << "E " << QStringList{"1", "1", "1", "100"};
        QTest::newRow("melody F") << "formmelody" << e64 << Ints{65} << "Wrong!" << "E " << QStringList{"1", "0", "1", "0"};
        // Main intervals 0 2 4 5 7 9 11 12: the 5th is the perfect fifth.
        const Draws fifth{rFor(4, 8)};
        QTest::newRow("interval fifth down") << "formintervalli" << fifth << Ints{69, 62} << "Right!" << "Perfect 5th" << QStringList{"1", "1", "1", "100"};
        QTest::newRow("interval sixth") << "formintervalli" << fifth << Ints{62, 70} << "Wrong!" << "Perfect 5th" << QStringList{"1", "0", "1", "0"};
        QTest::newRow("interval too wide, then right") << "formintervalli" << fifth << Ints{50, 70, 60, 67} << "Right!" << "Perfect 5th" << QStringList{"1", "1", "1", "100"};
        // Main chords 0-6: the 2nd is "min", on C.
        const Draws minor{rFor(1, 7)};
        QTest::newRow("chord min on A") << "Formchords" << minor << Ints{57, 60, 64, 69} << "Right!" << "C min" << QStringList{"1", "1", "1", "100"};
        QTest::newRow("chord maj") << "Formchords" << minor << Ints{60, 64, 67} << "Wrong!" << "C min" << QStringList{"1", "0", "1", "0"};
        QTest::newRow("chord of no type") << "Formchords" << minor << Ints{60, 61, 62} << "Wrong!" << "C min" << QStringList{"1", "0", "1", "0"};
        // Main scales 0-6: the 1st is "major", on C.
        const Draws major{rFor(0, 7)};
        QTest::newRow("scale D major") << "Formscales" << major << Ints{62, 64, 66, 67, 69, 71, 73, 74} << "Right!" << "C major" << QStringList{"1", "1", "1", "100"};
        QTest::newRow("scale D minor") << "Formscales" << major << Ints{62, 64, 65, 67, 69, 70, 72, 74} << "Wrong!" << "C major" << QStringList{"1", "0", "1", "0"};
        QTest::newRow("scale of no kind") << "Formscales" << major << Ints{60, 61, 62, 72} << "Wrong!" << "C major" << QStringList{"1", "0", "1", "0"};
        // All seven degrees: the 5th is V, G major in C.
        const Draws five{rFor(4, 7)};
        QTest::newRow("harmony V inverted") << "formarmonia" << five << Ints{50, 55, 59, 67} << "Right!" << "G maj (V)" << QStringList{"1", "1", "1", "100"};
        QTest::newRow("harmony I") << "formarmonia" << five << Ints{60, 64, 67} << "Wrong!" << "G maj (V)" << QStringList{"1", "0", "1", "0"};
        QTest::newRow("harmony outside the key") << "formarmonia" << five << Ints{61, 65, 68} << "Wrong!" << "G maj (V)" << QStringList{"1", "0", "1", "0"};
    }
    void playedAnswerActsAsItsButton()
    {
        QFETCH(QString, window);
        QFETCH(Draws, draws);
        QFETCH(Ints, notes);
        QFETCH(QString, verdict);
        QFETCH(QString, answer);
        QFETCH(QStringList, counters);

        Played played(window);
        played.window.random.script(std::vector<double>(draws.begin(), draws.end()));
        played.window.press("New");
        played.window.clearRecords();
        strikeAll(played.input, notes);
        // A chord is complete once no note has come for 150 ms.
        QTRY_COMPARE(played.window.text("rightwronglabel"), verdict);
        QCOMPARE(played.window.text("showlabel"), answer);
        QCOMPARE(score(played.window.w), counters);
        // Test mode answers make no sound.
        QCOMPARE(played.window.played(), Ints{});

        // Scored once: the same notes again change nothing.
        strikeAll(played.input, notes);
        QTest::qWait(200);
        QCOMPARE(score(played.window.w), counters);
    }

    // Auto NEW follows a played answer as it follows a click.
    void autoNewFollowsAPlayedAnswer()
    {
        Played played("formintervalli", true);
        played.window.random.script({rFor(4, 8), rFor(0, 8)});
        played.window.press("New");
        strikeAll(played.input, {60, 67});
        QCOMPARE(score(played.window.w), (QStringList{"2", "1", "1", "100"}));
        QCOMPARE(played.window.text("rightwronglabel"), QStringLiteral("Right!"));
    }

    void practiceIgnoresPlayedNotesInCatalogueWindows_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<Ints>("inPractice");
        QTest::addColumn<Ints>("thenInTest");
        // Each pair would make a whole answer if practice mode kept its part.
        QTest::newRow("intervals") << "formintervalli" << Ints{60} << Ints{67};
        QTest::newRow("chords") << "Formchords" << Ints{60, 64} << Ints{67};
        QTest::newRow("scales") << "Formscales" << Ints{60, 62, 64, 65, 67, 69, 71} << Ints{72};
        QTest::newRow("harmony") << "formarmonia" << Ints{60, 64} << Ints{67};
    }
    void practiceIgnoresPlayedNotesInCatalogueWindows()
    {
        QFETCH(QString, window);
        QFETCH(Ints, inPractice);
        QFETCH(Ints, thenInTest);
        Played played(window);
        played.window.press("New");
        played.window.press("Notest");
        played.window.clearRecords();
        strikeAll(played.input, inPractice);
        // Back in test mode the notes played meanwhile are no part of an answer.
        played.window.press("Test");
        strikeAll(played.input, thenInTest);
        QTest::qWait(200);
        QCOMPARE(played.window.played(), Ints{});
        QCOMPARE(played.window.text("rightwronglabel"), QString());
        QCOMPARE(score(played.window.w), (QStringList{"1", "0", "0", "0"}));
    }

    // In practice mode a played key sounds as a clicked one: in the 5th octave.
    void melodyPracticeSoundsThePlayedKey()
    {
        Played played("formmelody");
        played.window.press("Notest");
        played.input.strike(33);
        QCOMPARE(played.window.played(), Ints{69});
    }

    void pianoShowsTheRevealedNotes_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("noAnswers");
        QTest::addColumn<QStringList>("marks");
        const QStringList lit{"1 3", "", "", "", "2", "", "", "", "", "", "", ""};
        const QStringList dark(12);
        QTest::newRow("after a right answer") << "answer" << false << lit;
        QTest::newRow("V key before answering") << "letter" << false << lit;
        QTest::newRow("Reveal in practice mode") << "button" << false << lit;
        QTest::newRow("answers hidden") << "answer" << true << dark;
        QTest::newRow("V key, answers hidden") << "letter" << true << dark;
    }
    void pianoShowsTheRevealedNotes()
    {
        QFETCH(QString, how);
        QFETCH(bool, noAnswers);
        QFETCH(QStringList, marks);
        Played played("formmelody");
        auto *keyboard = played.window.get<PianoKeyboard>("pianokeyboard");
        auto shown = [keyboard] {
            const auto &m = keyboard->answerMarks();
            return QStringList(m.begin(), m.end());
        };
        // Three notes: 60, 64, 72.
        played.window.get<QComboBox>("nnotescombo")->setCurrentIndex(2);
        played.window.random.script({rFor(1, 4), rFor(0, 7), rFor(1, 4), rFor(2, 7), rFor(2, 4), rFor(0, 7)});
        played.window.get<QCheckBox>("noanswers")->setChecked(noAnswers);
        played.window.press("New");
        QCOMPARE(shown(), QStringList(12));
        const QImage before = keyboard->grab().toImage();
        if (how == "answer") {
            strikeAll(played.input, {48, 76, 84});
            QCOMPARE(played.window.text("rightwronglabel"), QStringLiteral("Right!"));
        } else if (how == "letter") {
            QTest::keyClick(played.window.get("New"), Qt::Key_V);
        } else {
            played.window.press("Notest");
            played.window.press("Reveal");
        }
        QCOMPARE(shown(), marks);
        // Lit keys look different; dark ones as before.
        const QImage after = keyboard->grab().toImage();
        QCOMPARE(after != before, !noAnswers);

        // Until the next New or Reset.
        if (how == "button")
            played.window.press("Test");
        played.window.press(how == "letter" ? "Reset" : "New");
        QCOMPARE(shown(), QStringList(12));
    }
};

QTEST_MAIN(PlayedWindowsTest)
#include "tst_playedwindows.moc"
