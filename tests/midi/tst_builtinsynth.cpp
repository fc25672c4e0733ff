// The built-in synthesizer heard through the very code the device plays
// through, rendered offline: no sound device is needed.

#include "AudioAnalysis.h"
#include "midi/BuiltInSynth.h"
#include "midi/MidiMessages.h"
#include "midi/SoundFontLocator.h"

#include <QTemporaryDir>
#include <QtTest>
#include <fstream>

using namespace tonaro;
using namespace tonaro::test;

namespace {

std::uint32_t message(std::uint8_t status, int data1, int data2 = 0)
{
    return midi::packShortMessage(status, data1, data2);
}

} // namespace

class BuiltInSynthTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<BuiltInSynth> m_synth;

    // Renders seconds of sound and returns the left channel.
    std::vector<float> render(double seconds)
    {
        const int frames = int(seconds * m_synth->sampleRate());
        std::vector<float> stereo(2 * static_cast<std::size_t>(frames)), left(static_cast<std::size_t>(frames));
        m_synth->render(stereo.data(), frames);
        for (std::size_t i = 0; i < left.size(); ++i)
            left[i] = stereo[2 * i];
        return left;
    }

    void play(int program, int note, int velocity = 100)
    {
        for (const std::uint32_t m : {message(midi::ControlChangeStatus, midi::BankSelectMsb),
                                      message(midi::ControlChangeStatus, midi::BankSelectLsb),
                                      message(midi::ProgramChangeStatus, program), message(midi::NoteOnStatus, note, velocity)})
            QCOMPARE(m_synth->send(m), MidiResult::Ok);
    }

private slots:
    void initTestCase()
    {
        if (findGeneralMidiSoundFont().empty())
            QSKIP("No General MIDI SoundFont installed (package musescore-general-soundfont-small)");
        m_synth = std::make_unique<BuiltInSynth>(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}});
        QCOMPARE(m_synth->open(), MidiResult::Ok);
    }

    // Every case starts as the port does after a restart: silent.
    void init()
    {
        m_synth->close();
        render(0.05);
    }

    void noteSoundsAtItsPitch_data()
    {
        QTest::addColumn<int>("note");
        QTest::addColumn<double>("hz");
        QTest::newRow("A4") << 69 << 440.0;
        QTest::newRow("C4") << 60 << 261.63;
        QTest::newRow("A5") << 81 << 880.0;
    }

    void noteSoundsAtItsPitch()
    {
        QFETCH(int, note);
        QFETCH(double, hz);
        play(24, note);
        const std::vector<float> sound = render(0.6);
        // Past the attack, where the pitch has settled.
        const Samples steady = Samples(sound).subspan(std::size_t(0.15 * m_synth->sampleRate()));
        // Over -60 dBFS: a high guitar note of the larger fonts fades fast.
        QVERIFY2(rms(steady) > 0.001, "the note is not heard");
        const double measured = estimatePitch(steady, m_synth->sampleRate());
        QVERIFY2(std::fabs(measured - hz) <= hz * 0.01, qPrintable(QStringLiteral("%1 Hz instead of %2 Hz").arg(measured).arg(hz)));
    }

    void velocityZeroIsANoteOffNotAnError()
    {
        QCOMPARE(m_synth->send(message(midi::NoteOnStatus, 69, 0)), MidiResult::Ok); // nothing sounds yet
        play(24, 69);
        QVERIFY(rms(render(0.2)) > 0.005);
        QCOMPARE(m_synth->send(message(midi::NoteOnStatus, 69, 0)), MidiResult::Ok);
        render(1.0); // the guitar's release runs out
        QVERIFY(rms(render(0.1)) < 1e-4);
    }

    void closingSilencesASoundingNote()
    {
        play(24, 69);
        QVERIFY(rms(render(0.2)) > 0.005);
        m_synth->close();
        // One block of 64 frames may still be under way when the voices stop.
        const std::vector<float> after = render(0.1);
        QVERIFY2(rms(Samples(after).subspan(64)) < 1e-5, "the note rings on after close");
    }

    // The program change reaches the synthesizer: piano, nylon guitar and
    // flute on the same note differ in timbre.
    void programsSoundDifferent()
    {
        const std::array programs{0, 24, 73};
        std::vector<std::vector<double>> profiles;
        for (const int program : programs) {
            m_synth->close();
            play(program, 69);
            const std::vector<float> sound = render(0.5);
            profiles.push_back(harmonicProfile(Samples(sound).subspan(std::size_t(0.1 * m_synth->sampleRate())),
                                               m_synth->sampleRate(), 440));
        }
        for (std::size_t a = 0; a < profiles.size(); ++a)
            for (std::size_t b = a + 1; b < profiles.size(); ++b)
                QVERIFY2(profileDistance(profiles[a], profiles[b]) > 6.0,
                         qPrintable(QStringLiteral("programs %1 and %2 sound alike").arg(programs[a]).arg(programs[b])));
    }

    void brokenSoundFontGivesNoSoundFont_data()
    {
        QTest::addColumn<qint64>("keptBytes"); // of the real SoundFont; -1: no file, -2: garbage
        QTest::newRow("missing file") << qint64(-1);
        QTest::newRow("garbage") << qint64(-2);
        QTest::newRow("empty file") << qint64(0);
        QTest::newRow("first half") << qint64(QFileInfo(QString::fromStdString(findGeneralMidiSoundFont())).size() / 2);
    }

    void brokenSoundFontGivesNoSoundFont()
    {
        QFETCH(qint64, keptBytes);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sounds/sf2")));
        const std::string path = dir.filePath(QStringLiteral("sounds/sf2/TimGM6mb.sf2")).toStdString();
        if (keptBytes != -1) {
            std::vector<char> bytes(keptBytes == -2 ? 4096 : std::size_t(keptBytes), '\x5a');
            if (keptBytes >= 0)
                std::ifstream(findGeneralMidiSoundFont(), std::ios::binary).read(bytes.data(), std::streamsize(bytes.size()));
            std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
        }
        BuiltInSynth synth(BuiltInSynth::Options{dir.path().toStdString(), BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::NoSoundFont);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::NoSoundFont);
        synth.close();
    }
};

QTEST_GUILESS_MAIN(BuiltInSynthTest)
#include "tst_builtinsynth.moc"
