#include "optionsform.h"

#include "InstrumentNames.h"
#include "Midi_interface.h"
#include "MidiMessages.h"
#include "shell/Twips.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <algorithm>
#include <array>

namespace tonaro {

namespace {


constexpr int ClientWidth = 4545;
constexpr int ClientHeight = 3450;
// Kept between the controls and the right and bottom edges when a larger
// font makes the dialog grow beyond its designed size.
constexpr int EdgeGap = 6;

constexpr int VolumePageStep = 5;
constexpr int VolumeTickInterval = 10;
constexpr int DesignVolume = 100;

// Where each control sits, in twips. A height of 0 leaves the widget its own
// height (the combo boxes).
struct Placement {
    const char *name;
    int left;
    int top;
    int width;
    int height;
};

constexpr std::array placements{
    Placement{"Label4", 360, 240, 980, 260},
    Placement{"Combodevice", 1560, 240, 2890, 0},
    Placement{"Label1", 360, 840, 980, 260},
    Placement{"Combochannel", 1920, 840, 855, 0},
    Placement{"Label2", 360, 1560, 1220, 260},
    Placement{"volumeslider", 1920, 1440, 1215, 615},
    Placement{"volumesliderlabel", 3480, 1560, 615, 255},
    Placement{"Label3", 360, 2040, 855, 255},
    Placement{"comboinstr", 360, 2400, 3615, 0},
    Placement{"Command1", 1680, 2880, 1335, 375},
};

// The captions and the control each one names for keyboard and screen-reader users.
struct Caption {
    const char *name;
    const char *text;
    const char *buddy;
};

constexpr std::array captions{
    Caption{"Label4", QT_TRANSLATE_NOOP("optionsform", "MIDI Device"), "Combodevice"},
    Caption{"Label1", QT_TRANSLATE_NOOP("optionsform", "MIDI Channel"), "Combochannel"},
    Caption{"Label2", QT_TRANSLATE_NOOP("optionsform", "Volume (0-127)"), "volumeslider"},
    Caption{"Label3", QT_TRANSLATE_NOOP("optionsform", "Instrument"), "comboinstr"},
};

template<typename Widget>
Widget *makeControl(QWidget *parent, const char *name)
{
    auto *widget = new Widget(parent);
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

optionsform::optionsform(Midi_interface &midi, QWidget *parent)
    : QDialog(parent)
    , m_midi(midi)
{
    setObjectName(QStringLiteral("optionsform"));
    setWindowTitle(tr("Settings"));
    createControls();
    Form_Load();
    placeControls();
}

void optionsform::createControls()
{
    // Created top to bottom, which is also the order Tab walks.
    makeControl<QLabel>(this, "Label4");
    Combodevice = makeControl<QComboBox>(this, "Combodevice");
    makeControl<QLabel>(this, "Label1");
    Combochannel = makeControl<QComboBox>(this, "Combochannel");
    makeControl<QLabel>(this, "Label2");
    volumeslider = makeControl<QSlider>(this, "volumeslider");
    volumesliderlabel = makeControl<QLabel>(this, "volumesliderlabel");
    makeControl<QLabel>(this, "Label3");
    comboinstr = makeControl<QComboBox>(this, "comboinstr");
    Command1 = makeControl<QPushButton>(this, "Command1");

    for (const Caption &caption : captions) {
        auto *label = findChild<QLabel *>(QLatin1String(caption.name));
        label->setText(tr(caption.text));
        // Screen readers announce the control as labelled by its caption.
        label->setBuddy(findChild<QWidget *>(QLatin1String(caption.buddy)));
    }

    for (int channel = 1; channel <= midi::ChannelCount; ++channel)
        Combochannel->addItem(QString::number(channel));
    for (int program = 0; program < InstrumentCount; ++program)
        comboinstr->addItem(instrumentItem(program));

    volumeslider->setOrientation(Qt::Horizontal);
    volumeslider->setRange(0, midi::MaxDataByte);
    volumeslider->setSingleStep(1);
    volumeslider->setPageStep(VolumePageStep);
    volumeslider->setTickInterval(VolumeTickInterval);
    volumeslider->setTickPosition(QSlider::TicksBelow);
    volumesliderlabel->setNum(DesignVolume);
    // The label follows the slider while it is dragged, not only when let go.
    connect(volumeslider, &QSlider::valueChanged, this, &optionsform::volumeslider_Change);

    Command1->setText(tr("OK"));
    // Not the default button: the style draws a default button just as it
    // draws a focused one, so Tab onto OK would show no focus. Enter still
    // closes the dialog from any control (keyPressEvent).
    Command1->setAutoDefault(false);
    connect(Command1, &QPushButton::clicked, this, &optionsform::Command1_Click);

    const std::array<QWidget *, 5> tabOrder{Combodevice, Combochannel, volumeslider, comboinstr, Command1};
    for (std::size_t i = 1; i < tabOrder.size(); ++i)
        setTabOrder(tabOrder[i - 1], tabOrder[i]);
}

void optionsform::placeControls()
{
    for (const Placement &place : placements) {
        auto *widget = findChild<QWidget *>(QLatin1String(place.name));
        const QSize hint = widget->sizeHint();
        int width = twipsToPixels(place.width);
        int height = place.height > 0 ? twipsToPixels(place.height) : hint.height();
        // Captions get at least the room their text needs in the font in
        // use, so that no word is cut off whatever the desktop's font is.
        if (qobject_cast<QLabel *>(widget) || qobject_cast<QPushButton *>(widget)) {
            width = std::max(width, hint.width());
            height = std::max(height, hint.height());
        }
        int top = twipsToPixels(place.top);
        // The slider keeps its own height in the middle of its box, so that
        // the tick marks stay next to the groove.
        if (qobject_cast<QSlider *>(widget)) {
            top += std::max(0, height - hint.height()) / 2;
            height = hint.height();
        }
        widget->setGeometry(twipsToPixels(place.left), top, width, height);
    }
    // A caption wider than its designed room, in a large font or a wide
    // style, pushes its control and whatever stands right of it on that line
    // further right instead of running under it.
    for (const Caption &caption : captions) {
        const auto *label = findChild<QLabel *>(QLatin1String(caption.name));
        const QRect control = label->buddy()->geometry();
        const int push = label->geometry().right() + EdgeGap - control.left();
        const bool sameLine = label->y() <= control.bottom() && control.top() <= label->geometry().bottom();
        if (!sameLine || push <= 0)
            continue;
        for (QWidget *widget : findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
            const QRect place = widget->geometry();
            if (widget != label && place.left() >= control.left() && place.top() <= control.bottom()
                && control.top() <= place.bottom())
                widget->move(place.left() + push, place.top());
        }
    }
    // A caption on the same line as its control sits on the control's middle.
    for (const Caption &caption : captions) {
        auto *label = findChild<QLabel *>(QLatin1String(caption.name));
        const QWidget *control = label->buddy();
        if (label->y() == control->y())
            label->move(label->x(), control->geometry().center().y() - label->height() / 2);
    }
    const QRect used = childrenRect();
    setFixedSize(std::max(twipsToPixels(ClientWidth), used.right() + 1 + EdgeGap),
                 std::max(twipsToPixels(ClientHeight), used.bottom() + 1 + EdgeGap));
}

void optionsform::GetOutDevs()
{
    // A refill keeps the chosen position rather than falling back to the
    // first port, which adding to an empty list would do.
    const int chosen = Combodevice->currentIndex();
    Combodevice->clear();
    MidiPlatform &platform = m_midi.platform();
    const int count = platform.outputDeviceCount();
    for (int deviceId = 0; deviceId < count; ++deviceId) {
        // Port names come from other programs and hardware: shown as plain
        // list text only, cleaned again in case a platform forgot to.
        Combodevice->addItem(sanitizedDeviceName(platform.deviceName(deviceId)));
    }
    Combodevice->setCurrentIndex(chosen < count ? chosen : -1);
}

void optionsform::Form_Load()
{
    GetOutDevs();
    // A device id that is no list position (a port gone since, or the
    // mapper's -1) shows no selection and stays -1 unless the user picks one.
    const std::int32_t deviceId = m_midi.MidiDeviceId;
    Combodevice->setCurrentIndex(deviceId >= 0 && deviceId < Combodevice->count() ? int(deviceId) : -1);
    // Channel and instrument always keep a selection, so that closing can
    // only write a channel of 1-16 and a program of 0-127.
    Combochannel->setCurrentIndex(std::clamp(m_midi.MidiChannel - 1, 0, midi::ChannelCount - 1));
    volumeslider->setValue(m_midi.MidiVolume);
    volumeslider_Change(volumeslider->value());
    comboinstr->setCurrentIndex(std::clamp(int(m_midi.MidiInstrument), 0, InstrumentCount - 1));
    m_loaded = true;
}

void optionsform::Form_Unload()
{
    m_loaded = false;
    m_midi.MidiChannel = std::int16_t(Combochannel->currentIndex() + 1);
    m_midi.MidiVolume = std::int16_t(volumeslider->value());
    m_midi.MidiInstrument = std::int16_t(comboinstr->currentIndex());
    m_midi.MidiDeviceId = Combodevice->currentIndex();
    // Closing and reopening the port moves to the chosen device and silences
    // anything still ringing; the instrument goes out on the chosen channel.
    m_midi.restart();
}

void optionsform::done(int result)
{
    if (m_loaded)
        Form_Unload();
    QDialog::done(result);
}

void optionsform::showEvent(QShowEvent *event)
{
    if (!m_loaded)
        Form_Load();
    QDialog::showEvent(event);
}

void optionsform::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        Command1_Click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void optionsform::Command1_Click()
{
    accept();
}

void optionsform::volumeslider_Change(int value)
{
    volumesliderlabel->setNum(value);
}

} // namespace tonaro
