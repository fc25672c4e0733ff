#include "MessageBoxes.h"

#include <QMessageBox>

namespace tonaro {

void QtMessageBoxes::message(QWidget *parent, const QString &text)
{
    QMessageBox box(QMessageBox::NoIcon, ApplicationTitle, text, QMessageBox::Ok, parent);
    box.exec();
}

bool QtMessageBoxes::question(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}

} // namespace tonaro
