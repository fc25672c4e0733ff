#include "ArtworkLabel.h"

#include <QIcon>
#include <QLinearGradient>
#include <QPainter>

namespace tonaro {

ArtworkLabel::ArtworkLabel(QSize size, QWidget *parent)
    : QWidget(parent)
{
    setFixedSize(size);
    setAccessibleName(tr("Tonaro artwork"));
}

void ArtworkLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = rect().adjusted(0.5, 0.5, -0.5, -0.5);
    QLinearGradient sky(area.topLeft(), area.bottomLeft());
    sky.setColorAt(0, QColor(59, 111, 196));
    sky.setColorAt(1, QColor(31, 63, 122));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sky);
    painter.drawRoundedRect(area, 8, 8);

    const int iconSize = int(area.height()) - 16;
    QIcon(QStringLiteral(":/icons/tonaro.svg")).paint(&painter, QRect(8, 8, iconSize, iconSize));

    // A staff with a rising scale on it.
    const double left = iconSize + 24;
    const double right = area.width() - 12;
    const double gap = area.height() / 10;
    const double top = area.height() / 2 - 2 * gap;
    painter.setPen(QPen(QColor(255, 255, 255, 170), 1.2));
    for (int line = 0; line < 5; ++line)
        painter.drawLine(QPointF(left, top + line * gap), QPointF(right, top + line * gap));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 211, 77));
    const int notes = 8;
    for (int i = 0; i < notes; ++i) {
        const double x = left + 14 + i * (right - left - 28) / (notes - 1);
        const double y = top + 4.5 * gap - i * gap / 2;
        painter.save();
        painter.translate(x, y);
        painter.rotate(-20);
        painter.drawEllipse(QPointF(0, 0), gap * 0.62, gap * 0.45);
        painter.restore();
    }
}

} // namespace tonaro
