#pragma once

namespace tonaro {

// Names the program to the desktop: the application name "tonaro12", which
// is also the title of the message boxes, and the desktop entry. No display
// name is set, because the window system would append it to every title
// ("Settings — Tonaro 1.2") and each window carries its own title.
void nameApplication();

} // namespace tonaro
