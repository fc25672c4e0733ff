#include "ExerciseRegistry.h"

#include "formmelody/formmelody.h"
#include "formintervalli/formintervalli.h"
#include "Formchords/Formchords.h"
#include "Formscales/Formscales.h"
#include "formarmonia/formarmonia.h"

namespace tonaro {

namespace {

template<typename Window>
ExercisePanel *make(const Services &services, QWidget *parent)
{
    return new Window(services, parent);
}

} // namespace

const std::array<ExerciseEntry, 5> &exerciseEntries()
{
    static const std::array<ExerciseEntry, 5> entries{{
        {"Melody", ":/icons/melody.svg", 7275, make<formmelody>},
        {"Intervals", ":/icons/intervals.svg", 6585, make<formintervalli>},
        {"Chords", ":/icons/chords.svg", 7065, make<Formchords>},
        {"Scale", ":/icons/scale.svg", 6705, make<Formscales>},
        {"Armony", ":/icons/armony.svg", 5655, make<formarmonia>},
    }};
    return entries;
}

} // namespace tonaro
