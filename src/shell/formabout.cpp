#include "formabout.h"

#include "ArtworkLabel.h"

#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace tonaro {

namespace {

QLabel *arialLabel(const QString &text, double points, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(points);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

formabout::formabout(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("formabout"));
    setWindowTitle(tr("About Tonaro 1.2"));

    auto *frame = new QGroupBox(this);
    frame->setObjectName(QStringLiteral("Frame1"));
    frame->setFixedSize(5655 / 15, 4215 / 15);
    auto *layout = new QVBoxLayout(frame);
    layout->setSpacing(4);
    layout->addWidget(new ArtworkLabel(QSize(355, 118), frame), 0, Qt::AlignHCenter);
    layout->addWidget(arialLabel(tr("Tonaro ear trainer"), 14.25, frame));
    layout->addWidget(arialLabel(tr("Release 1.2 01   21/01/2006"), 8.25, frame));
    layout->addWidget(arialLabel(tr("Written by the Tonaro developers"), 8.25, frame));
    layout->addWidget(arialLabel(tr("Sound by FluidSynth and a General MIDI SoundFont"), 8.25, frame));

    // The hyperlink label: the desktop's browser opens the address.
    auto *link = arialLabel(QStringLiteral("<a href=\"%1\">%1</a>").arg(WebAddress), 8.25, frame);
    link->setObjectName(QStringLiteral("FreeLink1"));
    link->setTextFormat(Qt::RichText);
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    link->setOpenExternalLinks(true);
    link->setAccessibleName(tr("Web address %1").arg(WebAddress));
    layout->addWidget(link);
    layout->addStretch();

    auto *outer = new QVBoxLayout(this);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(frame);
}

} // namespace tonaro
