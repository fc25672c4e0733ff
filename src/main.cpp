#include "exercise/RandomSource.h"
#include "midi/Midi_interface.h"
#include "midi/SystemMidiPlatform.h"
#include "shell/ApplicationIdentity.h"
#include "shell/MDIForm1.h"
#include "shell/MessageBoxes.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    tonaro::nameApplication();

    // The platform starts loading the synthesizer's sounds at once, while
    // the splash window shows.
    std::unique_ptr<tonaro::MidiPlatform> platform = tonaro::createSystemMidiPlatform();
    tonaro::QtMessageBoxes boxes;
    tonaro::ClockRandomSource random;
    tonaro::Midi_interface midi(*platform, boxes);

    tonaro::MDIForm1 mainWindow({midi, boxes, random});
    mainWindow.MDIForm_Load();
    return app.exec();
}
