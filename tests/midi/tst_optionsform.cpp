#include "TestServices.h"
#include "midi/optionsform.h"

#include <QComboBox>
#include <QSlider>

using namespace tonaro;
using test::child;

namespace {

const QStringList TwoPorts{"Built-in synthesizer", "USB Keys"};
// The restart closing makes when nothing was changed after start-up.
const QStringList PlainRestart{"Close", "Open 0", "Send B0 00 00", "Send B0 20 00", "Send C0 18 00"};

} // namespace

class tst_optionsform : public QObject
{
    Q_OBJECT

private slots:
    // Opening shows the shared settings and sends nothing. Each caption
    // names its list for a screen reader, and Tab goes top to bottom.
    void opensWithTheSharedSettings()
    {
        test::TestServices s;
        s.platform.setDeviceNames(TwoPorts);
        optionsform dialog(s.midi);
        QCOMPARE(dialog.windowTitle(), "Settings");
        QCOMPARE(child<QComboBox>(&dialog, "Combodevice")->currentText(), "Built-in synthesizer");
        QCOMPARE(child<QComboBox>(&dialog, "Combochannel")->count(), 16);
        QCOMPARE(child<QComboBox>(&dialog, "Combochannel")->currentText(), "1");
        // General MIDI program order, counted from 1; paired names end in a space.
        const auto *instruments = child<QComboBox>(&dialog, "comboinstr");
        QCOMPARE(instruments->currentText(), "25 Acoustic Guitar (nylon)");
        for (const auto &[position, text] : {std::pair(0, "1 Acoustic Grand Piano"), {37, "38 Slap Bass "}, {127, "128 Gunshot"}})
            QCOMPARE(instruments->itemText(position), QLatin1String(text));
        QVERIFY(s.calls().isEmpty());

        for (const auto &[caption, list] : {std::pair("Label4", "Combodevice"), {"Label1", "Combochannel"}, {"Label2", "volumeslider"}, {"Label3", "comboinstr"}})
            QCOMPARE(child<QLabel>(&dialog, QLatin1String(caption))->buddy(), child(&dialog, QLatin1String(list)));
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        for (const char *next : {"Combochannel", "volumeslider", "comboinstr", "Command1", "Combodevice"}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), QLatin1String(next));
        }
    }

    // Every way of closing applies what the dialog shows, once, with a
    // restart; a note played after it carries the new channel and velocity.
    // Shown again, the same dialog loads the settings afresh.
    void closingAppliesTheChoices()
    {
        struct Row {
            Qt::Key closing; // Enter or Escape; Key_unknown: the OK button; Key_Close: the close box
            int device, channel, volume, instrument; // list positions and slider value
            QStringList calls;
        };
        const std::array rows{
            Row{Qt::Key_unknown, 0, 0, 100, 24, PlainRestart + QStringList{"Send 90 3C 64"}},
            Row{Qt::Key_Return, 0, 9, 100, 24, {"Close", "Open 0", "Send B9 00 00", "Send B9 20 00", "Send C9 18 00", "Send 99 3C 64"}},
            Row{Qt::Key_Escape, 0, 0, 0, 24, PlainRestart + QStringList{"Send 90 3C 00"}},
            Row{Qt::Key_Close, 1, 15, 127, 127, {"Close", "Open 1", "Send BF 00 00", "Send BF 20 00", "Send CF 7F 00", "Send 9F 3C 7F"}},
        };
        for (const Row &row : rows) {
            test::TestServices s;
            s.platform.setDeviceNames(TwoPorts);
            optionsform dialog(s.midi);
            for (const int volumeShown : {100, row.volume}) {
                dialog.show();
                QCOMPARE(test::text(&dialog, "volumesliderlabel"), QString::number(volumeShown));
                child<QComboBox>(&dialog, "Combodevice")->setCurrentIndex(row.device);
                child<QComboBox>(&dialog, "Combochannel")->setCurrentIndex(row.channel);
                child<QSlider>(&dialog, "volumeslider")->setValue(row.volume);
                child<QComboBox>(&dialog, "comboinstr")->setCurrentIndex(row.instrument);
                if (row.closing == Qt::Key_unknown)
                    test::click(&dialog, "Command1");
                else if (row.closing == Qt::Key_Close)
                    dialog.close();
                else // keys reach the dialog through whichever list has the focus
                    QTest::keyClick(child<QComboBox>(&dialog, "comboinstr"), row.closing);
                QTRY_VERIFY(!dialog.isVisible());
                s.midi.NoteOn(s.midi.MidiChannel, 60, s.midi.MidiVolume);
                QCOMPARE(s.calls(), row.calls);
                s.clearRecords();
            }
        }
    }
};

QTEST_MAIN(tst_optionsform)
#include "tst_optionsform.moc"
