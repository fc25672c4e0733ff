#include "AnswerMarks.h"

#include "PianoKey.h"

#include <QPainter>

namespace tonaro {

namespace {

// The same warm yellow as the answer label, strong enough on a black key.
const QColor LitKey(255, 200, 40, 170);
const QColor Number(20, 20, 20);

} // namespace

AnswerMarks::AnswerMarks(const std::array<PianoKey *, melody::PitchClassCount> &keys, QWidget *parent)
    : QWidget(parent)
    , m_keys(keys)
{
    setObjectName(QStringLiteral("answermarks"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
}

void AnswerMarks::show(std::span<const int> notes)
{
    clear();
    for (std::size_t i = 0; i < notes.size(); ++i) {
        QString &mark = m_marks[std::size_t(melody::pitchClassOf(notes[i]))];
        if (!mark.isEmpty())
            mark += QLatin1Char(' ');
        mark += QString::number(i + 1);
    }
    raise();
    update();
}

void AnswerMarks::clear()
{
    m_marks.fill(QString());
    update();
}

void AnswerMarks::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setBold(true);
    painter.setFont(font);
    // White keys first, so that a lit black key is drawn over its neighbours.
    for (const bool black : {false, true}) {
        for (std::size_t k = 0; k < m_keys.size(); ++k) {
            if (m_marks[k].isEmpty() || melody::isBlackKey(int(k)) != black)
                continue;
            const QRect key = m_keys[k]->geometry();
            painter.setPen(Qt::NoPen);
            painter.setBrush(LitKey);
            painter.drawRoundedRect(QRectF(key).adjusted(2, 2, -2, -2), 3, 3);
            // The numbers stand in the upper half, clear of a black key's caption.
            painter.setPen(Number);
            const QRect upper(key.left(), key.top() + 4, key.width(), key.height() / 2);
            painter.drawText(upper, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_marks[k]);
        }
    }
}

} // namespace tonaro
