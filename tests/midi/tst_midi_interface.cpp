#include "TestServices.h"

#include "midi/MidiMessages.h"

using namespace tonaro;
using Call = RecordingMidiPlatform::Call;

class MidiInterfaceTest : public QObject
{
    Q_OBJECT

private slots:
    void packsShortMessages_data();
    void packsShortMessages();
    void togglePairsRestoreThePortState_data();
    void togglePairsRestoreThePortState();
    void failingCloseKeepsThePortOpen();
    void closedPortRefusesEveryMessage();
    void failuresShowTheOperationAndTheServiceText_data();
    void failuresShowTheOperationAndTheServiceText();
    void everyErrorTextFitsTheBox();
    void dataAboveAByteIsNeverSent();
    void mapperIdReachesThePlatformUnchanged();
};

void MidiInterfaceTest::packsShortMessages_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<quint32>("noteOn");
    QTest::addColumn<quint32>("bankMsb");
    QTest::addColumn<quint32>("bankLsb");
    QTest::addColumn<quint32>("program");

    // status + 256 x data1 + 65536 x data2
    QTest::newRow("channel 1") << 1 << quint32(6569104) << quint32(0xB0) << quint32(0xB0 + 256 * 32)
                               << quint32(0xC0 + 256 * 24);
    QTest::newRow("channel 10") << 10 << quint32(0x99 + 256 * 60 + 65536 * 100) << quint32(0xB9)
                                << quint32(0xB9 + 256 * 32) << quint32(0xC9 + 256 * 24);
    QTest::newRow("channel 16") << 16 << quint32(0x9F + 256 * 60 + 65536 * 100) << quint32(0xBF)
                                << quint32(0xBF + 256 * 32) << quint32(0xCF + 256 * 24);
}

void MidiInterfaceTest::packsShortMessages()
{
    QFETCH(int, channel);
    QFETCH(quint32, noteOn);
    QFETCH(quint32, bankMsb);
    QFETCH(quint32, bankLsb);
    QFETCH(quint32, program);
    test::TestServices fx;
    fx.midi.NoteOn(std::int16_t(channel), 60, 100);
    fx.midi.SelectInstrument(std::int16_t(channel), 24, 0, 0);

    const auto sent = fx.platform.sent();
    QCOMPARE(sent.size(), std::size_t(4));
    QCOMPARE(sent[0].message, noteOn);
    QCOMPARE(sent[1].message, bankMsb);
    QCOMPARE(sent[2].message, bankLsb);
    QCOMPARE(sent[3].message, program);
    QVERIFY(fx.boxes.boxes().empty());
}

void MidiInterfaceTest::togglePairsRestoreThePortState_data()
{
    QTest::addColumn<bool>("startOpen");
    QTest::newRow("open port") << true;
    QTest::newRow("closed port") << false;
}

void MidiInterfaceTest::togglePairsRestoreThePortState()
{
    QFETCH(bool, startOpen);
    test::TestServices fx;
    if (!startOpen)
        fx.midi.ToggleMidiOut();
    fx.clearRecords();
    fx.midi.MidiDeviceId = 0;

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

void MidiInterfaceTest::failingCloseKeepsThePortOpen()
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

void MidiInterfaceTest::closedPortRefusesEveryMessage()
{
    test::TestServices fx;
    fx.midi.ToggleMidiOut();
    fx.clearRecords();

    fx.midi.SelectInstrument(1, 24, 0, 0);
    fx.midi.NoteOn(1, 60, 100);

    QCOMPARE(fx.boxes.count(Midi_interface::RefusalText), 4);
    QCOMPARE(fx.boxes.boxes().size(), std::size_t(4));
    QVERIFY(fx.platform.records().empty());

    // A restart on a closed port opens and closes it again: three more refusals.
    fx.clearRecords();
    fx.midi.restart();
    QVERIFY(!fx.midi.MidiPortOpen);
    QCOMPARE(fx.boxes.count(Midi_interface::RefusalText), 3);
}

void MidiInterfaceTest::failuresShowTheOperationAndTheServiceText_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<QString>("operation");
    QTest::newRow("open") << int(Call::Open) << QStringLiteral("Open");
    QTest::newRow("close") << int(Call::Close) << QStringLiteral("Close");
    QTest::newRow("send") << int(Call::Send) << QStringLiteral("ShortMsg");
}

void MidiInterfaceTest::failuresShowTheOperationAndTheServiceText()
{
    QFETCH(int, call);
    QFETCH(QString, operation);
    test::TestServices fx;
    const int code = toCode(MidiResult::DeviceVanished);
    fx.platform.failNext(Call(call), code);
    if (Call(call) == Call::Open) {
        fx.midi.ToggleMidiOut(); // close first, so that the next toggle opens
        fx.midi.ToggleMidiOut();
    } else if (Call(call) == Call::Close) {
        fx.midi.ToggleMidiOut();
    } else {
        fx.midi.NoteOn(1, 60, 100);
    }

    const QString expected = QStringLiteral("Operation:") + operation + QStringLiteral("\r\n") + fx.platform.errorText(code);
    QCOMPARE(fx.boxes.texts(), QStringList{expected});
    QCOMPARE(fx.boxes.boxes().front().title, MessageBoxes::ApplicationTitle);
    QVERIFY(fx.platform.errorText(code).contains(QStringLiteral("gone")));
}

void MidiInterfaceTest::everyErrorTextFitsTheBox()
{
    // The error box reads the text into a 128-character buffer: a longer
    // text would lose its end, usually the part that says what to do.
    RecordingMidiPlatform platform;
    for (int code = 0; code < 128; ++code) {
        const QString text = platform.errorText(code);
        QVERIFY2(!text.isEmpty() && text.size() <= 127, qPrintable(text));
    }
}

void MidiInterfaceTest::dataAboveAByteIsNeverSent()
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

void MidiInterfaceTest::mapperIdReachesThePlatformUnchanged()
{
    test::TestServices fx(false);
    fx.midi.MidiDeviceId = -1;
    fx.midi.ToggleMidiOut();
    QVERIFY(fx.midi.MidiPortOpen);
    QCOMPARE(fx.platform.records().back().deviceId, -1);
}

QTEST_MAIN(MidiInterfaceTest)
#include "tst_midi_interface.moc"
