#include "SoundFontLocator.h"

#include <filesystem>
#include <fstream>

namespace tonaro {

std::vector<std::string> generalMidiSoundFontCandidates(const std::string &folder)
{
    std::vector<std::string> candidates;
    for (const char *file : {
             "sounds/sf3/MuseScore_General.sf3",
             "sounds/sf3/MuseScore_General_Lite.sf3",
             "sounds/sf2/FluidR3_GM.sf2",
             "sounds/sf2/default-GM.sf2",
             "sounds/sf3/default-GM.sf3",
             "sounds/sf2/TimGM6mb.sf2",
             "sounds/sf3/FluidR3Mono_GM.sf3",
             "soundfonts/default.sf2",
             "soundfonts/FluidR3_GM.sf2",
             "soundfonts/FluidR3_GM2-2.sf2",
             "sounds/sf2/FluidR3_GS.sf2",
         })
        candidates.push_back(folder + "/" + file);
    return candidates;
}

std::vector<std::string> findGeneralMidiSoundFonts(const std::vector<std::string> &candidates)
{
    std::vector<std::string> found;
    for (const std::string &path : candidates) {
        std::error_code error;
        // A dangling default-GM link (its package removed) is skipped too.
        if (std::filesystem::is_regular_file(path, error) && std::ifstream(path).good())
            found.push_back(path);
    }
    return found;
}

std::string findGeneralMidiSoundFont(const std::vector<std::string> &candidates)
{
    const std::vector<std::string> found = findGeneralMidiSoundFonts(candidates);
    return found.empty() ? std::string() : found.front();
}

} // namespace tonaro
