#pragma once

#include <QString>

class QWidget;

namespace tonaro {

// The program's two kinds of message box, behind one seam so that tests
// record them and answer the exit question without blocking.
class MessageBoxes
{
public:
    static inline const QString ApplicationTitle = QStringLiteral("tonaro12");

    virtual ~MessageBoxes() = default;

    // OK only, no icon, titled with the application title; returns when closed.
    virtual void message(QWidget *parent, const QString &text) = 0;
    // Yes and No, exclamation icon, Yes the default. True for Yes.
    virtual bool question(QWidget *parent, const QString &title, const QString &text) = 0;
};

class QtMessageBoxes : public MessageBoxes
{
public:
    void message(QWidget *parent, const QString &text) override;
    bool question(QWidget *parent, const QString &title, const QString &text) override;
};

} // namespace tonaro
