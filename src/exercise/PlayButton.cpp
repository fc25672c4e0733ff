#include "PlayButton.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace tonaro {

PlayButton::PlayButton(QWidget *parent)
    : QPushButton(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PlayButton::sizeHint() const
{
    // The triangle grows with the font, the face never falls below the minimum.
    const int side = std::max(MinimumSide, fontMetrics().height() + 6);
    return {side, side};
}

void PlayButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    painter.drawControl(QStyle::CE_PushButtonBevel, option);
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = style()->subElementRect(QStyle::SE_PushButtonFocusRect, &option, this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }

    const QRectF face = rect();
    const double half = std::min(face.width(), face.height()) * 0.2;
    const QPointF centre = face.center() + QPointF(half * 0.15, 0);
    QPainterPath triangle;
    triangle.moveTo(centre + QPointF(-half * 0.8, -half));
    triangle.lineTo(centre + QPointF(half, 0));
    triangle.lineTo(centre + QPointF(-half * 0.8, half));
    triangle.closeSubpath();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    painter.drawPath(triangle);
}

} // namespace tonaro
