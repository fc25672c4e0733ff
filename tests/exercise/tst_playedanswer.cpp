// What played notes answer, window by window, without MIDI: each case feeds
// notes at given times to a window's reading and lists what came out, and
// when ("3:7" = after the third note, the answer with index 7; "end:7" = once
// the chord's gap has passed; -1 = a wrong answer).

#include "exercise/PlayedAnswer.h"
#include "exercises/Formchords/ChordCatalogue.h"
#include "exercises/Formscales/ScaleCatalogue.h"
#include "exercises/formarmonia/DegreeCatalogue.h"

#include <QtTest>

using namespace tonaro;
using namespace std::chrono_literals;

namespace {

// Each window's reading, as the windows set them up.
PlayedAnswer readingOf(const QString &window, int tonic, bool minor)
{
    using G = PlayedAnswer::Gesture;
    if (window == "melody")
        return {G::Single, &played::keyOf};
    if (window == "intervals")
        return {G::Pair, &played::intervalOf};
    if (window == "chords")
        return {G::Struck, [](std::span<const int> n) { return played::chordOf(n, ChordCatalogue); }};
    if (window == "scales")
        return {G::RisingOctave, [](std::span<const int> n) { return played::scaleOf(n, ScaleCatalogue); }};
    return {G::Struck, [tonic, minor](std::span<const int> n) {
                std::array<NoteRow, 7> triads;
                for (int d = 0; d < 7; ++d)
                    triads[std::size_t(d)] = degreeTriad(tonic, minor ? KeyMode::Minor : KeyMode::Major, d, false);
                return played::triadOf(n, triads);
            }};
}

} // namespace

class PlayedAnswerTest : public QObject
{
    Q_OBJECT

private slots:
    void readsPlayedNotes_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QList<int>>("notes");
        QTest::addColumn<QList<int>>("gapsMs"); // before each note after the first; missing = 10 ms
        QTest::addColumn<QStringList>("readings");
        QTest::addColumn<int>("tonic");
        QTest::addColumn<bool>("minor");

        auto row = [](const char *name, const char *window, QList<int> notes, QStringList readings,
                      QList<int> gaps = {}, int tonic = 60, bool minor = false) {
            QTest::newRow(name) << QString::fromLatin1(window) << notes << gaps << readings << tonic << minor;
        };
        // Note recognition: every note is the key of its pitch class, whatever its octave.
        row("melody middle C", "melody", {60}, {"1:0"});
        row("melody low A#", "melody", {22}, {"1:10"});
        row("melody three notes", "melody", {60, 64, 72}, {"1:0", "2:4", "3:0"});
        row("melody top B", "melody", {131}, {"1:11"});
        // Intervals: the distance of two notes, in either order.
        row("fifth upward", "intervals", {60, 67}, {"2:7"});
        row("fifth downward", "intervals", {67, 60}, {"2:7"});
        row("together", "intervals", {64, 60}, {"2:4"}, {0});
        row("unison", "intervals", {60, 60}, {"2:0"});
        row("octave", "intervals", {48, 60}, {"2:12"});
        row("minor ninth dropped", "intervals", {60, 73}, {});
        row("one note is no answer", "intervals", {60}, {});
        row("after a dropped pair", "intervals", {60, 73, 62, 65}, {"4:3"});
        row("two pairs", "intervals", {60, 61, 70, 59}, {"2:1", "4:11"});
        // Chords: distances above the lowest note, doublings ignored.
        row("maj", "chords", {60, 64, 67}, {"end:0"});
        row("min7 on A", "chords", {57, 60, 64, 67}, {"end:4"});
        row("maj doubled", "chords", {48, 60, 64, 67, 72}, {"end:0"});
        row("dim", "chords", {62, 65, 68}, {"end:11"});
        row("aug", "chords", {60, 64, 68}, {"end:12"});
        row("sus4 struck high to low", "chords", {67, 65, 60}, {"end:5"});
        row("13", "chords", {60, 64, 67, 70, 74, 81}, {"end:19"});
        row("11", "chords", {60, 64, 67, 70, 74, 77}, {"end:18"});
        row("7-9", "chords", {60, 64, 67, 70, 73}, {"end:17"});
        row("9 with the ninth below the third", "chords", {60, 62, 64, 67, 70}, {"end:9"});
        row("first inversion is no type", "chords", {64, 67, 72}, {"end:-1"});
        row("cluster", "chords", {60, 61, 62}, {"end:-1"});
        row("two pitch classes", "chords", {60, 67}, {"end:-1"});
        row("one note is no chord", "chords", {60}, {});
        row("octave is no chord", "chords", {60, 72}, {});
        row("149 ms apart is one chord", "chords", {60, 64, 67}, {"end:0"}, {149, 149});
        row("150 ms apart is the next chord", "chords", {60, 64, 67, 57, 60, 64}, {"4:0", "end:1"}, {10, 10, 150});
        // Scales: a rising run from a note to its octave.
        row("C major", "scales", {60, 62, 64, 65, 67, 69, 71, 72}, {"8:0"});
        row("G mixolydian", "scales", {55, 57, 59, 60, 62, 64, 65, 67}, {"8:16"});
        row("A minor pentatonic", "scales", {57, 60, 62, 64, 67, 69}, {"6:5"});
        row("diminished", "scales", {60, 62, 63, 65, 66, 68, 69, 71, 72}, {"9:6"});
        row("cromatic", "scales", {60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70, 71, 72}, {"13:8"});
        row("locrian", "scales", {59, 60, 62, 64, 65, 67, 69, 71}, {"8:17"});
        row("no such scale", "scales", {60, 61, 63, 66, 67, 70, 72}, {"7:-1"});
        row("a step down starts afresh", "scales", {60, 62, 61, 63, 65, 66, 68, 70, 72, 73}, {"10:0"});
        row("a repeated note starts afresh", "scales", {60, 62, 62, 64, 66, 67, 69, 71, 73, 74}, {"10:0"});
        row("past the octave starts afresh", "scales", {60, 62, 64, 65, 67, 69, 71, 73}, {});
        row("half a scale", "scales", {60, 62, 64, 65}, {});
        // Harmony: the degree whose triad has the played pitch classes.
        row("C major I", "harmony", {60, 64, 67}, {"end:0"});
        row("C major V first inversion", "harmony", {59, 62, 67}, {"end:4"});
        row("C major II doubled, second inversion", "harmony", {45, 50, 53, 62}, {"end:1"});
        row("C major VII", "harmony", {71, 74, 77}, {"end:6"});
        row("C major IV low root", "harmony", {53, 65, 69, 72}, {"end:3"});
        row("triad outside the key", "harmony", {61, 65, 68}, {"end:-1"});
        row("seventh chord", "harmony", {67, 71, 74, 77}, {"end:-1"});
        row("two notes", "harmony", {60, 64}, {"end:-1"});
        row("one note is no chord", "harmony", {60}, {});
        row("A minor III", "harmony", {60, 64, 67}, {"end:2"}, {}, 57, true);
        row("A minor VII", "harmony", {55, 59, 62}, {"end:6"}, {}, 57, true);
        row("F# major VI", "harmony", {63, 66, 70}, {"end:5"}, {}, 54, false);
    }

    void readsPlayedNotes()
    {
        QFETCH(QString, window);
        QFETCH(QList<int>, notes);
        QFETCH(QList<int>, gapsMs);
        QFETCH(QStringList, readings);
        QFETCH(int, tonic);
        QFETCH(bool, minor);

        PlayedAnswer reading = readingOf(window, tonic, minor);
        QStringList got;
        auto at = PlayedAnswer::Clock::now();
        for (int i = 0; i < notes.size(); ++i) {
            if (i > 0)
                at += std::chrono::milliseconds(i - 1 < gapsMs.size() ? gapsMs[i - 1] : 10);
            if (const played::Reading r = reading.add(notes[i], at))
                got << QStringLiteral("%1:%2").arg(i + 1).arg(*r);
        }
        if (const auto deadline = reading.deadline()) {
            QCOMPARE(reading.complete(*deadline - 1ms), std::nullopt);
            if (const played::Reading r = reading.complete(*deadline))
                got << QStringLiteral("end:%1").arg(*r);
        }
        QCOMPARE(got, readings);
    }
};

QTEST_GUILESS_MAIN(PlayedAnswerTest)
#include "tst_playedanswer.moc"
