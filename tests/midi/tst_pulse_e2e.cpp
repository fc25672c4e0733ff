// End to end: the platform the program runs on plays through a PulseAudio
// server of the test's own, and the server's null-sink monitor is recorded
// and measured. Skipped where no PulseAudio server can start, except in CI,
// which installs one.

#include "AudioAnalysis.h"
#include "PrivatePulseServer.h"
#include "midi/MidiMessages.h"
#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace tonaro;
using namespace tonaro::test;

namespace {

constexpr int Rate = PrivatePulseServer::SampleRate;
constexpr int Ok = toCode(MidiResult::Ok);

// Plays note 69 on the nylon guitar while the monitor records, and measures
// the recording: the note arrives at 440 Hz, with no dropout in its first
// second. Returns what was wrong, or nothing.
QString playAndMeasure(MidiPlatform &platform, MidiHandle handle, const PrivatePulseServer &server)
{
    MonitorRecording recording(server);
    if (!recording.waitUntilRecording())
        return QStringLiteral("the monitor never started recording");
    for (const std::uint32_t message : {midi::packShortMessage(midi::ControlChangeStatus, midi::BankSelectMsb, 0),
                                        midi::packShortMessage(midi::ControlChangeStatus, midi::BankSelectLsb, 0),
                                        midi::packShortMessage(midi::ProgramChangeStatus, 24, 0),
                                        midi::packShortMessage(midi::NoteOnStatus, 69, 100)})
        if (platform.sendShortMessage(handle, message) != Ok)
            return QStringLiteral("the synthesizer refused message %1").arg(message, 0, 16);
    // The sound itself takes this long: the wait is what is under test.
    QTest::qWait(1400);
    const std::vector<float> samples = recording.stop();
    const Samples sound(samples);
    const std::size_t onset = onsetIndex(sound, 0.01f);
    if (onset + Rate > sound.size())
        return QStringLiteral("the note never reached the sink, or the recording ends inside it");
    // A dropout shows as a run of digital zero far longer than a zero crossing.
    const Samples sustain = sound.subspan(onset + Rate / 50, Rate - Rate / 50);
    const double longestGapMs = 1000.0 * double(longestQuietRun(sustain, 2.0f / 32768)) / Rate;
    if (longestGapMs >= 3.0)
        return QStringLiteral("a %1 ms dropout inside the note").arg(longestGapMs);
    const double hz = estimatePitch(sound.subspan(onset + Rate / 10, Rate / 2), Rate);
    if (std::fabs(hz - 440) > 4.4)
        return QStringLiteral("%1 Hz instead of 440 Hz").arg(hz);
    return {};
}

// A busy machine can starve the sound server for a moment; an output that is
// really broken fails every time. So the note has three chances.
void playAndCheck(MidiPlatform &platform, MidiHandle handle, const PrivatePulseServer &server)
{
    QString problem;
    for (int attempt = 1; attempt <= 3; ++attempt) {
        problem = playAndMeasure(platform, handle, server);
        if (problem.isEmpty())
            return;
        qWarning("attempt %d: %s", attempt, qPrintable(problem));
        platform.sendShortMessage(handle, midi::packShortMessage(midi::ControlChangeStatus, midi::AllSoundOff, 0));
        QTest::qWait(300);
    }
    QFAIL(qPrintable(problem));
}

} // namespace

class PulseEndToEndTest : public QObject
{
    Q_OBJECT

    QByteArray m_savedServer = qgetenv("PULSE_SERVER");

private slots:
    void initTestCase()
    {
        if (findGeneralMidiSoundFont().empty())
            QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
    }
    void cleanup() { qputenv("PULSE_SERVER", m_savedServer); }

    void playsTheNoteWithoutDropoutAcrossAServerRestart()
    {
        auto first = std::make_unique<PrivatePulseServer>();
        if (!first->start()) {
            // CI installs PulseAudio, so there a server that does not start is a failure.
            const QString why = QStringLiteral("no PulseAudio server could start: ") + first->error();
            if (qEnvironmentVariableIsSet("CI"))
                QFAIL(qPrintable(why));
            QSKIP(qPrintable(why));
        }
        qputenv("PULSE_SERVER", first->address());
        const std::unique_ptr<MidiPlatform> platform = createSystemMidiPlatform();
        MidiHandle handle = 0;
        QCOMPARE(platform->open(&handle, 0), Ok);
        playAndCheck(*platform, handle, *first);
        if (QTest::currentTestFailed())
            return;

        // The server dies while a note plays; the program goes on.
        first.reset();
        QCOMPARE(platform->sendShortMessage(handle, midi::packShortMessage(midi::NoteOnStatus, 72, 100)), Ok);
        PrivatePulseServer second;
        QVERIFY2(second.start(), qPrintable(second.error()));
        qputenv("PULSE_SERVER", second.address());
        // Stop noise!: the port restart connects to the new server.
        QCOMPARE(platform->close(handle), Ok);
        QCOMPARE(platform->open(&handle, 0), Ok);
        playAndCheck(*platform, handle, second);
        QCOMPARE(platform->close(handle), Ok);
    }

    void missingServerGivesNoAudioOutputQuickly()
    {
        QTemporaryDir dir;
        qputenv("PULSE_SERVER", "unix:" + dir.filePath(QStringLiteral("native")).toLocal8Bit());
        const std::unique_ptr<MidiPlatform> platform = createSystemMidiPlatform();
        QElapsedTimer timer;
        timer.start();
        MidiHandle handle = 0;
        QCOMPARE(platform->open(&handle, 0), toCode(MidiResult::NoAudioOutput));
        QVERIFY2(timer.elapsed() < 3000, qPrintable(QStringLiteral("open took %1 ms").arg(timer.elapsed())));
        QCOMPARE(handle, MidiHandle(0));
    }
};

QTEST_GUILESS_MAIN(PulseEndToEndTest)
#include "tst_pulse_e2e.moc"
