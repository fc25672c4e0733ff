// Every platform call failing with every result code, at every point where
// the program talks to the device: each fault shows its box, and leaves the
// score, the ticked choices and the next click as a fault-free run leaves them;
// and what the port itself keeps after a failed call.
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
    std::vector<int> nextNotes;
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

    switch (phase) {
    case Phase::StartUp:
        break;
    case Phase::Question:
        inject();
        test::click(melody, QStringLiteral("New"));
        break;
    case Phase::Wait:
        // The fault arrives between two notes of a question.
        setWaitScale(0.02);
        QTimer::singleShot(5, melody, inject);
        test::click(melody, QStringLiteral("New"));
        setWaitScale(0);
        break;
    case Phase::StopNoise:
        inject();
        test::click(melody, QStringLiteral("stopnoise"));
        break;
    case Phase::Settings:
        inject();
        QTimer::singleShot(0, &window, [&] { window.findChild<QDialog *>(QStringLiteral("optionsform"))->close(); });
        window.optionmnu_Click();
        break;
    }

    Outcome outcome{test::score(melody), tickedOf(melody), fx.boxes.texts(), {}};
    // The fault goes away; a restart brings the port back and the next
    // question sounds.
    fx.platform.setFailure(call, 0);
    if (!fx.midi.MidiPortOpen)
        fx.midi.ToggleMidiOut();
    fx.platform.clear();
    test::click(window.exerciseWindow(), QStringLiteral("New"));
    outcome.nextNotes = fx.notesPlayed();
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
        const QString errorBox = QStringLiteral("Operation:%1\r\n%2")
                                     .arg(operationName(Call(call)), RecordingMidiPlatform().errorText(code));
        for (const QString &box : faulty.boxes)
            QVERIFY2(box == errorBox || box == Midi_interface::RefusalText, qPrintable(box));
        // A failing call is reported wherever the phase makes it: every phase
        // sends, start-up opens, and the restarts close and open.
        const bool restarts = Phase(phase) == Phase::StopNoise || Phase(phase) == Phase::Settings;
        const bool made = Call(call) == Call::Send || restarts || (Call(call) == Call::Open && Phase(phase) == Phase::StartUp);
        if (made)
            QVERIFY2(faulty.boxes.contains(errorBox), qPrintable(faulty.boxes.join(QLatin1Char('|'))));

        QCOMPARE(faulty.score, clean.score);
        QCOMPARE(faulty.ticked, clean.ticked);
        QCOMPARE(faulty.nextNotes, clean.nextNotes);
        QVERIFY(!faulty.nextNotes.empty());
    }

    // The port's own state after a fault.
    void failingCloseKeepsThePortOpen()
    {
        test::TestServices fx;
        fx.platform.failNext(Call::Close, toCode(MidiResult::Error));
        fx.midi.ToggleMidiOut();
        QVERIFY(fx.midi.MidiPortOpen);
        QCOMPARE(fx.boxes.boxes().size(), std::size_t(1));
        // The next toggle tries to close again, and now succeeds.
        fx.midi.ToggleMidiOut();
        QVERIFY(!fx.midi.MidiPortOpen);
        QVERIFY(!fx.platform.isOpen());
    }

    void closedPortRefusesEveryMessage()
    {
        test::TestServices fx;
        fx.midi.ToggleMidiOut();
        fx.clearRecords();
        fx.midi.SelectInstrument(1, 24, 0, 0);
        fx.midi.NoteOn(1, 60, 100);
        QCOMPARE(fx.boxes.texts(), QStringList(4, Midi_interface::RefusalText));
        QVERIFY(fx.platform.records().empty());

        // A restart on a closed port opens and closes it again: three more refusals.
        fx.clearRecords();
        fx.midi.restart();
        QVERIFY(!fx.midi.MidiPortOpen);
        QCOMPARE(fx.boxes.texts(), QStringList(3, Midi_interface::RefusalText));
    }

    void everyErrorTextFitsTheBox()
    {
        // The error box reads the text into a 128-character buffer: a longer
        // text would lose its end, usually the part that says what to do.
        RecordingMidiPlatform platform;
        for (int code = 0; code < 128; ++code) {
            const QString text = platform.errorText(code);
            QVERIFY2(!text.isEmpty() && text.size() <= 127, qPrintable(text));
        }
    }

    void dataAboveAByteIsNeverSent()
    {
        test::TestServices fx;
        fx.midi.NoteOn(1, 128, 100);
        fx.midi.NoteOn(1, 60, 200);
        fx.midi.NoteOn(1, -1, 100);
        QVERIFY(fx.platform.sent().empty());
        QCOMPARE(fx.boxes.boxes().size(), std::size_t(3));
        fx.midi.NoteOn(1, 127, 127);
        QCOMPARE(fx.platform.sent().size(), std::size_t(1));
    }
};

QTEST_MAIN(FaultTest)
#include "tst_faults.moc"
