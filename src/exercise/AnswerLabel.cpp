#include "AnswerLabel.h"

#include <QPainter>
#include <QStyle>

namespace tonaro {

QString AnswerLabel::shownText() const
{
    QString shown = text();
    return shown.replace(QStringLiteral(" #"), QStringLiteral("\u00a0#"));
}

int AnswerLabel::flags() const
{
    return int(alignment()) | (wordWrap() ? Qt::TextWordWrap : 0);
}

int AnswerLabel::heightForWidth(int width) const
{
    const QMargins frame = contentsMargins();
    const QRect room(0, 0, width - frame.left() - frame.right() - 2 * margin(), QWIDGETSIZE_MAX);
    const int needed = fontMetrics().boundingRect(room, flags(), shownText()).height() + frame.top()
        + frame.bottom() + 2 * margin();
    return std::max(QLabel::heightForWidth(width), needed);
}

void AnswerLabel::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect room = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    style()->drawItemText(&painter, room, flags(), palette(), isEnabled(), shownText(), foregroundRole());
}

} // namespace tonaro
