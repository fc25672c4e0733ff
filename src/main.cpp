#include "exercise/RandomSource.h"
#include "midi/Midi_interface.h"
#include "midi/RtMidiInput.h"
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
    // Every MIDI keyboard answers, but never through the port the program
    // itself plays to.
    auto *system = dynamic_cast<tonaro::SystemMidiPlatform *>(platform.get());
    tonaro::RtMidiInput input([system] { return system ? system->openPortNames() : std::vector<std::string>(); });

    tonaro::MDIForm1 mainWindow({midi, boxes, random, &input});
    mainWindow.MDIForm_Load();
    return app.exec();
}
