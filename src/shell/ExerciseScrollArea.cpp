#include "ExerciseScrollArea.h"

#include <QApplication>

namespace tonaro {

ExerciseScrollArea::ExerciseScrollArea(QWidget *exercise, QWidget *parent)
    : QScrollArea(parent)
{
    setObjectName(QStringLiteral("exercisescroller"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setWidget(exercise);
    setFocusPolicy(Qt::NoFocus);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { followFocus(now); });
}

void ExerciseScrollArea::followFocus(QWidget *now)
{
    if (now && widget() && widget()->isAncestorOf(now))
        ensureWidgetVisible(now, 8, 8);
}

} // namespace tonaro
