#pragma once

#include "ScriptedRandomSource.h"
#include "exercise/Services.h"
#include "midi/Midi_interface.h"
#include "RecordingMidiPlatform.h"
#include "RecordingMessageBoxes.h"
#include "shell/MDIForm1.h"
#include "shell/MessageBoxes.h"

#include <QCheckBox>
#include <QLabel>
#include <QPointer>
#include <QtTest>

namespace tonaro {
class ExercisePanel;
}

namespace tonaro::test {

// The doubles a test drives the real widgets with: the MIDI recorder, the
// message-box recorder and a scripted random source, wired into a port that
// has been set up as start-up does (device 0, channel 1, velocity 100,
// program 24, open). Waits take no time unless a test sets a scale.
struct TestServices {
    // openPort false leaves the port closed and unconfigured, as before start-up.
    explicit TestServices(bool openPort = true);
    ~TestServices();

    RecordingMidiPlatform platform;
    RecordingMessageBoxes boxes;
    ScriptedRandomSource random;
    Midi_interface midi{platform, boxes};
    Services services{midi, boxes, random};

    // The note numbers of the note-on messages sent since the last clear.
    QList<int> played() const;
    void clearRecords() { platform.clear(); boxes.clear(); }
    // The port's opens, closes and messages since the last clear: "Open 1",
    // "Close", "Send C9 18 00".
    QStringList calls() const;
};

// Finds a child by objectName and fails the test when it is missing.
template<typename T = QWidget>
T *child(const QObject *parent, const QString &name)
{
    T *found = parent->findChild<T *>(name);
    if (!found)
        qFatal("no child %s named %s", T::staticMetaObject.className(), qPrintable(name));
    return found;
}

// Clicks a button, check box or option button the way a user does.
void click(QWidget *widget);
inline void click(const QObject *parent, const QString &name) { click(child(parent, name)); }
inline QString text(const QObject *parent, const QString &label) { return child<QLabel>(parent, label)->text(); }
// The four score captions: questions, right answers, answers, percentage.
QStringList score(const QObject *window);

// The exercise windows' object names, in the order of the bar.
inline const QStringList ExerciseWindows{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};

// A new exercise window, by its object name.
ExercisePanel *makeExercise(const QString &objectName, const Services &services);

// One exercise window on the doubles, loaded and shown, Auto NEW as asked.
template<typename Window>
struct Loaded : TestServices {
    QPointer<Window> w;

    // An exercise window by its object name, Auto NEW off.
    explicit Loaded(const QString &name) : Loaded(false, [&name](const Services &s) { return makeExercise(name, s); }) {}
    template<typename Make>
    Loaded(bool autoNew, Make make) : w(make(services))
    {
        w->Form_Load();
        w->show();
        child<QCheckBox>(w, QStringLiteral("autonewcheck"))->setChecked(autoNew);
        clearRecords();
    }
    ~Loaded() { delete w; }
    template<typename T = QWidget>
    T *get(const QString &name) const { return child<T>(w, name); }
    void press(const QString &name) const { click(w, name); }
    QString text(const QString &label) const { return test::text(w, label); }
};

// The main window after start-up, active, showing exercise 0 (melody) to 4
// (harmony). The start-up opens the port.
struct Started : TestServices {
    MDIForm1 window{services};

    explicit Started(int exercise = 0);
    ExercisePanel *exercise() const { return window.exerciseWindow(); }
    QWidget *find(const QString &name) const { return child(&window, name); }
};

} // namespace tonaro::test
