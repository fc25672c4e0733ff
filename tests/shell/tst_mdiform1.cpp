#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "midi/MidiMessages.h"
#include "shell/MDIForm1.h"

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
        QCOMPARE(sent[0].message, midi::packShortMessage(0xB0, 0, 0));
        QCOMPARE(sent[1].message, midi::packShortMessage(0xB0, 32, 0));
        QCOMPARE(sent[2].message, midi::packShortMessage(0xC0, 24, 0));
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
        QCOMPARE(s.window.isVisible(), !yes);
        QCOMPARE(s.midi.MidiPortOpen, !yes);
        QCOMPARE(s.platform.isOpen(), !yes);
        QCOMPARE(waitsAbandoned(), yes);
        if (!yes) {
            QCOMPARE(s.window.exerciseWindow(), exercise);
            QVERIFY(s.platform.records().empty());
        }
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mdiform1.moc"
