#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MessageBoxes.h"
#include "shell/MDIForm1.h"

#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>

using namespace tonaro;

namespace {

constexpr std::array<const char *, 5> WindowNames{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};
constexpr std::array<int, 5> WidthsTwips{7275, 6585, 7065, 6705, 5655};

struct Shell : test::TestServices {
    MDIForm1 window{services};
    Shell() : TestServices(false) { window.MDIForm_Load(); }
    void press(int index)
    {
        test::click(test::child<QToolButton>(&window, QStringLiteral("botton1_%1").arg(index)));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QList<bool> pressed() const
    {
        QList<bool> states;
        for (int index = 0; index < 5; ++index)
            states << test::child<QToolButton>(&window, QStringLiteral("botton1_%1").arg(index))->isChecked();
        return states;
    }
};

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void startsWithMelodyAndTheDefaultSound()
    {
        Shell s;
        QVERIFY(s.window.isVisible());
        QCOMPARE(s.window.size(), QSize(7275 / 15, 10050 / 15));
        QCOMPARE(s.pressed(), (QList<bool>{true, false, false, false, false}));
        QCOMPARE(s.window.exerciseWindow()->objectName(), "formmelody");
        // Bank select 0, bank select 0, program change 24 on channel 1.
        QVERIFY(s.midi.MidiPortOpen);
        QCOMPARE(s.midi.MidiVolume, 100);
        const auto sent = s.platform.sent();
        QVERIFY(sent.size() >= 3);
        QCOMPARE(sent[0].message, 0x0000B0u);
        QCOMPARE(sent[1].message, 0x0020B0u);
        QCOMPARE(sent[2].message, 0x0018C0u);
        QVERIFY(s.boxes.boxes().empty());
    }

    void switchingLoadsAFreshWindowAtItsWidth_data()
    {
        QTest::addColumn<int>("index");
        for (int index = 0; index < 5; ++index)
            QTest::newRow(WindowNames[std::size_t(index)]) << index;
    }

    // The pressed button keeps its window; any other unloads it with its
    // question and score.
    void switchingLoadsAFreshWindowAtItsWidth()
    {
        QFETCH(int, index);
        Shell s;
        QPointer<ExercisePanel> melody = s.window.exerciseWindow();
        s.press(index);
        QCOMPARE(!melody, index != 0);
        QCOMPARE(s.window.CurrentExercise, index);
        QCOMPARE(s.window.exerciseWindow()->objectName(), QString::fromLatin1(WindowNames[std::size_t(index)]));
        QCOMPARE(s.window.size(), QSize(WidthsTwips[std::size_t(index)] / 15, 10050 / 15));
        QCOMPARE(s.pressed().indexOf(true), index);
        QCOMPARE(s.pressed().count(true), 1);
        QCOMPARE(s.window.findChildren<ExercisePanel *>().size(), 1);

        s.press(0);
        QCOMPARE(s.window.exerciseWindow()->objectName(), "formmelody");
        QCOMPARE(s.window.width(), 7275 / 15);
        QCOMPARE(s.window.findChildren<ExercisePanel *>().size(), 1);
    }

    void exitAsksFirst_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("No keeps everything") << false;
        QTest::newRow("Yes closes the port") << true;
    }

    void exitAsksFirst()
    {
        QFETCH(bool, yes);
        Shell s;
        ExercisePanel *exercise = s.window.exerciseWindow();
        s.clearRecords();
        s.boxes.scriptAnswers({yes});
        QCOMPARE(s.window.close(), yes);
        QCOMPARE(s.boxes.boxes().size(), std::size_t(1));
        QVERIFY(s.boxes.boxes().front().isQuestion);
        QCOMPARE(s.boxes.boxes().front().text, "Exit from Tonaro 1.2?");
        QCOMPARE(s.boxes.boxes().front().title, "Tonaro 1.2");
        QCOMPARE(s.window.isVisible(), !yes);
        QCOMPARE(s.midi.MidiPortOpen, !yes);
        QCOMPARE(s.platform.isOpen(), !yes);
        QCOMPARE(waitsAbandoned(), yes);
        if (!yes) {
            QCOMPARE(s.window.exerciseWindow(), exercise);
            QVERIFY(s.platform.records().empty());
        }
    }

    // The boxes the program shows for real: the message box titled
    // "tonaro12" with OK alone and no icon, the exit question with Yes as
    // its default and the exclamation icon.
    void realMessageBoxes()
    {
        QtMessageBoxes boxes;
        QStringList seen;
        const auto inspect = [&](QMessageBox::StandardButton press) {
            QTimer::singleShot(0, [&seen, press] {
                auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                QVERIFY(box);
                seen << QStringLiteral("%1|%2|%3|%4|%5").arg(box->windowTitle(), box->text()).arg(int(box->icon()))
                            .arg(int(box->standardButtons())).arg(box->defaultButton() ? int(box->standardButton(box->defaultButton())) : 0);
                box->button(press)->click();
            });
        };
        inspect(QMessageBox::Ok);
        boxes.message(nullptr, "You must open the MIDI device first");
        inspect(QMessageBox::No);
        QCOMPARE(boxes.question(nullptr, "Tonaro 1.2", "Exit from Tonaro 1.2?"), false);
        inspect(QMessageBox::Yes);
        QCOMPARE(boxes.question(nullptr, "Tonaro 1.2", "Exit from Tonaro 1.2?"), true);
        const QString ok = QString::number(QMessageBox::Ok), yesNo = QString::number(QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(seen, QStringList({"tonaro12|You must open the MIDI device first|0|" + ok + "|0",
                                    "Tonaro 1.2|Exit from Tonaro 1.2?|2|" + yesNo + "|" + QString::number(QMessageBox::Yes),
                                    "Tonaro 1.2|Exit from Tonaro 1.2?|2|" + yesNo + "|" + QString::number(QMessageBox::Yes)}));
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mdiform1.moc"
