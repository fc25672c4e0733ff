#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"

#include <QPushButton>
#include <chrono>

using namespace tonaro;
using namespace std::chrono;

namespace {

const PanelTraits probeTraits{.secondSlider = {"slidermultinotes", "slidermultinoteslabel", 0, 3000, 100, 100, 250, 1250}};

// An exercise whose New plays two notes with an event-processing wait
// between them, the shape of every melodic question.
class TwoNoteProbe : public ExercisePanel
{
public:
    explicit TwoNoteProbe(const Services &services) : ExercisePanel(services, probeTraits) {}
    void init() override { initPanel(); }
    void New_Click() override
    {
        beginNew();
        m_services.midi.NoteOn(1, 60, 100);
        if (!waitMs(100, true))
            return;
        m_services.midi.NoteOn(1, 67, 100);
        countQuestion();
    }
    void Repeat_Click() override {}
    QString revealText() const override { return {}; }
};

double elapsedMs(steady_clock::time_point since)
{
    return duration<double, std::milli>(steady_clock::now() - since).count();
}

} // namespace

class WaitTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { setWaitScale(1); }
    void cleanup() { setWaitScale(1); }

    void endsNoEarlierThanAsked_data();
    void endsNoEarlierThanAsked();
    void eventWaitRunsAClickInsideIt();
    void plainWaitLeavesClicksForLater();
    void unloadDuringAWaitAbandonsTheSequence();
    void deletionDuringAWaitDoesNotTouchTheWindow();
};

void WaitTest::endsNoEarlierThanAsked_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<bool>("processEvents");
    QTest::newRow("0, events") << 0 << true;
    QTest::newRow("0, no events") << 0 << false;
    QTest::newRow("30, events") << 30 << true;
    QTest::newRow("30, no events") << 30 << false;
    QTest::newRow("3, events") << 3 << true;
}

void WaitTest::endsNoEarlierThanAsked()
{
    QFETCH(int, milliseconds);
    QFETCH(bool, processEvents);
    const auto start = steady_clock::now();
    WaitMs(milliseconds, processEvents);
    const double took = elapsedMs(start);
    QVERIFY2(took >= milliseconds, qPrintable(QString::number(took)));
    QVERIFY2(took < milliseconds + 50, qPrintable(QString::number(took)));
}

void WaitTest::eventWaitRunsAClickInsideIt()
{
    bool waiting = false;
    bool ranInside = false;
    QPushButton button;
    connect(&button, &QPushButton::clicked, [&] { ranInside = waiting; });
    QTimer::singleShot(10, &button, [&] { button.click(); });

    waiting = true;
    WaitMs(80, true);
    waiting = false;
    QVERIFY(ranInside);
}

void WaitTest::plainWaitLeavesClicksForLater()
{
    bool waiting = false;
    bool ran = false;
    bool ranInside = false;
    QTimer::singleShot(0, [&] {
        ran = true;
        ranInside = waiting;
    });
    waiting = true;
    WaitMs(30, false);
    waiting = false;
    QVERIFY(!ran);
    QCoreApplication::processEvents();
    QVERIFY(ran);
    QVERIFY(!ranInside);
}

void WaitTest::unloadDuringAWaitAbandonsTheSequence()
{
    test::TestServices fx;
    setWaitScale(1);
    TwoNoteProbe probe(fx.services);
    probe.Form_Load();
    QTimer::singleShot(20, &probe, [&] { probe.unload(); });

    probe.New_Click();

    QCOMPARE(fx.notesPlayed(), std::vector<int>{60});
    QVERIFY(probe.Answered); // the question was never counted
}

void WaitTest::deletionDuringAWaitDoesNotTouchTheWindow()
{
    test::TestServices fx;
    setWaitScale(1);
    auto *probe = new TwoNoteProbe(fx.services);
    probe->Form_Load();
    probe->show();
    // The deletion happens inside the wait, as when another exercise is
    // chosen on the bar while a question plays; run under the address
    // sanitizer this would report any use of the freed window.
    QTimer::singleShot(20, [probe] { delete probe; });

    probe->New_Click();

    QCOMPARE(fx.notesPlayed(), std::vector<int>{60});
}

QTEST_MAIN(WaitTest)
#include "tst_waitms.moc"
