#pragma once

#include <QDialog>

namespace tonaro {

// The about box: artwork, name, release, credits and the web address.
class formabout : public QDialog
{
    Q_OBJECT
public:
    static inline const QString WebAddress = QStringLiteral("https://tonaro.example.org/");

    explicit formabout(QWidget *parent = nullptr);
};

} // namespace tonaro
