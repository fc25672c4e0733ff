#include "MidiPlatform.h"

#include <QCoreApplication>
#include <array>

namespace tonaro {

namespace {

// Every text fits the 128-character buffer that the error box reads it into.
struct ErrorText {
    MidiResult result;
    const char *text;
};

constexpr std::array errorTexts{
    ErrorText{MidiResult::Ok, "The operation completed successfully."},
    ErrorText{MidiResult::Error, "An unspecified error occurred in the MIDI service."},
    ErrorText{MidiResult::BadDeviceId, "The MIDI device id is out of range: there is no such output device."},
    ErrorText{MidiResult::DeviceInUse, "The MIDI device is already in use by another program."},
    ErrorText{MidiResult::InvalidHandle, "The MIDI device handle is not valid: the device is not open."},
    ErrorText{MidiResult::NoMemory, "There is not enough memory for the MIDI device."},
    ErrorText{MidiResult::NoAudioOutput,
              "The built-in synthesizer found no sound server and no sound card. "
              "Install pipewire-pulse or pulseaudio, or check the card."},
    ErrorText{MidiResult::NoSoundFont,
              "The built-in synthesizer found no usable General MIDI SoundFont. "
              "Install the package musescore-general-soundfont-small."},
    ErrorText{MidiResult::DeviceVanished,
              "The MIDI device has gone (unplugged, or its program closed). "
              "Choose another device under Options."},
    ErrorText{MidiResult::SendFailed, "The MIDI device did not accept the message."},
    ErrorText{MidiResult::DataOutOfRange, "A MIDI data byte was out of the range 0 to 127; the message was not sent."},
    ErrorText{MidiResult::NoMidiSystem,
              "The system has no MIDI service (no ALSA sequencer): "
              "only the built-in synthesizer can be used."},
};

} // namespace

QString MidiPlatform::errorText(int code)
{
    for (const ErrorText &entry : errorTexts) {
        if (toCode(entry.result) == code)
            return QCoreApplication::translate("MidiPlatform", entry.text);
    }
    return QCoreApplication::translate("MidiPlatform", "Unknown MIDI error %1.").arg(code);
}

QString sanitizedDeviceName(const QString &name)
{
    QString clean;
    clean.reserve(name.size());
    for (const QChar c : name)
        clean.append(c.isPrint() ? c : QChar(u' '));
    clean = clean.trimmed();
    if (clean.size() > MidiPlatform::MaxNameLength) {
        clean.truncate(MidiPlatform::MaxNameLength);
        // Never leave half of a surrogate pair at the end.
        if (clean.back().isHighSurrogate())
            clean.chop(1);
    }
    return clean;
}

} // namespace tonaro
