#include "TestServices.h"
#include "midi/optionsform.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>

using namespace tonaro;
using test::child;
using Call = RecordingMidiPlatform::Call;

namespace {

const QString Refusal = QStringLiteral("You must open the MIDI device first");
const QStringList TwoPorts{"Built-in synthesizer", "USB Keys"};
// What closing sends after start-up when nothing was changed.
const QStringList PlainRestart{"Close", "Open 0", "Send B0 00 00", "Send B0 20 00", "Send C0 18 00"};

enum class Closing { Ok, Enter, Escape, CloseBox };

void closeDialog(optionsform &dialog, Closing way)
{
    if (way == Closing::Ok)
        test::click(child<QPushButton>(&dialog, "Command1"));
    else if (way == Closing::CloseBox)
        dialog.close();
    else // keys reach the dialog through whichever list has the focus
        QTest::keyClick(child<QComboBox>(&dialog, "comboinstr"), way == Closing::Enter ? Qt::Key_Return : Qt::Key_Escape);
    QTRY_VERIFY(!dialog.isVisible());
}

// The port's opens, closes and messages ("Open 1", "Send C9 18 00"), with
// " failed" after a call the platform refused.
QStringList portCalls(const RecordingMidiPlatform &platform)
{
    const auto hex = [](int byte) { return QString::number(byte, 16).rightJustified(2, u'0').toUpper(); };
    QStringList calls;
    for (const auto &r : platform.records()) {
        if (r.call == Call::Open)
            calls << QStringLiteral("Open %1").arg(r.deviceId);
        else if (r.call == Call::Close)
            calls << QStringLiteral("Close");
        else if (r.call == Call::Send)
            calls << QStringLiteral("Send %1 %2 %3").arg(hex(r.status()), hex(r.data1()), hex(r.data2()));
        else
            continue;
        if (r.result != 0)
            calls.back() += QStringLiteral(" failed");
    }
    return calls;
}

} // namespace

class tst_optionsform : public QObject
{
    Q_OBJECT

private slots:
    void opensWithTheSharedSettings_data()
    {
        QTest::addColumn<int>("channel");
        QTest::addColumn<int>("volume");
        QTest::addColumn<int>("instrument");
        QTest::addColumn<QString>("channelShown");
        QTest::addColumn<QString>("instrumentShown");
        QTest::newRow("after start-up") << 1 << 100 << 24 << "1" << "25 Acoustic Guitar (nylon)";
        QTest::newRow("silent percussion") << 10 << 0 << 127 << "10" << "128 Gunshot";
        // Before start-up everything is zero; the dialog still offers a valid channel.
        QTest::newRow("all zero") << 0 << 0 << 0 << "1" << "1 Acoustic Grand Piano";
    }

    void opensWithTheSharedSettings()
    {
        QFETCH(int, channel);
        QFETCH(int, volume);
        QFETCH(int, instrument);
        test::TestServices s;
        s.platform.setDeviceNames(TwoPorts);
        s.midi.MidiChannel = std::int16_t(channel);
        s.midi.MidiVolume = std::int16_t(volume);
        s.midi.MidiInstrument = std::int16_t(instrument);
        optionsform dialog(s.midi);
        QCOMPARE(child<QComboBox>(&dialog, "Combodevice")->count(), 2);
        QCOMPARE(child<QComboBox>(&dialog, "Combodevice")->currentText(), "Built-in synthesizer");
        QCOMPARE(child<QComboBox>(&dialog, "Combochannel")->count(), 16);
        QTEST(child<QComboBox>(&dialog, "Combochannel")->currentText(), "channelShown");
        QCOMPARE(child<QSlider>(&dialog, "volumeslider")->value(), volume);
        QCOMPARE(child<QLabel>(&dialog, "volumesliderlabel")->text(), QString::number(volume));
        QTEST(child<QComboBox>(&dialog, "comboinstr")->currentText(), "instrumentShown");
        for (const auto *list : dialog.findChildren<QComboBox *>())
            QVERIFY2(!list->isEditable(), qPrintable(list->objectName()));
        QVERIFY(portCalls(s.platform).isEmpty());
    }

    // Every way of closing applies the choices once, with a restart.
    void closingAppliesTheChoices_data()
    {
        QTest::addColumn<Closing>("way");
        QTest::addColumn<int>("device");
        QTest::addColumn<int>("channel"); // list position
        QTest::addColumn<int>("volume");
        QTest::addColumn<int>("instrument");
        QTest::addColumn<QStringList>("calls"); // the restart, then note 60 with the new settings

        QTest::newRow("OK, nothing changed") << Closing::Ok << 0 << 0 << 100 << 24 << PlainRestart + QStringList{"Send 90 3C 64"};
        QTest::newRow("Enter, channel 10") << Closing::Enter << 0 << 9 << 100 << 24
            << QStringList{"Close", "Open 0", "Send B9 00 00", "Send B9 20 00", "Send C9 18 00", "Send 99 3C 64"};
        QTest::newRow("Escape, volume 0") << Closing::Escape << 0 << 0 << 0 << 24 << PlainRestart + QStringList{"Send 90 3C 00"};
        QTest::newRow("close box, 128 Gunshot") << Closing::CloseBox << 0 << 0 << 100 << 127
            << QStringList{"Close", "Open 0", "Send B0 00 00", "Send B0 20 00", "Send C0 7F 00", "Send 90 3C 64"};
        QTest::newRow("second device") << Closing::Ok << 1 << 0 << 100 << 24
            << QStringList{"Close", "Open 1", "Send B0 00 00", "Send B0 20 00", "Send C0 18 00", "Send 90 3C 64"};
        QTest::newRow("all at once") << Closing::Ok << 1 << 15 << 127 << 40
            << QStringList{"Close", "Open 1", "Send BF 00 00", "Send BF 20 00", "Send CF 28 00", "Send 9F 3C 7F"};
    }

    void closingAppliesTheChoices()
    {
        QFETCH(Closing, way);
        QFETCH(int, device);
        QFETCH(int, channel);
        QFETCH(int, volume);
        QFETCH(int, instrument);
        test::TestServices s;
        s.platform.setDeviceNames(TwoPorts);
        optionsform dialog(s.midi);
        dialog.show();
        child<QComboBox>(&dialog, "Combodevice")->setCurrentIndex(device);
        child<QComboBox>(&dialog, "Combochannel")->setCurrentIndex(channel);
        child<QSlider>(&dialog, "volumeslider")->setValue(volume);
        child<QComboBox>(&dialog, "comboinstr")->setCurrentIndex(instrument);
        closeDialog(dialog, way);
        s.midi.NoteOn(s.midi.MidiChannel, 60, s.midi.MidiVolume);
        QTEST(portCalls(s.platform), "calls");
        QCOMPARE(s.platform.openDevice(), device);
        QVERIFY(s.boxes.boxes().empty());

        // The same dialog shown again loads the settings afresh and applies them again.
        s.midi.MidiVolume = 50;
        s.clearRecords();
        dialog.show();
        QCOMPARE(child<QLabel>(&dialog, "volumesliderlabel")->text(), "50");
        closeDialog(dialog, way);
        QCOMPARE(portCalls(s.platform).size(), PlainRestart.size());
    }

    void failedOpenOnCloseLeavesThePortClosed_data()
    {
        QTest::addColumn<int>("device");
        QTest::addColumn<MidiResult>("result");
        QTest::newRow("device in use") << 0 << MidiResult::DeviceInUse;
        QTest::newRow("port unplugged while the dialog was open") << 1 << MidiResult::DeviceVanished;
    }

    void failedOpenOnCloseLeavesThePortClosed()
    {
        QFETCH(int, device);
        QFETCH(MidiResult, result);
        test::TestServices s;
        s.platform.setDeviceNames(TwoPorts);
        optionsform dialog(s.midi);
        dialog.show();
        child<QComboBox>(&dialog, "Combodevice")->setCurrentIndex(device);
        s.platform.setDeviceNames({TwoPorts.front()});
        s.platform.failNext(Call::Open, toCode(result));
        closeDialog(dialog, Closing::Ok);
        QCOMPARE(s.boxes.texts(), (QStringList{QStringLiteral("Operation:Open\r\nfault %1").arg(toCode(result)), Refusal, Refusal, Refusal}));
        QCOMPARE(portCalls(s.platform), (QStringList{"Close", QStringLiteral("Open %1 failed").arg(device)}));
        QVERIFY(!s.midi.MidiPortOpen && !s.platform.isOpen());
        // The list read afresh no longer holds the unplugged port.
        optionsform again(s.midi);
        QCOMPARE(child<QComboBox>(&again, "Combodevice")->count(), 1);
        QCOMPARE(child<QComboBox>(&again, "Combodevice")->currentIndex(), device == 0 ? 0 : -1);
    }

    void portNamesShowAsPlainText_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::newRow("long") << QString(40, u'W') << QString(31, u'W');
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("control characters") << "Synth\n\tRed\x07" << "Synth  Red";
        QTest::newRow("non-ASCII") << QStringLiteral("Klavier Ü ♯ 日本") << QStringLiteral("Klavier Ü ♯ 日本");
        QTest::newRow("markup") << "<b>Bold</b> &amp;" << "<b>Bold</b> &amp;";
    }

    void portNamesShowAsPlainText()
    {
        QFETCH(QString, name);
        test::TestServices s;
        s.platform.setDeviceNames({"Built-in synthesizer", name, "Last"});
        optionsform dialog(s.midi);
        const auto *devices = child<QComboBox>(&dialog, "Combodevice");
        // Every port keeps its place whatever its name: positions are device ids.
        QCOMPARE(devices->count(), 3);
        QTEST(devices->itemText(1), "shown");
        QCOMPARE(devices->itemText(2), "Last");
    }

    void instrumentListIsTheGeneralMidiSet()
    {
        test::TestServices s;
        optionsform dialog(s.midi);
        const auto *list = child<QComboBox>(&dialog, "comboinstr");
        QCOMPARE(list->count(), 128);
        QStringList names;
        QList<int> endingInSpace;
        for (int p = 0; p < list->count(); ++p) {
            const QString number = QString::number(p + 1) + u' ';
            QVERIFY2(list->itemText(p).startsWith(number), qPrintable(list->itemText(p)));
            names << list->itemText(p).mid(number.size());
            QVERIFY(!names.back().trimmed().isEmpty());
            if (names.back().endsWith(u' '))
                endingInSpace << p;
        }
        // Five pairs share a name, trailing space and all; no other name repeats.
        QCOMPARE(endingInSpace, (QList<int>{36, 37, 38, 39, 48, 49, 50, 51, 62, 63}));
        for (int i = 0; i < endingInSpace.size(); i += 2)
            QCOMPARE(names[endingInSpace[i]], names[endingInSpace[i + 1]]);
        QCOMPARE(names.removeDuplicates(), 5);
        QCOMPARE(list->itemText(23), "24 Tango Accordian");
        QCOMPARE(list->itemText(87), "88 Lead (brass + lead)");
    }
};

QTEST_MAIN(tst_optionsform)
#include "tst_optionsform.moc"
