#pragma once

#include "exercise/Catalogue.h"

namespace tonaro {

// The intervals from the unison to the octave. An entry's index is its size
// in semitones, and its one step is that size. The boxes of the fourth and
// the fifth read differently from the answer.
constexpr std::array<CatalogueEntry, 13> IntervalCatalogue{{
    {"Unison", "Unison", {0}},
    {"2nd minor", "2nd minor", {1}},
    {"2nd major", "2nd major", {2}},
    {"3rd minor", "3rd minor", {3}},
    {"3rd major", "3rd major", {4}},
    {"4th perfect", "Perfect 4th", {5}},
    {"5th diminished", "5th diminished", {6}},
    {"5th perfect", "Perfect 5th", {7}},
    {"6th minor", "6th minor", {8}},
    {"6th major", "6th major", {9}},
    {"7th minor", "7th minor", {10}},
    {"7th major", "7th major", {11}},
    {"Octave", "Octave", {12}},
}};

constexpr std::size_t MainIntervals = 2;
constexpr std::array<CataloguePreset, 3> IntervalPresets{{
    {"All", "All", entryRange(0, 12), CataloguePreset::Action::Tick},
    {"None", "None", entryRange(0, 12), CataloguePreset::Action::Untick},
    {"mainintervals", "Main intervals", entries({0, 2, 4, 5, 7, 9, 11, 12}), CataloguePreset::Action::SetExactly},
}};

} // namespace tonaro
