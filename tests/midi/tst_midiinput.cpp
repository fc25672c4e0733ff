// The MIDI input without a MIDI system: which messages are struck keys,
// which sources are listened to, and how a note reaches the user-interface
// thread from another one, inside and after the waits.

#include "PlayingMidiInput.h"
#include "exercise/WaitMs.h"
#include "midi/MidiInputPort.h"
#include "midi/MidiInputSources.h"

#include <QtTest>
#include <thread>

using namespace tonaro;
using namespace tonaro::test;
using namespace std::chrono_literals;

class MidiInputTest : public QObject
{
    Q_OBJECT

private slots:
    void onlyStruckKeysCount_data()
    {
        QTest::addColumn<QList<int>>("message");
        QTest::addColumn<bool>("struck");
        QTest::newRow("note-on channel 1") << QList<int>{0x90, 60, 100} << true;
        QTest::newRow("note-on channel 16") << QList<int>{0x9F, 21, 1} << true;
        QTest::newRow("note-on velocity 0 is a release") << QList<int>{0x90, 60, 0} << false;
        QTest::newRow("note-off") << QList<int>{0x80, 60, 64} << false;
        QTest::newRow("poly pressure") << QList<int>{0xA0, 60, 64} << false;
        QTest::newRow("control change") << QList<int>{0xB0, 64, 127} << false;
        QTest::newRow("program change") << QList<int>{0xC0, 5} << false;
        QTest::newRow("clock") << QList<int>{0xF8} << false;
        QTest::newRow("cut short") << QList<int>{0x90, 60} << false;
    }
    void onlyStruckKeysCount()
    {
        QFETCH(QList<int>, message);
        QFETCH(bool, struck);
        const std::vector<unsigned char> bytes(message.begin(), message.end());
        QCOMPARE(MidiInputPort::isStruckKey(bytes), struck);
    }

    void ownNotesNeverComeBack_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("alsaRead");
        QTest::addColumn<bool>("wanted");
        QTest::newRow("ALSA keyboard") << "USB Keys:USB Keys MIDI 1 24:0" << true << true;
        QTest::newRow("JACK keyboard") << "keys:out" << false << true;
        QTest::newRow("ALSA through port") << "Midi Through:Midi Through Port-0 14:0" << true << false;
        QTest::newRow("the program's output") << "Tonaro:Tonaro 128:0" << true << false;
        QTest::newRow("the program's JACK copy") << "Tonaro-01:in" << false << false;
        QTest::newRow("the port the program plays to") << "Synth:Synth in 20:0" << true << false;
        QTest::newRow("JACK mirror of ALSA") << "a2j:USB Keys [24] (capture): USB Keys MIDI 1" << true << false;
        QTest::newRow("JACK mirror without ALSA") << "a2j:USB Keys [24] (capture): USB Keys MIDI 1" << false << true;
        QTest::newRow("a name like the program's") << "Tonarola:out" << false << true;
    }
    void ownNotesNeverComeBack()
    {
        QFETCH(QString, source);
        QFETCH(bool, alsaRead);
        QFETCH(bool, wanted);
        const MidiInputSources sources{{"Synth:Synth in 20:0"}, alsaRead};
        QCOMPARE(sources.wanted(source.toStdString()), wanted);
    }

    // A note handed over from another thread acts at once inside a wait that
    // processes events, and only after one that processes none.
    void notesWaitForTheEventLoop_data()
    {
        QTest::addColumn<bool>("processEvents");
        QTest::addColumn<bool>("duringWait");
        QTest::newRow("wait with events") << true << true;
        QTest::newRow("wait without events") << false << false;
    }
    void notesWaitForTheEventLoop()
    {
        QFETCH(bool, processEvents);
        QFETCH(bool, duringWait);
        setWaitScale(1);
        PlayingMidiInput input;
        QList<int> notes;
        bool waiting = false;
        bool heardWhileWaiting = false;
        connect(&input, &MidiInput::notePlayed, this, [&](int note) {
            notes << note;
            heardWhileWaiting = waiting;
        });
        std::thread player([&input] {
            std::this_thread::sleep_for(50ms);
            input.handOver(62, PlayingMidiInput::now(), &input);
        });
        waiting = true;
        WaitMs(300, processEvents);
        waiting = false;
        player.join();
        QCOMPARE(notes.size(), duringWait ? 1 : 0);
        QCoreApplication::processEvents();
        QCOMPARE(notes, QList<int>{62});
        QCOMPARE(heardWhileWaiting, duringWait);
    }

    // One key heard through two inputs at once counts once; struck again,
    // or another key, counts again.
    void echoFromASecondInputIsDropped()
    {
        PlayingMidiInput input;
        QList<int> notes;
        connect(&input, &MidiInput::notePlayed, this, [&](int note) { notes << note; });
        const int first = 0, second = 0;
        const auto t = PlayingMidiInput::now();
        input.handOver(60, t, &first);
        input.handOver(60, t + 5ms, &second);
        input.handOver(64, t + 6ms, &second);
        input.handOver(60, t + 40ms, &second);
        input.handOver(60, t + 41ms, &first);
        input.handOver(60, t + 300ms, &first);
        QCoreApplication::processEvents();
        QCOMPARE(notes, (QList<int>{60, 64, 60, 60}));
    }
};

QTEST_GUILESS_MAIN(MidiInputTest)
#include "tst_midiinput.moc"
