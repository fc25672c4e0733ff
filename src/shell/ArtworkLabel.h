#pragma once

#include <QWidget>

namespace tonaro {

// The program's artwork for the splash window and the about box: a staff
// with a rising line of notes beside the program's icon, drawn at any size.
class ArtworkLabel : public QWidget
{
    Q_OBJECT
public:
    ArtworkLabel(QSize size, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tonaro
