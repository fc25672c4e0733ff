#pragma once

namespace tonaro {

// The one wait with which the splash and every exercise time their notes.
// It runs on the steady clock, so a wait across midnight or a change of the
// system time still ends after its duration, never earlier than asked.
//
// With processEvents it runs a nested event loop that ends on a precise
// timer: the processor stays idle while the user listens, and a click made
// meanwhile runs its handler at once, nested inside the waiting handler.
// Without it the thread sleeps until the deadline; clicks made meanwhile are
// handled afterwards. 0 returns at once.
void WaitMs(int milliseconds, bool processEvents);

// Every wait is stretched by this factor (1 by default). Tests set 0 so that
// questions play at once, the soak test a small factor so that nesting still
// happens.
void setWaitScale(double scale);
double waitScale();

// Set once the program is closing: waits return at once and waiting
// handlers abandon the rest of their sequence.
void abandonWaits();
bool waitsAbandoned();
// For tests that close the main window and go on with other cases.
void resumeWaits();

} // namespace tonaro
