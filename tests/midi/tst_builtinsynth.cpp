// The built-in synthesizer heard through the very code the device plays
// through, rendered offline: no sound device is needed.

#include "AudioAnalysis.h"
#include "midi/BuiltInSynth.h"
#include "midi/ShortMessage.h"
#include "midi/SoundFontLocator.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <fstream>

using namespace tonaro;
using namespace tonaro::test;

namespace {

constexpr int Channel = 1;
constexpr int Velocity = 100;
constexpr double Tolerance = 0.01;
constexpr std::uint16_t CentredBend = 0x2000;

std::uint32_t message(std::uint8_t type, int data1, int data2 = 0)
{
    return midi::packShortMessage(type + Channel - 1, data1, data2);
}

} // namespace

class BuiltInSynthTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void noteSoundsAtItsPitch_data();
    void noteSoundsAtItsPitch();
    void velocityZeroIsANoteOffNotAnError_data();
    void velocityZeroIsANoteOffNotAnError();
    void closingSilencesASoundingNote();
    void reopeningKeepsTheInstrument();
    void programsSoundDifferent();
    void badMessagesAreRefused_data();
    void badMessagesAreRefused();
    void brokenSoundFontGivesNoSoundFont_data();
    void brokenSoundFontGivesNoSoundFont();
    void locatorTakesTheFirstReadableFile_data();
    void locatorTakesTheFirstReadableFile();

private:
    // Renders seconds of sound and returns the left channel.
    std::vector<float> render(double seconds);
    void selectProgram(int program);
    void send(std::uint32_t msg) { QCOMPARE(m_synth->send(msg), MidiResult::Ok); }

    std::unique_ptr<BuiltInSynth> m_synth;
};

void BuiltInSynthTest::initTestCase()
{
    if (findGeneralMidiSoundFont().empty())
        QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
    m_synth = std::make_unique<BuiltInSynth>(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}});
    QCOMPARE(m_synth->open(), MidiResult::Ok);
}

void BuiltInSynthTest::init()
{
    // Every case starts as the port does after a restart: silent, centred.
    m_synth->close();
    send(message(midi::PitchBendStatus, CentredBend & 0x7F, CentredBend >> 7));
    render(0.05);
}

std::vector<float> BuiltInSynthTest::render(double seconds)
{
    const int frames = int(seconds * m_synth->sampleRate());
    std::vector<float> stereo(std::size_t(frames) * 2);
    m_synth->render(stereo.data(), frames);
    std::vector<float> left(static_cast<std::size_t>(frames));
    for (int i = 0; i < frames; ++i)
        left[i] = stereo[2 * i];
    return left;
}

void BuiltInSynthTest::selectProgram(int program)
{
    send(message(midi::ControlChangeStatus, midi::BankSelectMsb, 0));
    send(message(midi::ControlChangeStatus, midi::BankSelectLsb, 0));
    send(message(midi::ProgramChangeStatus, program));
}

void BuiltInSynthTest::noteSoundsAtItsPitch_data()
{
    QTest::addColumn<int>("program");
    QTest::addColumn<int>("note");
    QTest::addColumn<int>("bend");
    QTest::addColumn<double>("hz");

    // The default bend range is two semitones each way.
    QTest::newRow("guitar A4") << 24 << 69 << int(CentredBend) << 440.0;
    QTest::newRow("guitar C4") << 24 << 60 << int(CentredBend) << 261.63;
    QTest::newRow("guitar A5") << 24 << 81 << int(CentredBend) << 880.0;
    QTest::newRow("piano A4") << 0 << 69 << int(CentredBend) << 440.0;
    QTest::newRow("flute A4") << 73 << 69 << int(CentredBend) << 440.0;
    QTest::newRow("guitar A4 bent a tone down") << 24 << 69 << 0 << 392.0;
    QTest::newRow("guitar A4 bent a tone up") << 24 << 69 << 0x3FFF << 440.0 * std::pow(2.0, 2.0 * 8191 / 8192 / 12);
}

void BuiltInSynthTest::noteSoundsAtItsPitch()
{
    QFETCH(int, program);
    QFETCH(int, note);
    QFETCH(int, bend);
    QFETCH(double, hz);

    selectProgram(program);
    send(message(midi::PitchBendStatus, bend & 0x7F, bend >> 7));
    send(message(midi::NoteOnStatus, note, Velocity));
    const std::vector<float> sound = render(0.6);
    // Past the attack, where the pitch has settled.
    const Samples steady = Samples(sound).subspan(std::size_t(0.15 * m_synth->sampleRate()));
    QVERIFY2(rms(steady) > 0.005, "the note is not heard");
    const double measured = estimatePitch(steady, m_synth->sampleRate());
    QVERIFY2(std::fabs(measured - hz) <= hz * Tolerance, qPrintable(QStringLiteral("%1 Hz instead of %2 Hz").arg(measured).arg(hz)));
}

void BuiltInSynthTest::velocityZeroIsANoteOffNotAnError_data()
{
    QTest::addColumn<bool>("noteSounding");
    QTest::newRow("nothing sounds") << false;
    QTest::newRow("the note sounds") << true;
}

void BuiltInSynthTest::velocityZeroIsANoteOffNotAnError()
{
    QFETCH(bool, noteSounding);

    selectProgram(24);
    if (noteSounding) {
        send(message(midi::NoteOnStatus, 69, Velocity));
        QVERIFY(rms(render(0.2)) > 0.005);
    }
    send(message(midi::NoteOnStatus, 69, 0));
    // Let the guitar's release run out.
    render(1.0);
    QVERIFY(rms(render(0.1)) < 1e-4);
}

void BuiltInSynthTest::closingSilencesASoundingNote()
{
    selectProgram(24);
    send(message(midi::NoteOnStatus, 69, Velocity));
    const double before = rms(render(0.2));
    QVERIFY(before > 0.005);

    m_synth->close();
    // One block of 64 frames may still be under way when the voices stop.
    const std::vector<float> after = render(0.1);
    QVERIFY2(rms(Samples(after).subspan(64)) < 1e-5, "the note rings on after close");
}

void BuiltInSynthTest::reopeningKeepsTheInstrument()
{
    selectProgram(73);
    send(message(midi::NoteOnStatus, 69, Velocity));
    const std::vector<double> flute = harmonicProfile(render(0.5), m_synth->sampleRate(), 440);

    m_synth->close();
    QCOMPARE(m_synth->open(), MidiResult::Ok);
    send(message(midi::NoteOnStatus, 69, Velocity));
    const std::vector<double> again = harmonicProfile(render(0.5), m_synth->sampleRate(), 440);
    QVERIFY(profileDistance(flute, again) < 1.0);
}

void BuiltInSynthTest::programsSoundDifferent()
{
    // Piano, nylon guitar and flute on the same note: one check that the
    // program change reaches the synthesizer, by the timbre it gives.
    const std::array programs{0, 24, 73};
    std::vector<std::vector<double>> profiles;
    for (const int program : programs) {
        m_synth->close();
        selectProgram(program);
        send(message(midi::NoteOnStatus, 69, Velocity));
        const std::vector<float> sound = render(0.5);
        profiles.push_back(harmonicProfile(Samples(sound).subspan(std::size_t(0.1 * m_synth->sampleRate())),
                                           m_synth->sampleRate(), 440));
    }
    for (std::size_t a = 0; a < profiles.size(); ++a) {
        for (std::size_t b = a + 1; b < profiles.size(); ++b) {
            const double distance = profileDistance(profiles[a], profiles[b]);
            QVERIFY2(distance > 6.0, qPrintable(QStringLiteral("programs %1 and %2 sound alike (%3 dB apart)")
                                                    .arg(programs[a]).arg(programs[b]).arg(distance)));
        }
    }
}

void BuiltInSynthTest::badMessagesAreRefused_data()
{
    QTest::addColumn<std::uint32_t>("msg");
    QTest::addColumn<MidiResult>("result");

    QTest::newRow("note off") << message(midi::NoteOffStatus, 69, 64) << MidiResult::Ok;
    QTest::newRow("all notes off") << message(midi::ControlChangeStatus, midi::AllNotesOff) << MidiResult::Ok;
    QTest::newRow("channel pressure") << message(midi::ChannelPressureStatus, 40) << MidiResult::Ok;
    QTest::newRow("key pressure") << message(midi::PolyPressureStatus, 69, 40) << MidiResult::Ok;
    QTest::newRow("timing clock") << std::uint32_t(0xF8) << MidiResult::Ok;
    QTest::newRow("data byte first") << std::uint32_t(0x45) << MidiResult::DataOutOfRange;
    QTest::newRow("note above 127") << midi::packShortMessage(0x90, 200, 1) << MidiResult::DataOutOfRange;
    QTest::newRow("velocity above 127") << midi::packShortMessage(0x90, 60, 128) << MidiResult::DataOutOfRange;
    QTest::newRow("system exclusive") << std::uint32_t(0xF0) << MidiResult::DataOutOfRange;
}

void BuiltInSynthTest::badMessagesAreRefused()
{
    QFETCH(std::uint32_t, msg);
    QFETCH(MidiResult, result);
    QCOMPARE(m_synth->send(msg), result);
}

void BuiltInSynthTest::brokenSoundFontGivesNoSoundFont_data()
{
    QTest::addColumn<qint64>("keptBytes"); // of the real SoundFont; -1: no file, -2: garbage
    QTest::newRow("missing file") << qint64(-1);
    QTest::newRow("garbage") << qint64(-2);
    QTest::newRow("empty file") << qint64(0);
    QTest::newRow("RIFF header only") << qint64(12);
    QTest::newRow("first 64 KiB") << qint64(64 * 1024);
    QTest::newRow("half") << qint64(QFileInfo(QString::fromStdString(findGeneralMidiSoundFont())).size() / 2);
    QTest::newRow("all but the last KiB") << qint64(QFileInfo(QString::fromStdString(findGeneralMidiSoundFont())).size() - 1024);
}

void BuiltInSynthTest::brokenSoundFontGivesNoSoundFont()
{
    QFETCH(qint64, keptBytes);

    QTemporaryDir dir;
    const std::string path = dir.filePath(QStringLiteral("broken.sf2")).toStdString();
    if (keptBytes != -1) {
        std::ifstream source(findGeneralMidiSoundFont(), std::ios::binary);
        std::vector<char> bytes(std::size_t(std::max<qint64>(keptBytes, 0)));
        source.read(bytes.data(), std::streamsize(bytes.size()));
        if (keptBytes == -2)
            bytes.assign(4096, '\x5a');
        std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    }
    BuiltInSynth synth(BuiltInSynth::Options{path, BuiltInSynth::Output::None, {}});
    QCOMPARE(synth.open(), MidiResult::NoSoundFont);
    QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, Velocity)), MidiResult::NoSoundFont);
    synth.close();
}

void BuiltInSynthTest::locatorTakesTheFirstReadableFile_data()
{
    QTest::addColumn<QStringList>("candidates"); // "file:", "dir:" or "missing:" and a name
    QTest::addColumn<QString>("found");

    QTest::newRow("first exists") << QStringList{"file:a.sf2", "file:b.sf2"} << "a.sf2";
    QTest::newRow("missing skipped") << QStringList{"missing:a.sf2", "file:b.sf2"} << "b.sf2";
    QTest::newRow("folder skipped") << QStringList{"dir:a.sf2", "file:b.sf2"} << "b.sf2";
    QTest::newRow("none") << QStringList{"missing:a.sf2", "dir:b.sf2"} << "";
    QTest::newRow("no candidates") << QStringList{} << "";
}

void BuiltInSynthTest::locatorTakesTheFirstReadableFile()
{
    QFETCH(QStringList, candidates);
    QFETCH(QString, found);

    QTemporaryDir dir;
    std::vector<std::string> paths;
    for (const QString &candidate : candidates) {
        const QString kind = candidate.section(u':', 0, 0);
        const QString path = dir.filePath(candidate.section(u':', 1));
        if (kind == u"file")
            std::ofstream(path.toStdString()) << "RIFF";
        else if (kind == u"dir")
            QDir().mkpath(path);
        paths.push_back(path.toStdString());
    }
    const std::string expected = found.isEmpty() ? std::string() : dir.filePath(found).toStdString();
    QCOMPARE(findGeneralMidiSoundFont(paths), expected);
}

QTEST_GUILESS_MAIN(BuiltInSynthTest)
#include "tst_builtinsynth.moc"
