#include "PlayedNotes.h"

#include <algorithm>
#include <cstdint>

namespace tonaro {

PlayedNotes::PlayedNotes(PlayedAnswer reading, std::function<void(int)> answer, QObject *parent)
    : QObject(parent)
    , m_reading(std::move(reading))
    , m_answer(std::move(answer))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PlayedNotes::complete);
}

void PlayedNotes::add(int note, PlayedAnswer::Moment struck)
{
    const played::Reading reading = m_reading.add(note, struck);
    schedule();
    deliver(reading);
}

void PlayedNotes::clear()
{
    m_reading.clear();
    m_timer.stop();
}

void PlayedNotes::schedule()
{
    const auto deadline = m_reading.deadline();
    if (!deadline) {
        m_timer.stop();
        return;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - PlayedAnswer::Clock::now());
    m_timer.start(int(std::max<std::int64_t>(0, left.count())));
}

void PlayedNotes::complete()
{
    const played::Reading reading = m_reading.complete(PlayedAnswer::Clock::now());
    // A timer that fired a little early tries again at the deadline.
    schedule();
    deliver(reading);
}

void PlayedNotes::deliver(const played::Reading &reading)
{
    // The answer may run a whole answer sequence, Auto NEW's wait and the
    // next New included, so it comes last.
    if (reading)
        m_answer(*reading);
}

} // namespace tonaro
