#include "WaitMs.h"

#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <thread>

namespace tonaro {

namespace {

using Clock = std::chrono::steady_clock;

double g_scale = 1.0;
bool g_abandoned = false;

// Qt's precise timers round to whole milliseconds and may fire up to a
// millisecond late; the loop is asked to end this much early and the rest is
// slept on the steady clock, which keeps the overshoot well under 1 ms.
constexpr auto TimerMargin = std::chrono::milliseconds(2);

} // namespace

void setWaitScale(double scale)
{
    g_scale = scale < 0 ? 0 : scale;
}

double waitScale()
{
    return g_scale;
}

void abandonWaits()
{
    g_abandoned = true;
}

bool waitsAbandoned()
{
    return g_abandoned;
}

void resumeWaits()
{
    g_abandoned = false;
}

void WaitMs(int milliseconds, bool processEvents)
{
    const auto start = Clock::now();
    if (milliseconds <= 0 || g_scale == 0 || g_abandoned)
        return;
    const auto duration = std::chrono::duration<double, std::milli>(milliseconds * g_scale);
    const auto deadline = start + std::chrono::duration_cast<Clock::duration>(duration);

    if (processEvents) {
        const auto loopEnd = deadline - TimerMargin;
        const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(loopEnd - Clock::now());
        if (remaining.count() > 0) {
            QEventLoop loop;
            QTimer timer;
            timer.setSingleShot(true);
            timer.setTimerType(Qt::PreciseTimer);
            QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
            timer.start(int(remaining.count()));
            // A nested handler may itself wait and return after our deadline,
            // or the program may quit: either way the loop simply ends.
            loop.exec();
        }
        if (g_abandoned)
            return;
    } else if (deadline - Clock::now() > TimerMargin) {
        // One long sleep can wake late by several milliseconds on a busy
        // machine; a short last one lands close to the deadline.
        std::this_thread::sleep_until(deadline - TimerMargin);
    }
    std::this_thread::sleep_until(deadline);
}

} // namespace tonaro
