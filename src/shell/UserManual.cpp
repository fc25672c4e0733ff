#include "UserManual.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace tonaro {

namespace {

const QString ManualInPrefix = QStringLiteral("share/doc/tonaro/manual.html");
const QString InstalledManual = QStringLiteral("/usr/") + ManualInPrefix;

} // namespace

QUrl userManualUrl()
{
    // The program lives in <prefix>/bin, or in <build>/src (the tests in
    // <build>/tests): one folder up is the prefix or the build folder.
    const QDir prefix(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
    const QFileInfo nextToProgram(prefix.filePath(ManualInPrefix));
    if (nextToProgram.isFile())
        return QUrl::fromLocalFile(nextToProgram.canonicalFilePath());
    return QUrl::fromLocalFile(InstalledManual);
}

} // namespace tonaro
