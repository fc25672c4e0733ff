#pragma once

#include <string>
#include <vector>

namespace tonaro {

// The folder under which the distributions put their SoundFonts.
inline const std::string SystemSoundFontFolder = "/usr/share";

// Where the General MIDI SoundFonts of the distributions lie under folder,
// best sound first: MuseScore General (the full font, then the small one),
// FluidR3, Debian's default-GM alternatives (which point at the best
// installed package's file), TimGM6mb, then other distributions' places.
std::vector<std::string> generalMidiSoundFontCandidates(const std::string &folder = SystemSoundFontFolder);

// The candidates that are readable regular files, in their order.
std::vector<std::string> findGeneralMidiSoundFonts(const std::vector<std::string> &candidates = generalMidiSoundFontCandidates());

// The first of them; empty when there is none.
std::string findGeneralMidiSoundFont(const std::vector<std::string> &candidates = generalMidiSoundFontCandidates());

} // namespace tonaro
