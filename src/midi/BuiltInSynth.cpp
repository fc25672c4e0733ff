#include "BuiltInSynth.h"

#include "MidiMessages.h"
#include "SoundFontFile.h"
#include "SoundFontLocator.h"

#include <fluidsynth.h>
#include <malloc.h>

namespace tonaro {

namespace {

constexpr int AllChannels = -1;
// A message of our own in the queue: every voice of every channel stops at once.
constexpr int AllSoundsOff = -1;

} // namespace

void BuiltInSynth::SettingsDeleter::operator()(fluid_settings_t *settings) const
{
    delete_fluid_settings(settings);
}

void BuiltInSynth::SynthDeleter::operator()(fluid_synth_t *synth) const
{
    delete_fluid_synth(synth);
}

BuiltInSynth::BuiltInSynth(Options options)
    : m_options(std::move(options))
{
    m_loaded = std::async(std::launch::async, [this] { return load(); }).share();
}

BuiltInSynth::~BuiltInSynth()
{
    m_connection.reset();
    m_loaded.wait();
}

MidiResult BuiltInSynth::load()
{
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string> candidates = findGeneralMidiSoundFonts(
        generalMidiSoundFontCandidates(m_options.soundFontFolder.empty() ? SystemSoundFontFolder : m_options.soundFontFolder));
    if (candidates.empty())
        return MidiResult::NoSoundFont;

    m_settings.reset(new_fluid_settings());
    if (!m_settings)
        return MidiResult::NoMemory;
    fluid_settings_setnum(m_settings.get(), "synth.sample-rate", m_options.audio.sampleRate);
    // Samples are read when a program is chosen, not all at start: the load
    // takes milliseconds and only the instruments in use stay in memory.
    fluid_settings_setint(m_settings.get(), "synth.dynamic-sample-loading", 1);
    // Dry sound: a reverb tail would ring on after the port closes, which is
    // how the program silences notes, and blurs the pitch a user listens for.
    fluid_settings_setint(m_settings.get(), "synth.reverb.active", 0);
    fluid_settings_setint(m_settings.get(), "synth.chorus.active", 0);
    // FluidSynth's default gain leaves one guitar note near -35 dBFS, too
    // quiet beside other programs. At this gain the loudest question, an
    // eight-note chord at full velocity, peaks between -8 and -2 dBFS across
    // organ, guitar, strings, brass and lead sounds: loud, never clipped.
    fluid_settings_setnum(m_settings.get(), "synth.gain", 0.5);
    m_synth.reset(new_fluid_synth(m_settings.get()));
    if (!m_synth)
        return MidiResult::NoMemory;
    // FluidSynth tries the loader added last first; the synth owns it.
    fluid_sfloader_t *loader = new_fluid_defsfloader(m_settings.get());
    if (!loader)
        return MidiResult::NoMemory;
    SoundFontFile::readThrough(loader);
    fluid_synth_add_sfloader(m_synth.get(), loader);

    // No program is chosen on any channel at load (FluidSynth would choose
    // the piano on all sixteen, and read the largest instrument of the big
    // fonts: seconds of work and 95 MB): the port chooses its instrument
    // after every open, and only that instrument's samples are read.
    for (const std::string &path : candidates) {
        // A truncated or corrupt file is refused here, with FluidSynth's own
        // message on the log, and the next one is tried.
        std::shared_ptr<SoundFontFile> file = SoundFontFile::open(path);
        if (file && fluid_synth_sfload(m_synth.get(), file->loaderName().c_str(), 0) != FLUID_FAILED) {
            m_soundFont = std::move(file);
            // The parse's scratch memory, freed on this thread's own heap,
            // goes back to the system: 2 to 3 MB with the larger fonts.
            malloc_trim(0);
            m_loadTime = std::chrono::steady_clock::now() - start;
            return MidiResult::Ok;
        }
    }
    m_synth.reset();
    return MidiResult::NoSoundFont;
}

MidiResult BuiltInSynth::soundFontState()
{
    const MidiResult loaded = waitForLoad();
    if (loaded == MidiResult::Ok && !m_soundFont->isIntact())
        return MidiResult::NoSoundFont;
    return loaded;
}

std::string BuiltInSynth::soundFontPath()
{
    return waitForLoad() == MidiResult::Ok ? m_soundFont->path() : std::string();
}

std::chrono::duration<double> BuiltInSynth::loadTime()
{
    waitForLoad();
    return m_loadTime;
}

MidiResult BuiltInSynth::open()
{
    if (const MidiResult loaded = soundFontState(); loaded != MidiResult::Ok)
        return loaded;
    if (m_options.output == Output::None || m_connection)
        return MidiResult::Ok;
    // A note that could not sound while the output was gone must not sound
    // late when it is back.
    auto connection = std::make_unique<AudioConnection>(*this, m_options.audio, [this] { queue(AllSoundsOff); });
    if (!connection->connect())
        return MidiResult::NoAudioOutput;
    m_connection = std::move(connection);
    return MidiResult::Ok;
}

void BuiltInSynth::close()
{
    // Closing the port is how the program silences ringing notes: the voices
    // stop without their release. The programs stay selected, so that no
    // samples have to be read again when the port reopens.
    if (waitForLoad() == MidiResult::Ok)
        queue(AllSoundsOff);
}

MidiResult BuiltInSynth::send(std::uint32_t message)
{
    if (const MidiResult loaded = waitForLoad(); loaded != MidiResult::Ok)
        return loaded;
    const auto parsed = midi::ShortMessage::unpack(message);
    if (!parsed.isValid())
        return MidiResult::DataOutOfRange;
    // Nothing plays while the sound server is away: a note then is dropped
    // rather than kept to sound late, and the connection is sought at once.
    if (m_connection && !m_connection->isPlaying() && parsed.type() == midi::NoteOnStatus) {
        m_connection->wake();
        return MidiResult::Ok;
    }
    MidiResult result = MidiResult::Ok;
    if (parsed.type() == midi::ProgramChangeStatus) {
        std::lock_guard lock(m_queueMutex);
        playQueued();
        result = play(parsed.type(), parsed.channel(), parsed.data1, parsed.data2);
    } else {
        queue(parsed.type(), parsed.channel(), parsed.data1, parsed.data2);
    }
    // After the message, so that a paused output wakes to a synth that
    // already has the new note.
    if (m_connection)
        m_connection->wake();
    return result;
}

MidiResult BuiltInSynth::play(int type, int channel, int data1, int data2)
{
    fluid_synth_t *synth = m_synth.get();
    int result = FLUID_OK;
    switch (type) {
    case AllSoundsOff:
        fluid_synth_all_sounds_off(synth, AllChannels);
        break;
    case midi::NoteOnStatus:
        if (data2 > 0) {
            result = fluid_synth_noteon(synth, channel, data1, data2);
            break;
        }
        [[fallthrough]];
    case midi::NoteOffStatus:
        // FluidSynth fails a note-off for a key that does not sound; for a
        // MIDI device that is no error.
        fluid_synth_noteoff(synth, channel, data1);
        break;
    case midi::PolyPressureStatus:
        result = fluid_synth_key_pressure(synth, channel, data1, data2);
        break;
    case midi::ControlChangeStatus:
        result = fluid_synth_cc(synth, channel, data1, data2);
        break;
    case midi::ProgramChangeStatus:
        // The program's samples are read now: from a file written over since
        // start-up they would be another file's bytes. The channel keeps the
        // program it has.
        if (!m_soundFont->isIntact())
            return MidiResult::NoSoundFont;
        result = fluid_synth_program_change(synth, channel, data1);
        break;
    case midi::ChannelPressureStatus:
        result = fluid_synth_channel_pressure(synth, channel, data1);
        break;
    case midi::PitchBendStatus:
        result = fluid_synth_pitch_bend(synth, channel, data1 | (data2 << midi::DataBits));
        break;
    default:
        // System messages mean nothing to the synthesizer.
        break;
    }
    return result == FLUID_FAILED ? MidiResult::SendFailed : MidiResult::Ok;
}

void BuiltInSynth::queue(int type, int channel, int data1, int data2)
{
    std::lock_guard lock(m_queueMutex);
    m_queue.push_back({type, channel, data1, data2});
    m_queued = true;
}

// Under the queue's lock.
void BuiltInSynth::playQueued()
{
    // FluidSynth refuses none of these for a valid message.
    for (const Message &message : m_queue)
        play(message.type, message.channel, message.data1, message.data2);
    m_queue.clear();
    m_queued = false;
}

void BuiltInSynth::render(float *interleavedStereo, int frames)
{
    // When the caller is queueing right now, its message waits one block.
    if (std::unique_lock lock(m_queueMutex, std::try_to_lock); lock.owns_lock())
        playQueued();
    fluid_synth_write_float(m_synth.get(), frames, interleavedStereo, 0, 2, interleavedStereo, 1, 2);
}

bool BuiltInSynth::isSounding()
{
    return m_queued || fluid_synth_get_active_voice_count(m_synth.get()) > 0;
}

} // namespace tonaro
