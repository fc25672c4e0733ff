#pragma once

#include <QString>

namespace tonaro {

// The General MIDI programs as the settings dialog lists them. Position p of
// the list is program p, counted from 0; the item shows it counted from 1.
constexpr int InstrumentCount = 128;

// "<program + 1> <name>", e.g. "25 Acoustic Guitar (nylon)" for program 24;
// empty for a program outside 0-127.
QString instrumentItem(int program);

} // namespace tonaro
