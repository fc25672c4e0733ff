// The built-in synthesizer heard through the very code the device plays
// through, rendered offline: its pitch, programs and silence, and its
// SoundFont: the order in which it is looked for, the fallback past files
// that do not load, and a file that is removed, replaced or written over
// while the program runs. The SoundFont cases point the search at a folder
// of their own, filled from the SoundFont the system has.

#include "AudioAnalysis.h"
#include "NoSystemPorts.h"
#include "RecordingMessageBoxes.h"
#include "midi/BuiltInSynth.h"
#include "midi/MidiMessages.h"
#include "midi/Midi_interface.h"
#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"

#include <QTemporaryDir>
#include <QtTest>
#include <filesystem>
#include <fstream>

using namespace tonaro;
using namespace tonaro::test;
namespace fs = std::filesystem;

namespace {

constexpr int Guitar = 24; // its samples are read when it is chosen
constexpr int Flute = 73;

std::uint32_t message(std::uint8_t status, int data1, int data2 = 0)
{
    return midi::packShortMessage(status, data1, data2);
}

void writeBytes(const fs::path &path, std::size_t count)
{
    std::ofstream(path, std::ios::binary).write(std::vector<char>(count, '\x5a').data(), std::streamsize(count));
}

// The left channel of seconds of the synthesizer's sound.
std::vector<float> render(BuiltInSynth &synth, double seconds)
{
    const int frames = int(seconds * synth.sampleRate());
    std::vector<float> stereo(2 * std::size_t(frames)), left(std::size_t(frames), 0.0f);
    synth.render(stereo.data(), frames);
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = stereo[2 * i];
    return left;
}

// Past the attack of a note just begun, where its pitch has settled.
std::vector<float> steadyPart(BuiltInSynth &synth, double seconds = 0.45)
{
    render(synth, 0.15);
    return render(synth, seconds);
}

// Empty when a note at hz is heard, else what was heard instead. Over
// -60 dBFS: a high guitar note of the larger fonts fades fast.
QString heard(BuiltInSynth &synth, double hz)
{
    const std::vector<float> sound = steadyPart(synth);
    if (rms(sound) < 0.001)
        return QStringLiteral("silence");
    const double measured = estimatePitch(sound, synth.sampleRate());
    return std::fabs(measured - hz) <= hz * 0.01 ? QString() : QStringLiteral("%1 Hz instead of %2 Hz").arg(measured).arg(hz);
}

} // namespace

class BuiltInSynthTest : public QObject
{
    Q_OBJECT

    fs::path m_systemFont;
    std::unique_ptr<QTemporaryDir> m_dir;

    fs::path folder() const { return m_dir->path().toStdString(); }

    // Puts a file at a path under the folder: "good" links to the system's
    // SoundFont, "copy" copies it, "garbage", "empty" and "head" (its first
    // 64 KiB) do not load, "dangling" links to nothing.
    void place(const QString &relative, const QString &kind)
    {
        const fs::path path = folder() / relative.toStdString();
        fs::create_directories(path.parent_path());
        if (kind == QLatin1String("good"))
            fs::create_symlink(m_systemFont, path);
        else if (kind == QLatin1String("copy"))
            // Dated back, as an installed file is: a write now changes its time.
            fs::copy_file(m_systemFont, path), fs::last_write_time(path, fs::last_write_time(m_systemFont));
        else if (kind == QLatin1String("garbage"))
            writeBytes(path, 4096);
        else if (kind == QLatin1String("empty"))
            writeBytes(path, 0);
        else if (kind == QLatin1String("head"))
            fs::copy_file(m_systemFont, path), fs::resize_file(path, 64 * 1024);
        else
            fs::create_symlink(folder() / "gone.sf2", path);
    }

private slots:
    void initTestCase()
    {
        m_systemFont = findGeneralMidiSoundFont();
        if (m_systemFont.empty())
            QSKIP("No General MIDI SoundFont installed (package musescore-general-soundfont-small)");
        m_systemFont = fs::canonical(m_systemFont);
    }

    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    // Each note at its pitch; a note-on of velocity 0 ends it, and closing
    // the device silences a sounding note at once.
    void notesSoundAtTheirPitchAndStop()
    {
        BuiltInSynth synth(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::Ok);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 0)), MidiResult::Ok); // nothing sounds yet
        QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Guitar)), MidiResult::Ok);
        for (const auto &[note, hz] : {std::pair{69, 440.0}, {60, 261.63}, {81, 880.0}}) {
            QCOMPARE(synth.send(message(midi::NoteOnStatus, note, 100)), MidiResult::Ok);
            const QString wrong = heard(synth, hz);
            QVERIFY2(wrong.isEmpty(), qPrintable(QStringLiteral("note %1: ").arg(note) + wrong));
            synth.close();
            // One block of 64 frames may still be under way when the voices stop.
            QVERIFY2(rms(Samples(render(synth, 0.1)).subspan(64)) < 1e-5, "the note rings on after close");
        }
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::Ok);
        QVERIFY(rms(render(synth, 0.2)) > 0.005);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 0)), MidiResult::Ok);
        render(synth, 1.0); // the guitar's release runs out
        QVERIFY(rms(render(synth, 0.1)) < 1e-4);
    }

    // The program change reaches the synthesizer: the same note on piano,
    // nylon guitar and flute, each begun from silence, are three different
    // sounds, where one program would give the same samples three times.
    void programsSoundDifferent()
    {
        BuiltInSynth synth(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::Ok);
        const int programs[] = {0, Guitar, Flute};
        std::vector<std::vector<float>> sounds;
        for (const int program : programs) {
            synth.close();
            render(synth, 2.0); // the reverberation of the note before dies away
            QCOMPARE(synth.send(message(midi::ProgramChangeStatus, program)), MidiResult::Ok);
            QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::Ok);
            sounds.push_back(render(synth, 0.4));
        }
        for (const auto &[a, b] : {std::pair{0, 1}, {0, 2}, {1, 2}}) {
            std::vector<float> difference(sounds[a].size());
            std::transform(sounds[a].begin(), sounds[a].end(), sounds[b].begin(), difference.begin(), std::minus<>());
            QVERIFY2(rms(difference) > 0.5 * std::max(rms(sounds[a]), rms(sounds[b])),
                     qPrintable(QStringLiteral("programs %1 and %2 sound alike").arg(programs[a]).arg(programs[b])));
        }
    }

    // The best sound first; a file that does not load is passed over with
    // no box, and the user hears the next one.
    void takesTheFirstThatLoads_data()
    {
        QTest::addColumn<QStringList>("files"); // path=kind
        QTest::addColumn<QString>("chosen");
        const QString general = "sounds/sf3/MuseScore_General.sf3", lite = "sounds/sf3/MuseScore_General_Lite.sf3",
                      fluid = "sounds/sf2/FluidR3_GM.sf2", defaultSf2 = "sounds/sf2/default-GM.sf2",
                      defaultSf3 = "sounds/sf3/default-GM.sf3", tim = "sounds/sf2/TimGM6mb.sf2";
        QStringList good{tim + "=good"};
        QTest::newRow("TimGM6mb last") << good << tim;
        for (const QString &better : {defaultSf3, defaultSf2, fluid, lite, general}) {
            good << better + "=good";
            QTest::newRow(qPrintable(better + " before the rest")) << good << better;
        }
        QTest::newRow("corrupt first, good second") << QStringList{general + "=garbage", lite + "=good"} << lite;
        QTest::newRow("empty, cut short, dangling, then good")
            << QStringList{general + "=empty", lite + "=head", defaultSf2 + "=dangling", tim + "=good"} << tim;
    }

    void takesTheFirstThatLoads()
    {
        QFETCH(QStringList, files);
        for (const QString &file : files)
            place(file.section(u'=', 0, 0), file.section(u'=', 1));

        SystemMidiPlatform platform(
            std::make_unique<BuiltInSynth>(BuiltInSynth::Options{folder().string(), BuiltInSynth::Output::None, {}}),
            std::make_unique<NoSystemPorts>());
        RecordingMessageBoxes boxes;
        Midi_interface midi(platform, boxes);
        midi.MidiChannel = 1;
        midi.MidiVolume = 100;
        midi.ToggleMidiOut();
        midi.SelectInstrument(midi.MidiChannel, Guitar, 0, 0);
        midi.playNote(69);

        QCOMPARE(boxes.texts(), QStringList());
        QVERIFY(midi.MidiPortOpen);
        QFETCH(QString, chosen);
        QCOMPARE(QString::fromStdString(platform.builtInSynth().soundFontPath()),
                 QString::fromStdString((folder() / chosen.toStdString()).string()));
        const QString wrong = heard(platform.builtInSynth(), 440);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }

    void noneLoads()
    {
        place(QStringLiteral("sounds/sf3/MuseScore_General.sf3"), QStringLiteral("garbage"));
        place(QStringLiteral("sounds/sf2/TimGM6mb.sf2"), QStringLiteral("head"));
        BuiltInSynth synth(BuiltInSynth::Options{folder().string(), BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::NoSoundFont);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::NoSoundFont);
        QCOMPARE(synth.soundFontPath(), std::string());
    }

    // What a package upgrade or removal, or a user copying over the file,
    // does to the SoundFont after start-up; then a program not used before
    // is chosen and a note played. Removed or replaced: the synthesizer
    // still has the file it opened and plays the new program. Written over
    // in place: the program is refused, the channel keeps the one it has,
    // and the next open of the port fails with the SoundFont's message.
    void fileChangesAfterStartUp_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("stillPlays");
        QTest::newRow("removed") << QStringLiteral("remove") << true;
        QTest::newRow("replaced by a new file") << QStringLiteral("replace") << true;
        QTest::newRow("cut to nothing in place") << QStringLiteral("truncate") << false;
        QTest::newRow("written over in place") << QStringLiteral("overwrite") << false;
    }

    void fileChangesAfterStartUp()
    {
        QFETCH(QString, change);
        QFETCH(bool, stillPlays);
        place(QStringLiteral("sounds/sf2/TimGM6mb.sf2"), QStringLiteral("copy"));
        const fs::path path = folder() / "sounds/sf2/TimGM6mb.sf2";
        BuiltInSynth synth(BuiltInSynth::Options{folder().string(), BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::Ok);
        QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Flute)), MidiResult::Ok);

        if (change == QLatin1String("remove")) {
            fs::remove(path);
        } else if (change == QLatin1String("replace")) {
            writeBytes(path.string() + ".new", 4096);
            fs::rename(path.string() + ".new", path);
        } else {
            const auto size = fs::file_size(path);
            std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc);
            if (change == QLatin1String("overwrite"))
                file.write(std::vector<char>(size, '\x5a').data(), std::streamsize(size));
        }

        QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Guitar)), stillPlays ? MidiResult::Ok : MidiResult::NoSoundFont);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::Ok);
        // The guitar, or the flute the channel had: never another file's bytes.
        const QString wrong = heard(synth, 440);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        synth.close();
        QCOMPARE(synth.open(), stillPlays ? MidiResult::Ok : MidiResult::NoSoundFont);
    }
};

QTEST_GUILESS_MAIN(BuiltInSynthTest)
#include "tst_builtinsynth.moc"
