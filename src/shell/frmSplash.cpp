#include "frmSplash.h"

#include "ArtworkLabel.h"
#include "Twips.h"

#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace tonaro {

namespace {

constexpr QSize ClientSize(twipsToPixels(5280), twipsToPixels(3420));
constexpr QSize PictureSize(353, 175);

QLabel *textLabel(const QString &text, double points, QWidget *parent, bool italic = false)
{
    auto *label = new QLabel(text, parent);
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(points);
    font.setItalic(italic);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

frmSplash::frmSplash(QWidget *parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("frmSplash"));
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, QColor(250, 250, 246));
    setPalette(palette);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->setSpacing(0);
    layout->addWidget(new ArtworkLabel(PictureSize, this), 0, Qt::AlignHCenter);

    auto *title = new QHBoxLayout;
    title->addStretch();
    title->addWidget(textLabel(tr("Tonaro"), 14.25, this));
    title->addWidget(textLabel(tr("1.2"), 14.25, this));
    title->addWidget(textLabel(tr("Ear trainer"), 14.25, this));
    title->addStretch();
    layout->addLayout(title);
    layout->addWidget(textLabel(tr("2006-2026 The Tonaro developers"), 8.25, this));
    layout->addWidget(textLabel(tr("\"Your faithful partner for your aural practice!\""), 8.25, this, true));

    // The designed size, or what the picture and the text need in a larger font.
    setFixedSize(ClientSize.expandedTo(layout->sizeHint()));
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

} // namespace tonaro
