#include "ApplicationIdentity.h"

#include "MessageBoxes.h"

#include <QGuiApplication>

namespace tonaro {

void nameApplication()
{
    QGuiApplication::setApplicationName(MessageBoxes::ApplicationTitle);
    QGuiApplication::setDesktopFileName(QStringLiteral("tonaro"));
}

} // namespace tonaro
