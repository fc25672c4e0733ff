// The built-in synthesizer's SoundFont: the order in which it is looked for,
// the fallback past files that do not load, and a file that is removed,
// replaced or written over while the program runs. Each case points the
// search at a folder of its own, filled from the SoundFont the system has,
// and listens to the synthesizer rendered offline.

#include "AudioAnalysis.h"
#include "NoSystemPorts.h"
#include "midi/BuiltInSynth.h"
#include "midi/MidiMessages.h"
#include "midi/Midi_interface.h"
#include "midi/SoundFontFile.h"
#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"
#include "RecordingMessageBoxes.h"

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
constexpr int A4 = 69;
constexpr double A4Hz = 440.0;

std::uint32_t message(std::uint8_t status, int data1, int data2 = 0)
{
    return midi::packShortMessage(status, data1, data2);
}

void writeBytes(const fs::path &path, std::size_t count, char byte = '\x5a')
{
    const std::vector<char> bytes(count, byte);
    std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}

// The left channel of seconds of the synthesizer's sound.
std::vector<float> render(BuiltInSynth &synth, double seconds)
{
    const int frames = int(seconds * synth.sampleRate());
    std::vector<float> stereo(2 * std::size_t(frames)), left(static_cast<std::size_t>(frames));
    synth.render(stereo.data(), frames);
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = stereo[2 * i];
    return left;
}

// Empty when A4 is heard at its pitch, else what was heard instead.
QString heardA4(BuiltInSynth &synth)
{
    const std::vector<float> sound = render(synth, 0.6);
    const Samples steady = Samples(sound).subspan(std::size_t(0.15 * synth.sampleRate()));
    if (rms(steady) < 0.005)
        return QStringLiteral("silence");
    const double hz = estimatePitch(steady, synth.sampleRate());
    return std::fabs(hz - A4Hz) <= A4Hz * 0.01 ? QString() : QStringLiteral("%1 Hz").arg(hz);
}

} // namespace

class SoundFontSearchTest : public QObject
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
        else if (kind == QLatin1String("dangling"))
            fs::create_symlink(folder() / "gone.sf2", path);
        else
            QFAIL(qPrintable(QStringLiteral("unknown kind ") + kind));
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

    // The best sound first; a file that does not load is passed over with
    // no box, and the user hears the next one.
    void takesTheFirstThatLoads_data()
    {
        QTest::addColumn<QStringList>("files"); // path=kind
        QTest::addColumn<QString>("chosen");
        const QString general = QStringLiteral("sounds/sf3/MuseScore_General.sf3"),
                      lite = QStringLiteral("sounds/sf3/MuseScore_General_Lite.sf3"),
                      fluid = QStringLiteral("sounds/sf2/FluidR3_GM.sf2"),
                      defaultSf2 = QStringLiteral("sounds/sf2/default-GM.sf2"),
                      defaultSf3 = QStringLiteral("sounds/sf3/default-GM.sf3"),
                      tim = QStringLiteral("sounds/sf2/TimGM6mb.sf2");
        const auto good = [](const QStringList &paths) {
            QStringList files;
            for (const QString &path : paths)
                files << path + QStringLiteral("=good");
            return files;
        };
        QTest::newRow("MuseScore General first") << good({tim, defaultSf3, defaultSf2, fluid, lite, general}) << general;
        QTest::newRow("then its small font") << good({tim, defaultSf3, defaultSf2, fluid, lite}) << lite;
        QTest::newRow("then FluidR3") << good({tim, defaultSf3, defaultSf2, fluid}) << fluid;
        QTest::newRow("then default-GM.sf2") << good({tim, defaultSf3, defaultSf2}) << defaultSf2;
        QTest::newRow("then default-GM.sf3") << good({tim, defaultSf3}) << defaultSf3;
        QTest::newRow("TimGM6mb last") << good({tim}) << tim;
        QTest::newRow("corrupt first, good second") << QStringList{general + "=garbage", lite + "=good"} << lite;
        QTest::newRow("empty, cut short, dangling, then good")
            << QStringList{general + "=empty", lite + "=head", defaultSf2 + "=dangling", tim + "=good"} << tim;
    }

    void takesTheFirstThatLoads()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, chosen);
        for (const QString &file : files)
            place(file.section(u'=', 0, 0), file.section(u'=', 1));

        SystemMidiPlatform platform(
            std::make_unique<BuiltInSynth>(BuiltInSynth::Options{folder().string(), BuiltInSynth::Output::None, {}}),
            std::make_unique<NoSystemPorts>());
        BuiltInSynth &heard = platform.builtInSynth();
        RecordingMessageBoxes boxes;
        Midi_interface midi(platform, boxes);
        midi.MidiChannel = 1;
        midi.MidiVolume = 100;
        midi.ToggleMidiOut();
        midi.SelectInstrument(midi.MidiChannel, Guitar, 0, 0);
        midi.playNote(A4);

        QCOMPARE(QStringList(boxes.texts()), QStringList());
        QVERIFY(midi.MidiPortOpen);
        QCOMPARE(QString::fromStdString(heard.soundFontPath()), QString::fromStdString((folder() / chosen.toStdString()).string()));
        const QString wrong = heardA4(heard);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }

    void noneLoadsGivesTheBox()
    {
        place(QStringLiteral("sounds/sf3/MuseScore_General.sf3"), QStringLiteral("garbage"));
        place(QStringLiteral("sounds/sf2/TimGM6mb.sf2"), QStringLiteral("head"));
        BuiltInSynth synth(BuiltInSynth::Options{folder().string(), BuiltInSynth::Output::None, {}});
        QCOMPARE(synth.open(), MidiResult::NoSoundFont);
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
        const QString relative = QStringLiteral("sounds/sf2/TimGM6mb.sf2");
        place(relative, QStringLiteral("copy"));
        const fs::path path = folder() / relative.toStdString();
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

        const MidiResult chosen = synth.send(message(midi::ProgramChangeStatus, Guitar));
        QCOMPARE(chosen, stillPlays ? MidiResult::Ok : MidiResult::NoSoundFont);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, A4, 100)), MidiResult::Ok);
        // The guitar, or the flute the channel had: never another file's bytes.
        const QString wrong = heardA4(synth);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        synth.close();
        QCOMPARE(synth.open(), stillPlays ? MidiResult::Ok : MidiResult::NoSoundFont);
    }

    // Sample data is read as it was when the file was opened, or not at all,
    // also when the file changes between FluidSynth's choice of a program
    // and its read; the header of the first parse stays as it was.
    void readsNothingWrittenAfterOpening()
    {
        const fs::path path = folder() / "font.sf2";
        writeBytes(path, 200 * 1024, 'a');
        fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(1));
        const auto file = SoundFontFile::open(path.string());
        QVERIFY(file);
        QVERIFY(file->claimHeader());
        QVERIFY(!file->claimHeader());
        char header[16] = {}, samples[16] = {};
        QVERIFY(file->read(header, sizeof header, 0, true));
        QVERIFY(file->read(samples, sizeof samples, 150 * 1024, false));
        QCOMPARE(samples[0], 'a');
        QVERIFY(!file->read(samples, 1, 200 * 1024, false)); // past the end

        {
            std::fstream overwrite(path, std::ios::binary | std::ios::in | std::ios::out);
            overwrite.write(std::vector<char>(200 * 1024, 'b').data(), 200 * 1024);
        }
        QVERIFY(!file->isIntact());
        QVERIFY(!file->read(samples, sizeof samples, 150 * 1024, false));
        QVERIFY(file->read(header, sizeof header, 0, false));
        QCOMPARE(header[0], 'a');
    }
};

QTEST_GUILESS_MAIN(SoundFontSearchTest)
#include "tst_soundfontsearch.moc"
