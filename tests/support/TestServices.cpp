#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "midi/MidiMessages.h"

#include <QRadioButton>

namespace tonaro::test {

int HookedPlatform::sendShortMessage(MidiHandle handle, std::uint32_t message)
{
    const int result = RecordingMidiPlatform::sendShortMessage(handle, message);
    if (onNoteOn && (message & midi::StatusTypeMask) == midi::NoteOnStatus)
        onNoteOn();
    return result;
}

TestServices::TestServices(bool openPort)
{
    setWaitScale(0);
    resumeWaits();
    if (!openPort)
        return;
    midi.MidiDeviceId = 0;
    midi.MidiInstrument = 24;
    midi.MidiVolume = 100;
    midi.MidiChannel = 1;
    midi.ToggleMidiOut();
    midi.SelectInstrument(midi.MidiChannel, midi.MidiInstrument, 0, 0);
    clearRecords();
}

TestServices::~TestServices()
{
    resumeWaits();
    setWaitScale(1);
}

std::vector<int> TestServices::notesPlayed() const
{
    std::vector<int> notes;
    for (const auto &record : platform.notesOn())
        notes.push_back(record.data1());
    return notes;
}

QList<int> TestServices::played() const
{
    const std::vector<int> notes = notesPlayed();
    return {notes.begin(), notes.end()};
}

void click(QWidget *widget)
{
    QVERIFY2(widget->isEnabled(), qPrintable(widget->objectName() + QStringLiteral(" is disabled")));
    // Check boxes and option buttons take clicks on their indicator and text,
    // which need not reach the middle of a stretched widget.
    const bool indicator = qobject_cast<QCheckBox *>(widget) || qobject_cast<QRadioButton *>(widget);
    const QPoint at = indicator ? QPoint(6, widget->height() / 2) : widget->rect().center();
    QTest::mouseClick(widget, Qt::LeftButton, {}, at);
}

QStringList score(const QObject *window)
{
    QStringList texts;
    for (const char *name : {"questlabel", "rightanslabel", "anslabel", "perclabel"})
        texts << text(window, QString::fromLatin1(name));
    return texts;
}

} // namespace tonaro::test
