#pragma once

#include "exercise/Catalogue.h"

namespace tonaro {

// Eighteen scales and modes as steps from one note to the next; each ends on
// the octave of its root. The melodic minor is its ascending form, and the
// diminished scale starts with a whole tone.
constexpr std::array<CatalogueEntry, 18> ScaleCatalogue{{
    {"Major", "major", {2, 2, 1, 2, 2, 2, 1}},
    {"Minor", "minor", {2, 1, 2, 2, 1, 2, 2}},
    {"Armonic Minor", "armonic minor", {2, 1, 2, 2, 1, 3, 1}},
    {"Melodic Minor", "melodic minor", {2, 1, 2, 2, 2, 2, 1}},
    {"Major Pentatonic", "major pentatonic", {2, 2, 3, 2, 3}},
    {"Minor Pentatonic", "minor pentatonic", {3, 2, 2, 3, 2}},
    {"Diminished", "diminished", {2, 1, 2, 1, 2, 1, 2, 1}},
    {"Exatonal", "exatonal", {2, 2, 2, 2, 2, 2}},
    {"Cromatic", "cromatic", {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
    {"Major Neapolitan", "major neapolitan", {1, 2, 2, 2, 2, 2, 1}},
    {"Minor Neapolitan", "minor neapolitan", {1, 2, 2, 2, 1, 3, 1}},
    {"Enigmatic", "enigmatic", {1, 3, 2, 2, 2, 1, 1}},
    {"Ungarian", "ungarian", {2, 1, 3, 1, 1, 3, 1}},
    {"Doric", "doric", {2, 1, 2, 2, 2, 1, 2}},
    {"Frigian", "frigian", {1, 2, 2, 2, 1, 2, 2}},
    {"Lydian", "lydian", {2, 2, 2, 1, 2, 2, 1}},
    {"Mixolydian", "mixolydian", {2, 2, 1, 2, 2, 1, 2}},
    {"Locrian", "locrian", {1, 2, 2, 1, 2, 2, 2}},
}};

constexpr int FirstMode = 13;

constexpr std::size_t MainScales = 2;
constexpr std::array<CataloguePreset, 4> ScalePresets{{
    {"Allscales", "All  Scales", entryRange(0, FirstMode - 1), CataloguePreset::Action::Tick},
    {"Nonescales", "None", entryRange(0, 17), CataloguePreset::Action::Untick},
    {"Main", "Main Scales", entryRange(0, 6), CataloguePreset::Action::SetExactly},
    {"Allmodes", "All Modes", entryRange(FirstMode, 17), CataloguePreset::Action::Tick},
}};

} // namespace tonaro
