#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "midi/MidiMessages.h"
#include "shell/MDIForm1.h"
#include "shell/formabout.h"

#include <QToolButton>

using namespace tonaro;
using Call = RecordingMidiPlatform::Call;

namespace {

constexpr std::array<const char *, 5> WindowNames{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};
constexpr std::array<int, 5> WidthsTwips{7275, 6585, 7065, 6705, 5655};

QToolButton *barButton(const MDIForm1 &window, int index)
{
    return test::child<QToolButton>(&window, QStringLiteral("botton1_%1").arg(index));
}

void settleDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void startsWithMelodyAndTheDefaultSound();
    void failingOpenAtStartUpStillStartsTheProgram();
    void pressedButtonStaysPressedAndKeepsItsWindow();
    void switchingLoadsAFreshWindowAtItsWidth_data();
    void switchingLoadsAFreshWindowAtItsWidth();
    void exitNoKeepsEverything();
    void exitYesClosesThePort();
    void aboutBoxLinksToTheWebAddress();
};

void MainWindowTest::startsWithMelodyAndTheDefaultSound()
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();

    QVERIFY(window.isVisible());
    QCOMPARE(window.size(), QSize(7275 / 15, 10050 / 15));
    QCOMPARE(window.windowTitle(), QStringLiteral("Tonaro 1.2"));
    for (int index = 0; index < 5; ++index)
        QCOMPARE(barButton(window, index)->isChecked(), index == 0);
    QCOMPARE(barButton(window, 2)->text(), QStringLiteral("Chords"));
    QVERIFY(window.exerciseWindow());
    QCOMPARE(window.exerciseWindow()->objectName(), QStringLiteral("formmelody"));

    // Bank select 0, bank select 0, program change 24 on channel 1.
    QVERIFY(fx.midi.MidiPortOpen);
    QCOMPARE(fx.midi.MidiChannel, 1);
    QCOMPARE(fx.midi.MidiVolume, 100);
    const auto sent = fx.platform.sent();
    QVERIFY(sent.size() >= 3);
    QCOMPARE(sent[0].message, midi::packShortMessage(0xB0, 0, 0));
    QCOMPARE(sent[1].message, midi::packShortMessage(0xB0, 32, 0));
    QCOMPARE(sent[2].message, midi::packShortMessage(0xC0, 24, 0));
    QVERIFY(fx.boxes.boxes().empty());
}

void MainWindowTest::failingOpenAtStartUpStillStartsTheProgram()
{
    test::TestServices fx(false);
    fx.platform.setFailure(Call::Open, toCode(MidiResult::NoAudioOutput));
    MDIForm1 window(fx.services);
    window.MDIForm_Load();

    const QStringList texts = fx.boxes.texts();
    QCOMPARE(texts.size(), 4);
    QVERIFY(texts[0].startsWith(QStringLiteral("Operation:Open\r\n")));
    QVERIFY(texts[0].contains(QStringLiteral("pulseaudio")));
    for (int i = 1; i < 4; ++i)
        QCOMPARE(texts[i], Midi_interface::RefusalText);
    QVERIFY(!fx.midi.MidiPortOpen);
    QVERIFY(window.exerciseWindow());

    // A later restart finds the port closed and leaves it closed.
    fx.platform.setFailure(Call::Open, 0);
    fx.clearRecords();
    fx.midi.restart();
    QVERIFY(!fx.midi.MidiPortOpen);
    QCOMPARE(fx.boxes.count(Midi_interface::RefusalText), 3);
}

void MainWindowTest::pressedButtonStaysPressedAndKeepsItsWindow()
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    ExercisePanel *before = window.exerciseWindow();

    test::click(barButton(window, 0));
    settleDeletions();

    QVERIFY(barButton(window, 0)->isChecked());
    QCOMPARE(window.exerciseWindow(), before);
    QCOMPARE(window.CurrentExercise, 0);
}

void MainWindowTest::switchingLoadsAFreshWindowAtItsWidth_data()
{
    QTest::addColumn<int>("index");
    for (int index = 1; index < 5; ++index)
        QTest::newRow(WindowNames[std::size_t(index)]) << index;
}

void MainWindowTest::switchingLoadsAFreshWindowAtItsWidth()
{
    QFETCH(int, index);
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    QPointer<ExercisePanel> melody = window.exerciseWindow();

    test::click(barButton(window, index));
    settleDeletions();

    QVERIFY(!melody); // unloaded with its question and score
    QCOMPARE(window.CurrentExercise, index);
    QCOMPARE(window.exerciseWindow()->objectName(), QString::fromLatin1(WindowNames[std::size_t(index)]));
    QCOMPARE(window.size(), QSize(WidthsTwips[std::size_t(index)] / 15, 10050 / 15));
    for (int other = 0; other < 5; ++other)
        QCOMPARE(barButton(window, other)->isChecked(), other == index);
    QCOMPARE(window.findChildren<ExercisePanel *>().size(), 1);

    // Back to Melody: a fresh note-recognition window at its own width.
    test::click(barButton(window, 0));
    settleDeletions();
    QCOMPARE(window.exerciseWindow()->objectName(), QStringLiteral("formmelody"));
    QCOMPARE(window.width(), 7275 / 15);
    QCOMPARE(window.findChildren<ExercisePanel *>().size(), 1);
}

void MainWindowTest::exitNoKeepsEverything()
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    ExercisePanel *exercise = window.exerciseWindow();
    fx.clearRecords();
    fx.boxes.scriptAnswers({false});

    QVERIFY(!window.close());

    QCOMPARE(fx.boxes.boxes().size(), std::size_t(1));
    const auto &box = fx.boxes.boxes().front();
    QVERIFY(box.isQuestion);
    QCOMPARE(box.title, QStringLiteral("Tonaro 1.2"));
    QCOMPARE(box.text, QStringLiteral("Exit from Tonaro 1.2?"));
    QVERIFY(window.isVisible());
    QCOMPARE(window.exerciseWindow(), exercise);
    QVERIFY(fx.midi.MidiPortOpen);
    QVERIFY(fx.platform.records().empty());
}

void MainWindowTest::exitYesClosesThePort()
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    fx.boxes.scriptAnswers({true});

    QVERIFY(window.close());

    QVERIFY(!fx.midi.MidiPortOpen);
    QVERIFY(!fx.platform.isOpen());
    QVERIFY(waitsAbandoned());
    resumeWaits();
}

void MainWindowTest::aboutBoxLinksToTheWebAddress()
{
    formabout about;
    QCOMPARE(about.windowTitle(), QStringLiteral("About Tonaro 1.2"));
    auto *link = test::child<QLabel>(&about, QStringLiteral("FreeLink1"));
    QVERIFY(link->openExternalLinks());
    QVERIFY(link->text().contains(formabout::WebAddress));
}

QTEST_MAIN(MainWindowTest)
#include "tst_mdiform1.moc"
