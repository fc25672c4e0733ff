// Every platform call failing with every result code, at every point where
// the program talks to the device: each fault shows its box, and leaves the
// score, the ticked choices and the next click as a fault-free run leaves them.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MDIForm1.h"

#include <QComboBox>
#include <QDialog>

using namespace tonaro;
using Call = RecordingMidiPlatform::Call;

namespace {

enum class Phase { StartUp, Question, Wait, StopNoise, Settings };

constexpr std::array<MidiResult, 11> FailureCodes{
    MidiResult::Error, MidiResult::BadDeviceId, MidiResult::DeviceInUse, MidiResult::InvalidHandle,
    MidiResult::NoMemory, MidiResult::NoAudioOutput, MidiResult::NoSoundFont, MidiResult::DeviceVanished,
    MidiResult::SendFailed, MidiResult::DataOutOfRange, MidiResult::NoMidiSystem};

QString operationName(Call call)
{
    return call == Call::Open ? QStringLiteral("Open") : call == Call::Close ? QStringLiteral("Close") : QStringLiteral("ShortMsg");
}

// What the user can see of an exercise after a phase: the score and the boxes.
struct Outcome {
    QStringList score;
    QString ticked;
    QStringList boxes;
    QList<int> nextNotes;
};

QString tickedOf(const ExercisePanel *window)
{
    QString ticked;
    for (const QCheckBox *box : window->findChildren<QCheckBox *>())
        ticked += box->isChecked() ? QLatin1Char('x') : QLatin1Char('-');
    return ticked;
}

Outcome runPhase(Phase phase, Call call, int code)
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    const auto inject = [&] {
        if (code != 0)
            fx.platform.setFailure(call, code);
    };
    if (phase == Phase::StartUp)
        inject();
    window.MDIForm_Load();
    ExercisePanel *melody = window.exerciseWindow();
    auto *count = test::child<QComboBox>(melody, QStringLiteral("nnotescombo"));
    count->setCurrentIndex(2);
    emit count->activated(2);
    fx.random.script({0.1, 0.2, 0.3, 0.4, 0.5, 0.6});

    if (phase == Phase::Wait) {
        // The fault arrives between two notes of a question.
        setWaitScale(0.02);
        QTimer::singleShot(5, melody, inject);
    } else if (phase != Phase::StartUp) {
        inject();
    }
    if (phase == Phase::Question || phase == Phase::Wait)
        test::click(melody, QStringLiteral("New"));
    else if (phase == Phase::StopNoise)
        test::click(melody, QStringLiteral("stopnoise"));
    if (phase == Phase::Settings) {
        QTimer::singleShot(0, &window, [&] { test::child(&window, QStringLiteral("optionsform"))->close(); });
        window.optionmnu_Click();
    }
    setWaitScale(0);

    Outcome outcome{test::score(melody), tickedOf(melody), fx.boxes.texts(), {}};
    // The fault goes away; a restart brings the port back and the next
    // question sounds.
    fx.platform.setFailure(call, 0);
    if (!fx.midi.MidiPortOpen)
        fx.midi.ToggleMidiOut();
    fx.platform.clear();
    test::click(window.exerciseWindow(), QStringLiteral("New"));
    outcome.nextNotes = fx.played();
    return outcome;
}

} // namespace

class FaultTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFaultIsShownAndLosesNothing_data()
    {
        QTest::addColumn<int>("phase");
        QTest::addColumn<int>("call");
        QTest::addColumn<int>("code");
        const std::array phaseNames{"start-up", "question", "wait", "stop noise", "settings"};
        for (std::size_t phase = 0; phase < phaseNames.size(); ++phase)
            for (const Call call : {Call::Open, Call::Close, Call::Send})
                for (const MidiResult code : FailureCodes)
                    QTest::addRow("%s, %s fails with %d", phaseNames[phase], qPrintable(operationName(call)), toCode(code))
                        << int(phase) << int(call) << toCode(code);
    }

    void everyFaultIsShownAndLosesNothing()
    {
        QFETCH(int, phase);
        QFETCH(int, call);
        QFETCH(int, code);
        const Outcome clean = runPhase(Phase(phase), Call(call), 0);
        const Outcome faulty = runPhase(Phase(phase), Call(call), code);

        QVERIFY(clean.boxes.isEmpty());
        const QString errorBox = QStringLiteral("Operation:%1\r\nfault %2").arg(operationName(Call(call))).arg(code);
        for (const QString &box : faulty.boxes)
            QVERIFY2(box == errorBox || box == "You must open the MIDI device first", qPrintable(box));
        // A failing call is reported wherever the phase makes it: every phase
        // sends, start-up opens, and the restarts close and open.
        const bool restarts = Phase(phase) == Phase::StopNoise || Phase(phase) == Phase::Settings;
        const bool made = Call(call) == Call::Send || restarts || (Call(call) == Call::Open && Phase(phase) == Phase::StartUp);
        if (made)
            QVERIFY2(faulty.boxes.contains(errorBox), qPrintable(faulty.boxes.join(QLatin1Char('|'))));

        QCOMPARE(faulty.score, clean.score);
        QCOMPARE(faulty.ticked, clean.ticked);
        QCOMPARE(faulty.nextNotes, clean.nextNotes);
        QVERIFY(!faulty.nextNotes.isEmpty());
    }

    // Caught by the port itself: a data byte above 127 would turn into a
    // status byte on the wire.
    void dataAboveAByteIsNeverSent()
    {
        test::TestServices fx;
        fx.midi.NoteOn(1, 128, 100);
        fx.midi.NoteOn(1, 60, 200);
        fx.midi.NoteOn(1, -1, 100);
        QVERIFY(fx.platform.sent().empty());
        fx.midi.NoteOn(1, 127, 127);
        QCOMPARE(fx.platform.sent().size(), std::size_t(1));
        QCOMPARE(fx.boxes.texts(), QStringList(3, QStringLiteral("Operation:ShortMsg\r\nfault %1").arg(toCode(MidiResult::DataOutOfRange))));
    }
};

QTEST_MAIN(FaultTest)
#include "tst_faults.moc"
