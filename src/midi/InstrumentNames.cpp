#include "InstrumentNames.h"

#include <array>
#include <string_view>

namespace tonaro {

namespace {

// In General MIDI program order. The five paired names (37/38, 39/40, 49/50,
// 51/52, 63/64) are the same text ending in a space; only the numbers in
// front tell the two programs of a pair apart.
constexpr std::array<std::string_view, InstrumentCount> InstrumentNames{
    "Acoustic Grand Piano", "Bright Acoustic Piano", "Electric Grand Piano", "Honky-tonk Piano",
    "Rhodes Piano", "Chorused Piano", "Harpsichord", "Clavinet",
    "Celesta", "Glockenspiel", "Music box", "Vibraphone",
    "Marimba", "Xylophone", "Tubular Bells", "Dulcimer",
    "Hammond Organ", "Percussive Organ", "Rock Organ", "Church Organ",
    "Reed Organ", "Accordion", "Harmonica", "Tango Accordian",
    "Acoustic Guitar (nylon)", "Acoustic Guitar (steel)", "Electric Guitar (jazz)", "Electric Guitar (clean)",
    "Electric Guitar (muted)", "Overdriven Guitar", "Distortion Guitar", "Guitar Harmonics",
    "Acoustic Bass", "Electric Bass (finger)", "Electric Bass (pick)", "Fretless Bass",
    "Slap Bass ", "Slap Bass ", "Synth Bass ", "Synth Bass ",
    "Violin", "Viola", "Cello", "Contrabass",
    "Tremolo Strings", "Pizzicato Strings", "Orchestral Harp", "Timpani",
    "String Ensemble ", "String Ensemble ", "Synth Strings ", "Synth Strings ",
    "Choir Aahs", "Voice Oohs", "Synth Voice", "Orchestra Hit",
    "Trumpet", "Trombone", "Tuba", "Muted Trumpet",
    "French Horn", "Brass Section", "Synth Brass ", "Synth Brass ",
    "Soprano Sax", "Alto Sax", "Tenor Sax", "Baritone Sax",
    "Oboe", "English Horn", "Bassoon", "Clarinet",
    "Piccolo", "Flute", "Recorder", "Pan Flute",
    "Bottle Blow", "Shakuhachi", "Whistle", "Ocarina",
    "Lead (square)", "Lead (sawtooth)", "Lead (caliope lead)", "Lead (chiff lead)",
    "Lead (charang)", "Lead (voice)", "Lead (fifths)", "Lead (brass + lead)",
    "Pad (new age)", "Pad (warm)", "Pad (polysynth)", "Pad (choir)",
    "Pad (bowed)", "Pad (metallic)", "Pad (halo)", "Pad (sweep)",
    "FX (rain)", "FX (soundtrack)", "FX (crystal)", "FX (atmosphere)",
    "FX (brightness)", "FX (goblins)", "FX (echoes)", "FX (sci-fi)",
    "Sitar", "Banjo", "Shamisen", "Koto",
    "Kalimba", "Bagpipe", "Fiddle", "Shanai",
    "Tinkle Bell", "Agogo", "Steel Drums", "Woodblock",
    "Taiko Drum", "Melodic Tom", "Synth Drum", "Reverse Cymbal",
    "Guitar Fret Noise", "Breath Noise", "Seashore", "Bird Tweet",
    "Telephone Ring", "Helicopter", "Applause", "Gunshot",
};

} // namespace

QString instrumentItem(int program)
{
    if (program < 0 || program >= InstrumentCount)
        return {};
    const std::string_view name = InstrumentNames[std::size_t(program)];
    return QString::number(program + 1) + QLatin1Char(' ') + QString::fromUtf8(name.data(), qsizetype(name.size()));
}

} // namespace tonaro
