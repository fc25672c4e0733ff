#include "MelodyQuestion.h"

namespace tonaro {

bool MelodyQuestion::addClick(int key)
{
    ++nclicks;
    answers[std::size_t(nclicks - 1)] = std::int16_t(key);
    if (nclicks < nnotes)
        return false;
    nclicks = 0;
    return true;
}

bool MelodyQuestion::isRight() const
{
    for (int i = 0; i < nnotes; ++i) {
        if (answers[std::size_t(i)] != melody::pitchClassOf(notes[std::size_t(i)]))
            return false;
    }
    return true;
}

QString MelodyQuestion::revealText() const
{
    QString text;
    for (int i = 0; i < nnotes; ++i)
        text += QLatin1String(melody::NoteNames[std::size_t(melody::pitchClassOf(notes[std::size_t(i)]))]) + u' ';
    return text;
}

} // namespace tonaro
