#include "PianoKey.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace tonaro {

namespace {

constexpr qreal CornerRadius = 4;
const QColor Outline(60, 60, 60);

} // namespace

PianoKey::PianoKey(bool black, QWidget *parent)
    : QAbstractButton(parent)
    , m_black(black)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
}

void PianoKey::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).adjusted(0.5, -CornerRadius, -0.5, -0.5);

    // Only the lower corners are round: the top of a key disappears under
    // the keyboard's lid.
    QPainterPath outline;
    outline.addRoundedRect(body, CornerRadius, CornerRadius);

    QLinearGradient face(0, 0, 0, height());
    if (m_black) {
        const QColor top = isDown() ? QColor(90, 90, 90) : QColor(55, 55, 55);
        face.setColorAt(0, top);
        face.setColorAt(0.85, isDown() ? QColor(60, 60, 60) : QColor(15, 15, 15));
        face.setColorAt(1, QColor(70, 70, 70));
    } else {
        face.setColorAt(0, isDown() ? QColor(205, 205, 205) : QColor(236, 236, 236));
        face.setColorAt(0.9, isDown() ? QColor(225, 225, 225) : QColor(255, 255, 255));
        face.setColorAt(1, QColor(210, 210, 210));
    }
    painter.setPen(QPen(Outline, 1));
    painter.setBrush(face);
    painter.drawPath(outline);

    if (underMouse() && isEnabled() && !isDown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_black ? QColor(255, 255, 255, 30) : QColor(0, 0, 0, 12));
        painter.drawPath(outline);
    }

    if (!text().isEmpty()) {
        QFont font = painter.font();
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 0.85);
        painter.setFont(font);
        painter.setPen(m_black ? Qt::white : Qt::black);
        const QRectF captionArea = QRectF(rect()).adjusted(1, 0, -1, -4);
        painter.drawText(captionArea, Qt::AlignHCenter | Qt::AlignBottom, text());
    }

    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(3, 3, -3, -3), 2, 2);
    }
}

} // namespace tonaro
