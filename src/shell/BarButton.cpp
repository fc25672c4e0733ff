#include "BarButton.h"

#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QSvgRenderer>

namespace {

// The grey of the staff lines in the drawings.
const QString StaffColour = QStringLiteral("#5a6270");

} // namespace

namespace tonaro {

BarButton::BarButton(bool hoverHighlight, QWidget *parent)
    : QToolButton(parent)
    , m_hoverHighlight(hoverHighlight)
{
    setAutoRaise(false);
    // Repainted when the mouse comes and goes.
    setAttribute(Qt::WA_Hover, hoverHighlight);
}

void BarButton::setPicture(const QString &svgPath)
{
    QFile file(svgPath);
    if (file.open(QIODevice::ReadOnly))
        m_svg = file.readAll();
    // The drawing as it stands, for the size and for whatever asks the button
    // for its icon; painting uses the coloured one.
    setIcon(QIcon(svgPath));
    m_pictureKey.clear();
    update();
}

QPixmap BarButton::picture() const
{
    const QColor text = palette().color(QPalette::ButtonText);
    const bool dark = palette().color(QPalette::Button).lightness() < 128;
    const qreal ratio = devicePixelRatioF();
    const QString key = QStringLiteral("%1 %2 %3x%4").arg(text.name()).arg(ratio).arg(iconSize().width()).arg(iconSize().height());
    if (key == m_pictureKey)
        return m_picture;
    QString svg = QString::fromUtf8(m_svg);
    svg.replace(StaffColour, text.name(), Qt::CaseInsensitive);
    if (dark) {
        static const QRegularExpression colour(QStringLiteral("#[0-9a-fA-F]{6}\\b"));
        QString lightened;
        qsizetype done = 0;
        for (const QRegularExpressionMatch &match : colour.globalMatch(svg)) {
            lightened += svg.mid(done, match.capturedStart() - done) + QColor(match.captured()).lighter(180).name();
            done = match.capturedEnd();
        }
        svg = lightened + svg.mid(done);
    }
    QPixmap pixmap(iconSize() * ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(svg.toUtf8()).render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    m_picture = pixmap;
    m_pictureKey = key;
    return m_picture;
}

void BarButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    if (!m_svg.isEmpty())
        option.icon = QIcon(picture());
    const bool lit = m_hoverHighlight && underMouse() && isEnabled();
    // The style's own hover look, where it has one, is kept for the one
    // button with a highlight.
    if (!m_hoverHighlight)
        option.state &= ~QStyle::State_MouseOver;
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    if (lit) {
        QColor glow = palette().color(QPalette::Highlight);
        glow.setAlpha(60);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.setBrush(glow);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5), 3, 3);
    }
}

} // namespace tonaro
