#include "formabout.h"

#include "ArtworkLabel.h"
#include "LinkLabel.h"
#include "Twips.h"
#include "UserManual.h"

#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace tonaro {

namespace {

void styleAsArial(QLabel *label, double points)
{
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(points);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
}

QLabel *arialLabel(const QString &text, double points, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    styleAsArial(label, points);
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
    frame->setFixedSize(twipsToPixels(5655), twipsToPixels(4215));
    auto *layout = new QVBoxLayout(frame);
    layout->setSpacing(4);
    layout->addWidget(new ArtworkLabel(QSize(355, 135), frame), 0, Qt::AlignHCenter);
    layout->addWidget(arialLabel(tr("Tonaro ear trainer"), 14.25, frame));
    layout->addWidget(arialLabel(tr("Release 1.2 01   21/01/2006"), 8.25, frame));
    layout->addWidget(arialLabel(tr("Written by the Tonaro developers"), 8.25, frame));
    layout->addWidget(arialLabel(tr("Sound by FluidSynth and a General MIDI SoundFont"), 8.25, frame));

    // The hyperlink label: the desktop's browser opens the user manual.
    const QString address = userManualUrl().toString();
    auto *link = new LinkLabel(address, frame);
    styleAsArial(link, 8.25);
    link->setObjectName(QStringLiteral("FreeLink1"));
    link->setAccessibleName(tr("User manual %1").arg(address));
    layout->addWidget(link);
    layout->addStretch();

    auto *outer = new QVBoxLayout(this);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(frame);
}

} // namespace tonaro
