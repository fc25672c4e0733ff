#include "SoundFontLocator.h"

#include <filesystem>
#include <fstream>

namespace tonaro {

std::vector<std::string> generalMidiSoundFontCandidates()
{
    return {
        "/usr/share/sounds/sf2/default-GM.sf2",
        "/usr/share/sounds/sf3/default-GM.sf3",
        "/usr/share/sounds/sf2/TimGM6mb.sf2",
        "/usr/share/sounds/sf2/FluidR3_GM.sf2",
        "/usr/share/sounds/sf3/FluidR3Mono_GM.sf3",
        "/usr/share/sounds/sf3/MuseScore_General.sf3",
        "/usr/share/soundfonts/default.sf2",
        "/usr/share/soundfonts/FluidR3_GM.sf2",
        "/usr/share/soundfonts/FluidR3_GM2-2.sf2",
        "/usr/share/sounds/sf2/FluidR3_GS.sf2",
    };
}

std::string findGeneralMidiSoundFont(const std::vector<std::string> &candidates)
{
    for (const std::string &path : candidates) {
        std::error_code error;
        // A dangling default-GM link (its package removed) is skipped too.
        if (std::filesystem::is_regular_file(path, error) && std::ifstream(path).good())
            return path;
    }
    return {};
}

} // namespace tonaro
