#include "MidiInput.h"

#include <QMetaObject>

namespace tonaro {

MidiInput::MidiInput(QObject *parent)
    : QObject(parent)
{
}

void MidiInput::handOver(int note, Moment struck, const void *source)
{
    // A queued call: the note waits in the user-interface thread's queue
    // like a click does, and acts when and where a click would.
    QMetaObject::invokeMethod(
        this, [this, note, struck, source] { deliver(note, struck, source); }, Qt::QueuedConnection);
}

void MidiInput::deliver(int note, Moment struck, const void *source)
{
    if (note < 0 || note >= int(m_last.size()))
        return;
    LastStrike &last = m_last[std::size_t(note)];
    const auto since = struck > last.struck ? struck - last.struck : last.struck - struck;
    if (last.source && source != last.source && since < EchoWindow)
        return;
    last = {struck, source};
    emit notePlayed(note, struck);
}

} // namespace tonaro
