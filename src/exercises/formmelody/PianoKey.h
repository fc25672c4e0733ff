#pragma once

#include <QAbstractButton>

namespace tonaro {

// One key of the on-screen keyboard: a white key, or a shorter black key
// with its caption near the bottom edge. Focusable with Tab and pressed
// with Space like any button.
class PianoKey : public QAbstractButton
{
    Q_OBJECT

public:
    PianoKey(bool black, QWidget *parent = nullptr);

    bool isBlack() const { return m_black; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_black;
};

} // namespace tonaro
