#include "PlaceholderExercise.h"

namespace tonaro {

namespace {
const PanelTraits placeholderTraits{.secondSlider = {"slidermultinotes", "slidermultinoteslabel", 0, 3000, 100, 100, 250, 1250}};
}

PlaceholderExercise::PlaceholderExercise(const Services &services, QWidget *parent)
    : ExercisePanel(services, placeholderTraits, parent)
{
}

} // namespace tonaro
