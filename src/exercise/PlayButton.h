#pragma once

#include <QPushButton>

namespace tonaro {

// An answer (play) button of a catalogue: a ▶ drawn in the button's text
// colour, so that it stays clear on light and dark palettes alike, on a
// face no smaller than the 24 × 24 pixels a finger or a shaky hand needs.
class PlayButton : public QPushButton
{
    Q_OBJECT
public:
    static constexpr int MinimumSide = 24;

    explicit PlayButton(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tonaro
