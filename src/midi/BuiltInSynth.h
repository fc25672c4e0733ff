#pragma once

#include "MidiPlatform.h"
#include "AudioConnection.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct _fluid_hashtable_t;
struct _fluid_synth_t;

namespace tonaro {

class SoundFontFile;

// The built-in synthesizer: FluidSynth with a General MIDI SoundFont, played
// through our own audio output (PipeWire, PulseAudio or ALSA alone,
// whichever the system has). The SoundFont is loaded once, on a
// thread of its own that the constructor starts, so that the load runs while
// the program shows its splash window; open() waits for it. The first of the
// system's SoundFonts that loads is used, and its file is held open for the
// run (SoundFontFile), as a program's samples are read when it is chosen.
// Closing the device silences every note but keeps the synthesizer and its
// connection to the sound system, so that the port restarts in well under a
// millisecond. When the sound server goes away, the device stays open and
// plays again as soon as a server is back; the notes sent meanwhile are
// dropped.
class BuiltInSynth : public AudioSource
{
public:
    enum class Output { System, None };

    struct Options {
        // The folder the SoundFonts are looked for under (the tests' own);
        // empty: the system's.
        std::string soundFontFolder;
        // None renders only when render() is called: the tests' way to hear
        // the very code the device plays through, without a sound device.
        Output output = Output::System;
        AudioOutput::Settings audio;
    };

    explicit BuiltInSynth(Options options);
    ~BuiltInSynth() override;
    BuiltInSynth(const BuiltInSynth &) = delete;
    BuiltInSynth &operator=(const BuiltInSynth &) = delete;

    // Waits for the SoundFont; the first open then connects to the sound
    // system and fails when nothing can play. Later opens find the
    // connection there, or being sought again in the background.
    MidiResult open();
    // Silences every sounding note at once.
    void close();
    // Plays one packed short message. A note-on with velocity 0 is a note-off.
    MidiResult send(std::uint32_t message);

    // AudioSource: the output calls these on its own thread; a test calls
    // them after a successful open().
    void render(float *interleavedStereo, int frames) override;
    bool isSounding() override;

    int sampleRate() const { return m_options.audio.sampleRate; }
    // How long the SoundFont took to load and which file it is (empty when
    // none loaded); both wait for the load.
    std::chrono::duration<double> loadTime();
    std::string soundFontPath();
    // The audio output while it plays, for the benchmark's figures.
    AudioOutput *output() { return m_connection ? m_connection->output() : nullptr; }
    AudioConnection *connection() { return m_connection.get(); }

private:
    struct SettingsDeleter {
        void operator()(_fluid_hashtable_t *settings) const;
    };
    struct SynthDeleter {
        void operator()(_fluid_synth_t *synth) const;
    };

    MidiResult load();
    MidiResult waitForLoad() { return m_loaded.get(); }
    // The load's result, or NoSoundFont once the file has been written over
    // in place: its samples can no longer be read as they were.
    MidiResult soundFontState();
    MidiResult play(int type, int channel, int data1, int data2);
    void queue(int type, int channel = 0, int data1 = 0, int data2 = 0);
    void playQueued();

    // Messages wait here for the thread that renders, which plays them
    // before its next block: that thread never waits for one of ordinary
    // priority to leave FluidSynth (a busy machine that preempted the user
    // interface inside a note-on kept the sound from being rendered for
    // tens of milliseconds). Program changes read samples, so they are
    // played on the caller's thread, after what is queued.
    struct Message {
        int type, channel, data1, data2;
    };
    std::mutex m_queueMutex;
    std::vector<Message> m_queue;
    std::atomic<bool> m_queued = false;

    const Options m_options;
    std::shared_ptr<SoundFontFile> m_soundFont;
    std::unique_ptr<_fluid_hashtable_t, SettingsDeleter> m_settings;
    std::unique_ptr<_fluid_synth_t, SynthDeleter> m_synth;
    std::chrono::duration<double> m_loadTime{0};
    std::shared_future<MidiResult> m_loaded;
    // Last, so that it goes first: no callback may render from a synth that
    // is being deleted.
    std::unique_ptr<AudioConnection> m_connection;
};

} // namespace tonaro
