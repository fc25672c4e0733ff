#include "TestServices.h"

#include "exercise/WaitMs.h"
#include "exercises/ExerciseRegistry.h"

#include <QRadioButton>

namespace tonaro::test {

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

QList<int> TestServices::played() const
{
    QList<int> notes;
    for (const auto &record : platform.notesOn())
        notes << record.data1();
    return notes;
}

QStringList TestServices::calls() const
{
    QStringList calls;
    for (const auto &r : platform.records()) {
        if (r.call == RecordingMidiPlatform::Call::Send)
            calls << QString::asprintf("Send %02X %02X %02X", r.status(), r.data1(), r.data2());
        else
            calls << (r.call == RecordingMidiPlatform::Call::Open ? QStringLiteral("Open %1").arg(r.deviceId) : QStringLiteral("Close"));
    }
    return calls;
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

Started::Started(int exercise) : TestServices(false)
{
    window.MDIForm_Load();
    window.botton1_Click(exercise);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        qFatal("the main window never became active");
}

ExercisePanel *makeExercise(const QString &objectName, const Services &services)
{
    return exerciseEntries()[std::size_t(ExerciseWindows.indexOf(objectName))].create(services, nullptr);
}

} // namespace tonaro::test
