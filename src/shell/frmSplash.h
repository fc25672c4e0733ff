#pragma once

#include <QWidget>

namespace tonaro {

// The window that shows while the program starts (and the built-in
// synthesizer loads its sounds behind it).
class frmSplash : public QWidget
{
    Q_OBJECT
public:
    explicit frmSplash(QWidget *parent = nullptr);
};

} // namespace tonaro
