// The built-in synthesizer heard through the very code the device plays
// through, rendered offline: its silence, and its
// SoundFont: the order in which it is looked for, the fallback past files
// that do not load. The SoundFont cases point the search at a folder of
// their own, filled from the SoundFont the system has.

#include "AudioAnalysis.h"
#include "midi/BuiltInSynth.h"
#include "midi/MidiMessages.h"
#include "midi/SoundFontLocator.h"

#include <QTemporaryDir>
#include <QtTest>
#include <filesystem>
#include <fstream>

using namespace tonaro;
using namespace tonaro::test;
namespace fs = std::filesystem;

namespace {

constexpr int Guitar = 24, Flute = 73; // their samples are read when they are chosen

std::uint32_t message(std::uint8_t status, int data1, int data2 = 0)
{
    return midi::packShortMessage(status, data1, data2);
}

// The left channel of seconds of the synthesizer's sound.
std::vector<float> render(BuiltInSynth &synth, double seconds)
{
    std::vector<float> stereo(2 * std::size_t(seconds * synth.sampleRate())), left;
    synth.render(stereo.data(), int(stereo.size() / 2));
    for (std::size_t i = 0; i < stereo.size(); i += 2)
        left.push_back(stereo[i]);
    return left;
}

// No sample louder than level.
bool quiet(Samples sound, float level)
{
    return onsetIndex(sound, level) == sound.size();
}

// Empty when a note at hz is heard past its attack, else what was heard
// instead (silence reads as the highest pitch looked for).
QString heard(BuiltInSynth &synth, double hz)
{
    render(synth, 0.15);
    const std::vector<float> sound = render(synth, 0.45);
    const double measured = estimatePitch(sound, synth.sampleRate());
    return std::fabs(measured - hz) <= hz * 0.01 ? QString() : QStringLiteral("%1 Hz instead of %2 Hz").arg(measured).arg(hz);
}

// What a file placed under the SoundFont folder is: a link to the system's
// SoundFont or a copy of it, or one that does not load: bytes of nothing, an
// empty file, its first 64 KiB, a link to nothing.
enum class Kind { Good, Copy, Garbage, Empty, Head, Dangling };

const char *const General = "sounds/sf3/MuseScore_General.sf3", *const Lite = "sounds/sf3/MuseScore_General_Lite.sf3",
                  *const Fluid = "sounds/sf2/FluidR3_GM.sf2", *const DefaultSf2 = "sounds/sf2/default-GM.sf2",
                  *const DefaultSf3 = "sounds/sf3/default-GM.sf3", *const Tim = "sounds/sf2/TimGM6mb.sf2";

} // namespace

class BuiltInSynthTest : public QObject
{
    Q_OBJECT

    fs::path m_systemFont;
    std::unique_ptr<QTemporaryDir> m_dir;

    fs::path folder() const { return m_dir->path().toStdString(); }
    BuiltInSynth::Options offline() const { return {m_dir ? folder().string() : std::string(), BuiltInSynth::Output::None, {}}; }

    void place(const char *relative, Kind kind)
    {
        const fs::path path = folder() / relative;
        fs::create_directories(path.parent_path());
        if (kind == Kind::Good)
            fs::create_symlink(m_systemFont, path);
        else if (kind == Kind::Garbage || kind == Kind::Empty)
            std::ofstream(path, std::ios::binary) << std::string(kind == Kind::Garbage ? 4096 : 0, '\x5a');
        else if (kind == Kind::Copy)
            fs::copy_file(m_systemFont, path);
        else if (kind == Kind::Head)
            fs::copy_file(m_systemFont, path), fs::resize_file(path, 64 * 1024);
        else
            fs::create_symlink(folder() / "gone.sf2", path);
    }

    // The synthesizer on the folder takes that file (null: none) and plays
    // the guitar from it.
    void takes(const char *file)
    {
        BuiltInSynth synth(offline());
        const std::string chosen = file ? (folder() / file).string() : std::string();
        QCOMPARE(synth.soundFontPath(), chosen);
        const MidiResult loaded = file ? MidiResult::Ok : MidiResult::NoSoundFont;
        QCOMPARE(synth.open(), loaded);
        QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Guitar)), loaded);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), loaded);
        const QString wrong = file ? heard(synth, 440) : QString();
        QVERIFY2(wrong.isEmpty(), qPrintable(QString::fromStdString(chosen) + ": " + wrong));
    }

private slots:
    void initTestCase()
    {
        m_systemFont = findGeneralMidiSoundFont();
        if (m_systemFont.empty())
            QSKIP("No General MIDI SoundFont installed (package musescore-general-soundfont-small)");
        m_systemFont = fs::canonical(m_systemFont);
    }

    void init() { m_dir.reset(); }

    // Closing the device silences a sounding note at once, and a note-on of
    // velocity 0 ends it. (The pitch is heard below with every SoundFont
    // taken, and end to end.)
    void notesStop()
    {
        BuiltInSynth synth(offline());
        QCOMPARE(synth.open(), MidiResult::Ok);
        QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Guitar)), MidiResult::Ok);
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 81, 100)), MidiResult::Ok);
        QVERIFY(!quiet(render(synth, 0.2), 0.01f));
        synth.close();
        // One block of 64 frames may still be under way when the voices stop.
        QVERIFY2(quiet(Samples(render(synth, 0.1)).subspan(64), 1e-4f), "the note rings on after close");
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::Ok);
        QVERIFY(!quiet(render(synth, 0.2), 0.01f));
        QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 0)), MidiResult::Ok);
        render(synth, 1.0); // the guitar's release runs out
        QVERIFY(quiet(render(synth, 0.1), 1e-3f));
    }

    // The best sound first: each better file placed beside the ones before
    // is the one taken. A file that does not load is passed over, and the
    // user hears the next one; where none loads, nothing opens.
    void takesTheBestThatLoads()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        for (const char *better : {Tim, DefaultSf3, DefaultSf2, Fluid, Lite, General}) {
            place(better, Kind::Good);
            takes(better);
        }
        const std::vector<std::pair<const char *, Kind>> failing[] = {
            {{General, Kind::Garbage}, {Lite, Kind::Good}},
            {{General, Kind::Empty}, {Lite, Kind::Head}, {DefaultSf2, Kind::Dangling}, {Tim, Kind::Good}},
            {{General, Kind::Garbage}, {Tim, Kind::Head}},
        };
        for (const auto &files : failing) {
            m_dir = std::make_unique<QTemporaryDir>();
            for (const auto &[file, kind] : files)
                place(file, kind);
            // The last file placed, if it is good.
            takes(files.back().second == Kind::Good ? files.back().first : nullptr);
        }
    }

    // The SoundFont changed after start-up, as a package upgrade does it:
    // removed or replaced by a new file, the open one plays on; cut or
    // written over in place, it is refused, and the channel keeps the
    // instrument it had. Never another file's bytes read as samples.
    void fileChangesAfterStartUp()
    {
        for (const QString change : {"removed", "replaced", "cut", "written over"}) {
            m_dir = std::make_unique<QTemporaryDir>();
            place(Tim, Kind::Copy);
            const fs::path path = folder() / Tim;
            BuiltInSynth synth(offline());
            QCOMPARE(synth.open(), MidiResult::Ok);
            QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Flute)), MidiResult::Ok);
            const bool inPlace = change == "cut" || change == "written over";
            const auto size = fs::file_size(path);
            if (change == "removed")
                fs::remove(path);
            else if (change == "replaced")
                place("new.sf2", Kind::Garbage), fs::rename(folder() / "new.sf2", path);
            else
                std::ofstream(path, std::ios::binary | std::ios::trunc) << std::string(change == "cut" ? 0 : size, '\x5a');
            const MidiResult expected = inPlace ? MidiResult::NoSoundFont : MidiResult::Ok;
            QCOMPARE(synth.send(message(midi::ProgramChangeStatus, Guitar)), expected);
            QCOMPARE(synth.send(message(midi::NoteOnStatus, 69, 100)), MidiResult::Ok);
            const QString wrong = heard(synth, 440);
            QVERIFY2(wrong.isEmpty(), qPrintable(change + ": " + wrong));
            synth.close();
            QCOMPARE(synth.open(), expected);
        }
    }
};

QTEST_GUILESS_MAIN(BuiltInSynthTest)
#include "tst_builtinsynth.moc"
