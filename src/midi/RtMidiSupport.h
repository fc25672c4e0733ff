#pragma once

// What every RtMidi client of the program shares: quiet on a missing MIDI
// service, and errors kept as a flag instead of thrown.

#include <RtMidi.h>

#include <dlfcn.h>
#include <iostream>

namespace tonaro::rtmidi {

// The client name under which the program shows in the MIDI service.
constexpr const char *ClientName = "Tonaro";

// Keeps the lines that ALSA and RtMidi print on a missing sequencer off the
// terminal while a client is made: having no MIDI service is an ordinary
// state for this program, not news. ALSA's handler is reached through the
// symbol table because only RtMidi links ALSA.
class QuietMidiService
{
public:
    QuietMidiService()
        : m_setHandler(reinterpret_cast<SetAlsaErrorHandler>(dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler")))
        , m_cerr(std::cerr.rdbuf(nullptr))
    {
        if (m_setHandler)
            m_setHandler(&ignoreAlsaError);
    }
    ~QuietMidiService()
    {
        if (m_setHandler)
            m_setHandler(nullptr);
        std::cerr.rdbuf(m_cerr);
    }
    QuietMidiService(const QuietMidiService &) = delete;
    QuietMidiService &operator=(const QuietMidiService &) = delete;

private:
    using AlsaErrorHandler = void (*)(const char *file, int line, const char *function, int error, const char *format, ...);
    using SetAlsaErrorHandler = int (*)(AlsaErrorHandler handler);

    static void ignoreAlsaError(const char *, int, const char *, int, const char *, ...) {}

    SetAlsaErrorHandler m_setHandler;
    std::streambuf *m_cerr;
};

// The last error RtMidi reported for one client; a warning is no failure.
struct ErrorRecord {
    bool failed = false;

    static void callback(RtMidiError::Type type, const std::string &, void *self)
    {
        if (self && type != RtMidiError::WARNING && type != RtMidiError::DEBUG_WARNING)
            static_cast<ErrorRecord *>(self)->failed = true;
    }
};

} // namespace tonaro::rtmidi
