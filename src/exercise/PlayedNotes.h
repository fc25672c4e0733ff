#pragma once

#include "PlayedAnswer.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace tonaro {

// Played notes on their way to a window's answer: gathered by the window's
// PlayedAnswer, and a chord completed on a timer once no further note comes.
// A complete answer goes to the given handler as the index of the button it
// stands for (WrongAnswer for one that matches none).
class PlayedNotes : public QObject
{
    Q_OBJECT

public:
    PlayedNotes(PlayedAnswer reading, std::function<void(int index)> answer, QObject *parent);

    void add(int note, PlayedAnswer::Moment struck);
    // Forgets an answer begun: a new question, a Reset, practice mode.
    void clear();

private:
    void schedule();
    void complete();
    void deliver(const played::Reading &reading);

    PlayedAnswer m_reading;
    std::function<void(int)> m_answer;
    QTimer m_timer;
};

} // namespace tonaro
