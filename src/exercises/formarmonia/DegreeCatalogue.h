#pragma once

#include "exercise/Catalogue.h"
#include "exercise/NoteRow.h"

namespace tonaro {

// The seven degrees of a key. Reveal writes the name in brackets after the
// chord; the triads come from the key, not from the table.
constexpr std::array<CatalogueEntry, 7> DegreeCatalogue{{
    {"I", "I", {}},
    {"II", "II", {}},
    {"III", "III", {}},
    {"IV", "IV", {}},
    {"V", "V", {}},
    {"VI", "VI", {}},
    {"VII", "VII", {}},
}};

enum class KeyMode { Major, Minor };

// The steps of a key over eleven notes, an octave and a fourth, so that the
// triad of every degree up to VII fits. The minor is the natural minor.
constexpr int KeyScaleNotes = 11;
constexpr std::array<std::array<int, KeyScaleNotes - 1>, 2> ModeSteps{{
    {2, 2, 1, 2, 2, 2, 1, 2, 2, 1},
    {2, 1, 2, 2, 1, 2, 2, 2, 1, 2},
}};

// What Reveal calls a triad, by the distance of its root above the tonic in
// the key selected at the time; an empty text where the key no longer fits
// the chord. The minor key's VI and VII read " mag".
constexpr std::array<std::array<const char *, 12>, 2> TriadQualities{{
    {" maj", "", " min", "", " min", " maj", "", " maj", "", " min", "", " dim"},
    {" min", "", " dim", " maj", "", " min", "", " min", " mag", "", " mag", ""},
}};

constexpr const char *triadQuality(KeyMode mode, int distance)
{
    if (distance < 0 || distance >= 12)
        return "";
    return TriadQualities[std::size_t(mode)][std::size_t(distance)];
}

// Root, third and fifth of a degree, stacked within the key, and with
// lowRoot the root an octave below as a fourth note.
constexpr NoteRow degreeTriad(int tonic, KeyMode mode, int degree, bool lowRoot)
{
    std::array<int, KeyScaleNotes> scale{tonic};
    for (std::size_t a = 1; a < scale.size(); ++a)
        scale[a] = scale[a - 1] + ModeSteps[std::size_t(mode)][a - 1];
    NoteRow row;
    for (int j = 0; j < 3; ++j)
        row.notes[std::size_t(j)] = scale[std::size_t(degree + 2 * j)];
    row.count = 3;
    if (lowRoot)
        row.notes[std::size_t(row.count++)] = row.notes[0] - 12;
    return row;
}

} // namespace tonaro
