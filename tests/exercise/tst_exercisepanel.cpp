#include "TestServices.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/formmelody.h"

#include <QComboBox>
#include <QPushButton>
#include <QSlider>
#include <chrono>
#include <random>

// The shared panel's behaviour, driven through the note-recognition window,
// the wait it times its sequences with and the random draw it asks with. The
// scripted draws run out at once, so every question is the note 48 (C): key
// 0 answers it right, key 1 wrong.

using namespace tonaro;

namespace {

struct Panel : test::Loaded<formmelody> {
    using Loaded::Loaded;
    void key(int k) { press(QStringLiteral("tasto_%1").arg(k)); }
};

enum class Wait { NoteGap, RepeatGap, AutoNew };

// Reseeds from a coarse clock alone, so it repeats its value for draws
// within one tick: the chi-square test must catch it.
class CoarseClockSource : public RandomSource
{
public:
    double draw() override
    {
        const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now().time_since_epoch()).count();
        std::minstd_rand generator(std::uint32_t(micros % 2147483646 + 1));
        return double(generator() - 1) / double(std::minstd_rand::modulus - 1);
    }
};

} // namespace

class tst_exercisepanel : public QObject
{
    Q_OBJECT

private slots:
    void percentageDropsTheFraction_data()
    {
        QTest::addColumn<int>("right");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("score");
        QTest::newRow("2 of 3") << 2 << 3 << QStringList({"3", "2", "3", "66"});
        QTest::newRow("1 of 3") << 1 << 3 << QStringList({"3", "1", "3", "33"});
        QTest::newRow("0 of 4") << 0 << 4 << QStringList({"4", "0", "4", "0"});
    }

    void percentageDropsTheFraction()
    {
        QFETCH(int, right);
        QFETCH(int, questions);
        Panel p;
        for (int q = 0; q < questions; ++q) {
            p.press("New");
            p.key(q < right ? 0 : 1);
        }
        QTEST(test::score(p.w), "score");
    }

    // The verdict still shows; the answer stays hidden.
    void dontShowAnwersHidesTheAnswerNotTheVerdict()
    {
        Panel p;
        p.press("New");
        p.key(0);
        QVERIFY(!p.text("showlabel").isEmpty());
        p.press("noanswers");
        QCOMPARE(p.text("showlabel"), QString());
        p.press("New");
        p.key(0);
        QCOMPARE(p.text("rightwronglabel"), QStringLiteral("Right!"));
        QCOMPARE(p.text("showlabel"), QString());
    }

    // Practice greys the score and never changes it; the keys play instead.
    void practiceModeLeavesTheScoreAlone()
    {
        Panel p;
        p.press("New");
        p.key(0);
        const QStringList score = test::score(p.w);
        p.press("Notest");
        QVERIFY(!p.get("questlabel")->isEnabled());
        QVERIFY(p.get("Reveal")->isEnabled());
        p.clearRecords();
        p.key(9);
        QCOMPARE(p.played(), QList<int>{69});
        QCOMPARE(test::score(p.w), score);
        p.press("Test");
        QVERIFY(p.get("questlabel")->isEnabled());
        QVERIFY(!p.get("Reveal")->isEnabled());
    }

    // Another exercise chosen on the bar deletes the window; the program
    // closing abandons every wait. Either way the sequence stops there, and
    // under the address sanitizer any use of the freed window would show.
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
        p.get<QComboBox>("nnotescombo")->setCurrentIndex(2);
        p.get<QSlider>("slidermultinotes")->setValue(100);
        p.get<QSlider>("sliderautonew")->setValue(100);
        p.press("New");
        if (wait == Wait::AutoNew) {
            p.key(0);
            p.key(0);
        }
        p.clearRecords();
        setWaitScale(1);
        QObject context;
        QTimer::singleShot(30, &context, [&] { closing ? abandonWaits() : delete p.w; });
        if (wait == Wait::AutoNew)
            p.key(0);
        else
            p.press(wait == Wait::NoteGap ? "New" : "Repeat");
        resumeWaits();
        QTEST(int(p.played().size()), "notes");
        QCOMPARE(p.w.isNull(), !closing);
    }

    // A wait that processes events runs a click inside itself, nested in
    // the waiting handler; one that does not leaves it for afterwards.
    // Neither ends earlier than asked.
    void waitNestsClicksOnlyWhenItProcessesEvents_data()
    {
        QTest::addColumn<int>("milliseconds");
        QTest::addColumn<bool>("processEvents");
        QTest::newRow("0, events") << 0 << true;
        QTest::newRow("0, no events") << 0 << false;
        QTest::newRow("40, events") << 40 << true;
        QTest::newRow("40, no events") << 40 << false;
    }

    void waitNestsClicksOnlyWhenItProcessesEvents()
    {
        QFETCH(int, milliseconds);
        QFETCH(bool, processEvents);
        setWaitScale(1);
        bool waiting = false;
        int ranInside = -1;
        QPushButton button;
        connect(&button, &QPushButton::clicked, [&] { ranInside = waiting; });
        QTimer::singleShot(milliseconds / 4, &button, [&] { button.click(); });

        waiting = true;
        const auto start = std::chrono::steady_clock::now();
        WaitMs(milliseconds, processEvents);
        const double took = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        waiting = false;
        QVERIFY2(took >= milliseconds && took < milliseconds + 50, qPrintable(QString::number(took)));
        QTRY_VERIFY(ranInside != -1);
        QCOMPARE(ranInside, int(processEvents && milliseconds > 0));
        setWaitScale(0);
    }

    // A note is an octave drawn from the ticked octaves, then a pitch class
    // from the ticked notes, each its own reseeded draw right after the
    // other. Every pair must be equally likely: each draw uniform over its
    // choices and the two independent of each other. The threshold is for a
    // significance of 1e-6: a sound generator fails about once in a million runs.
    void notesAreUniformOverTheTickedChoices_data()
    {
        QTest::addColumn<bool>("coarse");
        QTest::addColumn<int>("octaves");
        QTest::addColumn<int>("pitchClasses");
        QTest::addColumn<double>("threshold"); // for octaves x pitchClasses - 1 degrees of freedom
        for (const bool coarse : {false, true}) {
            QTest::addRow("%sall boxes", coarse ? "coarse clock, " : "") << coarse << 10 << 12 << 207.2;
            QTest::addRow("%sGuitar, C major", coarse ? "coarse clock, " : "") << coarse << 4 << 7 << 77.19;
        }
    }

    void notesAreUniformOverTheTickedChoices()
    {
        QFETCH(bool, coarse);
        QFETCH(int, octaves);
        QFETCH(int, pitchClasses);
        QFETCH(double, threshold);
        CoarseClockSource coarseSource;
        ClockRandomSource clockSource;
        RandomSource &random = coarse ? static_cast<RandomSource &>(coarseSource) : clockSource;
        constexpr int PerCell = 1000;
        std::vector<int> cells(std::size_t(octaves * pitchClasses), 0);
        for (std::size_t i = 0; i < PerCell * cells.size(); ++i) {
            const int octave = RandomSource::pickFrom(random.draw(), octaves) - 1;
            const int pitchClass = RandomSource::pickFrom(random.draw(), pitchClasses) - 1;
            QVERIFY(octave >= 0 && octave < octaves && pitchClass >= 0 && pitchClass < pitchClasses);
            ++cells[std::size_t(octave * pitchClasses + pitchClass)];
        }
        double chiSquare = 0;
        for (int observed : cells)
            chiSquare += double(observed - PerCell) * (observed - PerCell) / PerCell;
        QVERIFY2((chiSquare < threshold) == !coarse, qPrintable(QStringLiteral("chi-square %1").arg(chiSquare)));
    }
};

QTEST_MAIN(tst_exercisepanel)
#include "tst_exercisepanel.moc"
