#pragma once

#include <QScrollArea>

namespace tonaro {

// What the multiple-document area holds for an exercise window: the window
// itself, at least as large as its controls need, scrolled when the main
// window is smaller than that (a small screen, a large font). Whatever takes
// the focus inside it, by mouse, Tab, the arrow keys or an access key, is
// scrolled into view.
class ExerciseScrollArea : public QScrollArea
{
    Q_OBJECT
public:
    explicit ExerciseScrollArea(QWidget *exercise, QWidget *parent = nullptr);

private:
    void followFocus(QWidget *now);
};

} // namespace tonaro
