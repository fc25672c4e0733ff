#pragma once

#include <QDialog>

namespace tonaro {

// The about box: artwork, name, release, credits and the address of the
// user manual.
class formabout : public QDialog
{
    Q_OBJECT
public:
    explicit formabout(QWidget *parent = nullptr);
};

} // namespace tonaro
