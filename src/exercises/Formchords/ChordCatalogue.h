#pragma once

#include "exercise/Catalogue.h"

namespace tonaro {

// Twenty chord types as stacks of steps from the root, always upward: every
// chord is played in root position with no doubling. "11" has no 13th and
// "13" has no 11th (its last step goes from the 9th straight to the 13th).
constexpr std::array<CatalogueEntry, 20> ChordCatalogue{{
    {"maj", "maj", {4, 3}},
    {"min", "min", {3, 4}},
    {"7", "7", {4, 3, 3}},
    {"maj7", "maj7", {4, 3, 4}},
    {"min7", "min7", {3, 4, 3}},
    {"sus4", "sus4", {5, 2}},
    {"7sus4", "7sus4", {5, 2, 3}},
    {"6", "6", {4, 3, 2}},
    {"min6", "min6", {3, 4, 2}},
    {"9", "9", {4, 3, 3, 4}},
    {"min9", "min9", {3, 4, 3, 4}},
    {"dim", "dim", {3, 3}},
    {"aug", "aug", {4, 4}},
    {"maj9", "maj9", {4, 3, 4, 3}},
    {"7-5", "7-5", {4, 2, 4}},
    {"7+5", "7+5", {4, 4, 2}},
    {"7+9", "7+9", {4, 3, 3, 5}},
    {"7-9", "7-9", {4, 3, 3, 3}},
    {"11", "11", {4, 3, 3, 4, 3}},
    {"13", "13", {4, 3, 3, 4, 7}},
}};

constexpr std::size_t MainChords = 3;
constexpr std::array<CataloguePreset, 4> ChordPresets{{
    {"All", "All", entryRange(0, 19), CataloguePreset::Action::Tick},
    {"None", "None", entryRange(0, 19), CataloguePreset::Action::Untick},
    {"Triads", "Triads", entries({0, 1, 11, 12}), CataloguePreset::Action::SetExactly},
    {"mainbutton", "Main", entryRange(0, 6), CataloguePreset::Action::SetExactly},
}};

} // namespace tonaro
