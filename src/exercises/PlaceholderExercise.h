#pragma once

#include "exercise/ExercisePanel.h"

namespace tonaro {

// Stands in for an exercise window that is not there yet.
class PlaceholderExercise : public ExercisePanel
{
    Q_OBJECT
public:
    PlaceholderExercise(const Services &services, QWidget *parent = nullptr);
    void init() override { initPanel(); }
    void New_Click() override { beginNew(); }
    void Repeat_Click() override {}

protected:
    QString revealText() const override { return {}; }
};

} // namespace tonaro
