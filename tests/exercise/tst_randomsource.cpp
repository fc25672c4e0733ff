#include "exercise/RandomSource.h"

#include <QtTest>
#include <chrono>
#include <random>

// The real clock-reseeded generator against a chi-square test with a fixed
// threshold (significance 1e-6: a sound generator fails about once in a
// million runs). A generator that reseeds from a coarse clock alone, and so
// repeats its value for draws within one tick, must fail it: that keeps the
// test honest about its power.

using namespace tonaro;

namespace {

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

class tst_randomsource : public QObject
{
    Q_OBJECT

private slots:
    // A note is an octave drawn from the ticked octaves, then a pitch class
    // from the ticked notes, each its own reseeded draw right after the
    // other. Every pair must be equally likely: each draw uniform over its
    // choices and the two independent of each other.
    void notesAreUniformOverTheTickedChoices_data()
    {
        QTest::addColumn<bool>("coarse");
        QTest::addColumn<int>("octaves");
        QTest::addColumn<int>("pitchClasses");
        QTest::addColumn<double>("threshold"); // for octaves x pitchClasses - 1 degrees of freedom
        QTest::addColumn<bool>("uniform");
        QTest::newRow("all boxes") << false << 10 << 12 << 207.2 << true;
        QTest::newRow("Guitar, C major") << false << 4 << 7 << 77.19 << true;
        QTest::newRow("coarse clock, all boxes") << true << 10 << 12 << 207.2 << false;
        QTest::newRow("coarse clock, Guitar, C major") << true << 4 << 7 << 77.19 << false;
    }

    void notesAreUniformOverTheTickedChoices()
    {
        QFETCH(bool, coarse);
        QFETCH(int, octaves);
        QFETCH(int, pitchClasses);
        std::unique_ptr<RandomSource> random(coarse ? static_cast<RandomSource *>(new CoarseClockSource)
                                                    : new ClockRandomSource);
        constexpr int PerCell = 1000;
        const int cellCount = octaves * pitchClasses;
        std::vector<int> cells(std::size_t(cellCount), 0);
        for (int i = 0; i < PerCell * cellCount; ++i) {
            const int octave = RandomSource::pickFrom(random->draw(), octaves) - 1;
            const int pitchClass = RandomSource::pickFrom(random->draw(), pitchClasses) - 1;
            QVERIFY(octave >= 0 && octave < octaves && pitchClass >= 0 && pitchClass < pitchClasses);
            ++cells[std::size_t(octave * pitchClasses + pitchClass)];
        }
        double chiSquare = 0;
        for (int observed : cells)
            chiSquare += double(observed - PerCell) * (observed - PerCell) / PerCell;
        QFETCH(double, threshold);
        QFETCH(bool, uniform);
        QVERIFY2((chiSquare < threshold) == uniform, qPrintable(QStringLiteral("chi-square %1").arg(chiSquare)));
    }
};

QTEST_GUILESS_MAIN(tst_randomsource)
#include "tst_randomsource.moc"
