#pragma once

#include <QString>
#include <array>

namespace tonaro {

// The pitch-class names with which the chord, scale and harmony windows name
// a root: sharps only, and no blank before the sign (note recognition spaces
// its own names differently).
constexpr std::array<const char *, 12> RootNames{
    "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};

// The name of a note's pitch class; the octave is never shown.
inline QString rootName(int note)
{
    return QString::fromLatin1(RootNames[std::size_t(((note % 12) + 12) % 12)]);
}

} // namespace tonaro
