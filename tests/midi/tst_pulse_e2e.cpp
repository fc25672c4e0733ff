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

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tonaro;
using namespace tonaro::test;

namespace {

constexpr int Rate = PrivatePulseServer::SampleRate;
constexpr int Ok = toCode(MidiResult::Ok);

// A socket that takes connections and never answers: a hung sound server.
int listenSilently(const QString &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, path.toLocal8Bit().constData(), sizeof address.sun_path);
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 || listen(fd, 4) != 0)
        qFatal("cannot listen on %s", qPrintable(path));
    return fd;
}

} // namespace

class PulseEndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup() { qputenv("PULSE_SERVER", m_savedServer); }

    void playsTheNoteWithoutDropoutAcrossAServerRestart();
    void unreachableServerGivesNoAudioOutputQuickly_data();
    void unreachableServerGivesNoAudioOutputQuickly();

private:
    // Starts a server of our own and points the clients at it.
    bool startServer(PrivatePulseServer &server)
    {
        if (!server.start())
            return false;
        qputenv("PULSE_SERVER", server.address());
        return true;
    }
    void playAndCheck(MidiPlatform &platform, MidiHandle handle, const PrivatePulseServer &server);

    QByteArray m_savedServer;
};

void PulseEndToEndTest::initTestCase()
{
    if (findGeneralMidiSoundFont().empty())
        QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
    m_savedServer = qgetenv("PULSE_SERVER");
}

// Plays note 69 on the nylon guitar while the monitor records, and measures
// the recording: the note arrives at 440 Hz, with no dropout in its first second.
void PulseEndToEndTest::playAndCheck(MidiPlatform &platform, MidiHandle handle, const PrivatePulseServer &server)
{
    MonitorRecording recording(server);
    QVERIFY(recording.waitUntilRecording());
    for (const std::uint32_t message : {midi::packShortMessage(midi::ControlChangeStatus, midi::BankSelectMsb, 0),
                                        midi::packShortMessage(midi::ControlChangeStatus, midi::BankSelectLsb, 0),
                                        midi::packShortMessage(midi::ProgramChangeStatus, 24, 0),
                                        midi::packShortMessage(midi::NoteOnStatus, 69, 100)})
        QCOMPARE(platform.sendShortMessage(handle, message), Ok);
    // The sound itself takes this long: the wait is what is under test.
    QTest::qWait(1400);
    const std::vector<float> samples = recording.stop();
    const Samples sound(samples);
    const std::size_t onset = onsetIndex(sound, 0.01f);
    QVERIFY2(onset + Rate <= sound.size(), "the note never reached the sink, or the recording ends inside it");
    // A dropout shows as a run of digital zero far longer than a zero crossing.
    const Samples sustain = sound.subspan(onset + Rate / 50, Rate - Rate / 50);
    const double longestGapMs = 1000.0 * double(longestQuietRun(sustain, 2.0f / 32768)) / Rate;
    QVERIFY2(longestGapMs < 3.0, qPrintable(QStringLiteral("a %1 ms dropout inside the note").arg(longestGapMs)));
    const double hz = estimatePitch(sound.subspan(onset + Rate / 10, Rate / 2), Rate);
    QVERIFY2(std::fabs(hz - 440) <= 4.4, qPrintable(QStringLiteral("%1 Hz instead of 440 Hz").arg(hz)));
}

void PulseEndToEndTest::playsTheNoteWithoutDropoutAcrossAServerRestart()
{
    auto first = std::make_unique<PrivatePulseServer>();
    if (!startServer(*first)) {
        // CI installs PulseAudio, so there a server that does not start is a failure.
        const QString why = QStringLiteral("no PulseAudio server could start: ") + first->error();
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL(qPrintable(why));
        QSKIP(qPrintable(why));
    }
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
    QVERIFY2(startServer(second), qPrintable(second.error()));
    // Stop noise!: the port restart connects to the new server.
    QCOMPARE(platform->close(handle), Ok);
    QCOMPARE(platform->open(&handle, 0), Ok);
    playAndCheck(*platform, handle, second);
    QCOMPARE(platform->close(handle), Ok);
}

void PulseEndToEndTest::unreachableServerGivesNoAudioOutputQuickly_data()
{
    QTest::addColumn<bool>("listening");
    QTest::newRow("no server") << false;
    QTest::newRow("server that never answers") << true;
}

void PulseEndToEndTest::unreachableServerGivesNoAudioOutputQuickly()
{
    QFETCH(bool, listening);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("native"));
    const int socket = listening ? listenSilently(path) : -1;
    const auto closeSocket = qScopeGuard([socket] { if (socket >= 0) ::close(socket); });
    qputenv("PULSE_SERVER", "unix:" + path.toLocal8Bit());

    const std::unique_ptr<MidiPlatform> platform = createSystemMidiPlatform();
    QElapsedTimer timer;
    timer.start();
    MidiHandle handle = 0;
    QCOMPARE(platform->open(&handle, 0), toCode(MidiResult::NoAudioOutput));
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QStringLiteral("open took %1 ms").arg(timer.elapsed())));
    QCOMPARE(handle, MidiHandle(0));
}

QTEST_GUILESS_MAIN(PulseEndToEndTest)
#include "tst_pulse_e2e.moc"
