#pragma once

#include "exercise/Services.h"

#include <array>

class QWidget;

namespace tonaro {

class ExercisePanel;

// The five exercises of the bar, in bar order: the button's caption and
// picture, the main window's width when it shows the exercise, and how its
// window is made.
struct ExerciseEntry {
    const char *caption;
    const char *icon;
    int mainWindowWidthTwips;
    ExercisePanel *(*create)(const Services &services, QWidget *parent);
};

const std::array<ExerciseEntry, 5> &exerciseEntries();

} // namespace tonaro
