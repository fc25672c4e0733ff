#pragma once

#include <string>
#include <vector>

namespace tonaro {

// Where the distributions put General MIDI SoundFonts, best first: Debian's
// default-GM alternative (which points at the best installed package's file),
// then the files of the known packages.
std::vector<std::string> generalMidiSoundFontCandidates();

// The first candidate that is a readable regular file; empty when none is.
std::string findGeneralMidiSoundFont(const std::vector<std::string> &candidates = generalMidiSoundFontCandidates());

} // namespace tonaro
