#include "TestServices.h"

using namespace tonaro;
using Call = RecordingMidiPlatform::Call;

// The port's own state; what the user sees of a failing call is in tst_faults.
class MidiInterfaceTest : public QObject
{
    Q_OBJECT

private slots:
    void togglePairsRestoreThePortState_data()
    {
        QTest::addColumn<bool>("startOpen");
        QTest::newRow("open port") << true;
        QTest::newRow("closed port") << false;
    }

    void togglePairsRestoreThePortState()
    {
        QFETCH(bool, startOpen);
        test::TestServices fx;
        if (!startOpen)
            fx.midi.ToggleMidiOut();
        fx.clearRecords();
        fx.midi.ToggleMidiOut();
        fx.midi.ToggleMidiOut();
        QCOMPARE(fx.midi.MidiPortOpen, startOpen);
        QCOMPARE(fx.platform.isOpen(), startOpen);
        const auto &records = fx.platform.records();
        QCOMPARE(records.size(), std::size_t(2));
        QCOMPARE(records[0].call, startOpen ? Call::Close : Call::Open);
        QCOMPARE(records[1].call, startOpen ? Call::Open : Call::Close);
        QVERIFY(fx.boxes.boxes().empty());
    }

    void failingCloseKeepsThePortOpen()
    {
        test::TestServices fx;
        fx.platform.failNext(Call::Close, toCode(MidiResult::Error));
        fx.midi.ToggleMidiOut();
        QVERIFY(fx.midi.MidiPortOpen);
        QCOMPARE(fx.boxes.boxes().size(), std::size_t(1));
        // The next toggle tries to close again, and now succeeds.
        fx.midi.ToggleMidiOut();
        QVERIFY(!fx.midi.MidiPortOpen);
        QVERIFY(!fx.platform.isOpen());
    }

    void closedPortRefusesEveryMessage()
    {
        test::TestServices fx;
        fx.midi.ToggleMidiOut();
        fx.clearRecords();
        fx.midi.SelectInstrument(1, 24, 0, 0);
        fx.midi.NoteOn(1, 60, 100);
        QCOMPARE(fx.boxes.texts(), QStringList(4, Midi_interface::RefusalText));
        QVERIFY(fx.platform.records().empty());

        // A restart on a closed port opens and closes it again: three more refusals.
        fx.clearRecords();
        fx.midi.restart();
        QVERIFY(!fx.midi.MidiPortOpen);
        QCOMPARE(fx.boxes.texts(), QStringList(3, Midi_interface::RefusalText));
    }

    void everyErrorTextFitsTheBox()
    {
        // The error box reads the text into a 128-character buffer: a longer
        // text would lose its end, usually the part that says what to do.
        RecordingMidiPlatform platform;
        for (int code = 0; code < 128; ++code) {
            const QString text = platform.errorText(code);
            QVERIFY2(!text.isEmpty() && text.size() <= 127, qPrintable(text));
        }
    }

    void dataAboveAByteIsNeverSent()
    {
        test::TestServices fx;
        fx.midi.NoteOn(1, 128, 100);
        fx.midi.NoteOn(1, 60, 200);
        fx.midi.NoteOn(1, -1, 100);
        QVERIFY(fx.platform.sent().empty());
        QCOMPARE(fx.boxes.boxes().size(), std::size_t(3));
        fx.midi.NoteOn(1, 127, 127);
        QCOMPARE(fx.platform.sent().size(), std::size_t(1));
    }
};

QTEST_MAIN(MidiInterfaceTest)
#include "tst_midi_interface.moc"
