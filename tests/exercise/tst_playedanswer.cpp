// Notes played on a MIDI keyboard, without a MIDI system: which sources
// count and what the notes answer in each window, through an input double that strikes keys. Which
// messages are struck keys, and how they reach the user-interface thread,
// is checked end to end, in tst_midiin_e2e.

#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "midi/MidiInputSources.h"

using namespace tonaro;
using namespace tonaro::test;

namespace {

// A window whose services carry an input double; strike() hands the notes
// over as the user-interface thread takes them from its queue.
struct Played : MidiInput {
    Loaded<ExercisePanel> window;

    explicit Played(const QString &name)
        : window(false, [this, name](Services services) {
            services.input = this;
            return test::makeExercise(name, services);
        })
    {
    }
    void strike(const std::vector<int> &notes, int gapMs = 10)
    {
        auto at = Moment::clock::now();
        for (int note : notes) {
            emit notePlayed(note, at);
            at += std::chrono::milliseconds(gapMs);
        }
    }
};

} // namespace

class PlayedAnswerTest : public QObject
{
    Q_OBJECT

private slots:
    // Every source but those that would bring the program's own notes back.
    void ownNotesNeverComeBack()
    {
        const std::tuple<const char *, bool, bool> rows[] = {
            // source, ALSA read directly, listened to
            {"USB Keys:USB Keys MIDI 1 24:0", true, true},
            {"Midi Through:Midi Through Port-0 14:0", true, false},
            {"Tonaro:Tonaro 128:0", true, false},
            {"Tonaro-01:in", false, false}, // JACK's numbered copy of the program's name
            {"Synth:Synth in 20:0", true, false}, // the port the program plays to
            {"a2j:USB Keys [24] (capture): USB Keys MIDI 1", true, false}, // JACK's mirror of ALSA...
            {"a2j:USB Keys [24] (capture): USB Keys MIDI 1", false, true}, // ...the one way without ALSA
            {"Tonarola:out", false, true},
        };
        for (const auto &[source, alsaRead, wanted] : rows)
            QVERIFY2(MidiInputSources({{"Synth:Synth in 20:0"}, alsaRead}).wanted(source) == wanted, source);
    }

    // A played answer scores, judges and reveals as the click it stands for,
    // once; a whole answer that matches no button is a wrong one; notes that
    // make no whole answer, or were played in practice mode, do nothing.
    void playedAnswerActsAsItsButton()
    {
        // The start-up question settings: note recognition draws an octave
        // of 4th-7th, then a note of C major; the catalogue windows draw one
        // entry of their "Main" sets (intervals 0 2 4 5 7 9 11 12; maj min 7
        // maj7 min7 sus4 7sus4; major minor ... minor pentatonic diminished;
        // all seven degrees), on the fixed root C.
        const struct {
            const char *window;
            std::vector<double> draws;
            std::vector<int> notes;
            const char *verdict, *answer, *score; // score: questions, right answers, answers, percentage
            int gapMs = 10;
        } rows[] = {
            {"formmelody", {rFor(1, 4), rFor(2, 7)}, {88}, "Right!", "E ", "1 1 1 100"}, // any octave
            {"formintervalli", {rFor(4, 8)}, {69, 62}, "Right!", "Perfect 5th", "1 1 1 100"}, // downward
            {"formintervalli", {rFor(7, 8)}, {48, 60}, "Right!", "Octave", "1 1 1 100"},
            {"Formchords", {rFor(1, 7)}, {57, 60, 64, 69}, "Right!", "C min", "1 1 1 100"}, // doublings ignored
            {"Formchords", {rFor(1, 7)}, {60, 61, 62}, "Wrong!", "C min", "1 0 1 0"}, // no type
            {"Formchords", {rFor(5, 7)}, {67, 65, 60}, "Right!", "C sus4", "1 1 1 100"}, // struck high to low
            {"Formchords", {rFor(5, 7)}, {60, 65, 67}, "Right!", "C sus4", "1 1 1 100", 149}, // one chord
            {"Formchords", {rFor(5, 7)}, {60, 65, 67}, "", "", "1 0 0 0", 150}, // three single notes
            // D major after a repeated note, which starts the run afresh.
            {"Formscales", {rFor(0, 7)}, {60, 62, 62, 64, 66, 67, 69, 71, 73, 74}, "Right!", "C major", "1 1 1 100"},
            {"formarmonia", {rFor(4, 7)}, {50, 55, 59, 67}, "Right!", "G maj (V)", "1 1 1 100"}, // inverted and doubled
            {"formarmonia", {rFor(4, 7)}, {61, 65, 68}, "Wrong!", "G maj (V)", "1 0 1 0"}, // outside the key
        };
        for (const auto &row : rows) {
            Played played(row.window);
            played.window.random.script(row.draws);
            played.window.press("New");
            // A note played in practice mode is no part of the answer; in
            // note recognition it sounds as the key clicked, in the 5th octave
            // (the melody row's 88 is an E).
            played.window.press("Notest");
            played.window.clearRecords();
            played.strike({row.notes.front()});
            QCOMPARE(played.window.played(), row.window == QLatin1String("formmelody") ? QList<int>{64} : QList<int>{});
            played.window.press("Test");
            played.window.clearRecords();
            played.strike(row.notes, row.gapMs);
            // A chord is complete once no note has come for 150 ms.
            QTest::qWait(200 + int(row.notes.size()) * row.gapMs);
            QTRY_COMPARE(played.window.text("rightwronglabel") + " " + row.window, row.verdict + QString(" ") + row.window);
            QCOMPARE(played.window.text("showlabel"), row.answer);
            QCOMPARE(score(played.window.w).join(' '), row.score);
            // Test mode answers make no sound.
            QCOMPARE(played.window.played(), QList<int>{});
        }
    }
};

QTEST_MAIN(PlayedAnswerTest)
#include "tst_playedanswer.moc"
