#pragma once

#include <QUrl>

namespace tonaro {

// The user manual, one HTML page with its pictures, installed as
// <prefix>/share/doc/tonaro/manual.html beside <prefix>/bin/tonaro. A build
// tree has the same shape (the build copies the manual to share/doc/tonaro
// in the build folder), so the page is found next to the program either
// way. When it is missing the address of the installed page is given all
// the same, so that the about box still says where the manual belongs.
QUrl userManualUrl();

} // namespace tonaro
