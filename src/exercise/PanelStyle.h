#pragma once

#include "PanelTraits.h"

#include <QColor>

// What the panel looks like: shared by the code that builds it and the
// handlers that colour the verdict.
namespace tonaro::panelstyle {

inline constexpr SliderSettings AutoNewSlider{"sliderautonew", "sliderautonewlabel", 0, 3000, 100, 100, 250, 1250};

inline const QColor RightColour(0, 255, 0);
inline const QColor WrongColour(255, 0, 0);
inline const QColor AnswerBackground(255, 255, 192);
inline constexpr double VerdictPointSize = 12;
inline constexpr double PercentagePointSize = 19.5;

} // namespace tonaro::panelstyle
