// The main window as the user meets it: where and how it opens, the bar,
// the real message boxes and the question on closing, Alt with a letter answering
// in note recognition while Alt alone reaches the menu, the about box's link
// to the installed manual; and every platform call failing at every point
// where the program talks to the device.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "shell/ArtworkLabel.h"
#include "shell/formabout.h"
#include "shell/frmSplash.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QMenuBar>
#include <QMessageBox>
#include <QProxyStyle>
#include <QScreen>
#include <QToolButton>
#include <functional>

using namespace tonaro;
using Call = RecordingMidiPlatform::Call;

namespace {

// Note recognition after start-up, Auto NEW off: it would ask again at once
// and empty the verdict.
struct Shell : test::Started {
    Shell() { test::child<QCheckBox>(exercise(), "autonewcheck")->setChecked(false); }
};

// Hands every modal window that opens while run() runs to handle, which
// closes it (at once by default), and says which windows those were.
QStringList modalsOpenedBy(const std::function<void()> &run, const std::function<void(QWidget *)> &handle = &QWidget::close)
{
    QStringList opened;
    QTimer watch;
    watch.setInterval(10);
    QObject::connect(&watch, &QTimer::timeout, [&opened, &handle] {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            opened << modal->objectName();
            handle(modal);
        }
    });
    watch.start();
    run();
    QTest::qWait(50);
    return opened;
}

// A desktop style that leaves the menu bar's Alt navigation off, as some do.
class NoAltNavigationStyle : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *returnData) const override
    {
        return hint == SH_MenuBar_AltKeyNavigation ? 0 : QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

enum class Phase { StartUp, Question, StopNoise };

// Note recognition through a phase, with call failing with code (0: no
// fault): its score and the boxes shown, then the notes of the next
// question once the fault has gone and a restart has brought the port back.
QStringList runPhase(Phase phase, Call call, int code)
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    if (phase == Phase::StartUp)
        fx.platform.setFailure(call, code);
    window.MDIForm_Load();
    ExercisePanel *melody = window.exerciseWindow();
    test::child<QComboBox>(melody, "nnotescombo")->setCurrentIndex(2);
    fx.platform.setFailure(call, code);
    if (phase != Phase::StartUp)
        test::click(melody, phase == Phase::StopNoise ? "stopnoise" : "New");
    QStringList outcome{test::score(melody).join(u' '), fx.boxes.texts().join(u'|')};
    fx.platform.setFailure(call, 0);
    if (!fx.midi.MidiPortOpen)
        fx.midi.ToggleMidiOut();
    fx.platform.clear();
    test::click(window.exerciseWindow(), "New");
    for (int note : fx.played())
        outcome << QString::number(note);
    return outcome;
}

} // namespace

// Receives what QDesktopServices would hand to the desktop's browser.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl &url) { urls << url; }
};

class tst_mainwindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new NoAltNavigationStyle); }

    // In the centre of the screen, titled, with the port open on the
    // start-up instrument: bank 0, program 24 (nylon guitar) on channel 1.
    void startsCentred()
    {
        Shell s;
        QCOMPARE(s.window.size(), QSize(7275 / 15, 10050 / 15));
        const QRect frame = s.window.frameGeometry(), available = s.window.screen()->availableGeometry();
        QVERIFY((frame.center() - available.center()).manhattanLength() <= 2);
        QCOMPARE(s.window.windowTitle(), "Tonaro 1.2");
        QCOMPARE(s.calls(), QStringList({"Open 0", "Send B0 00 00", "Send B0 20 00", "Send C0 18 00"}));
    }

    // The splash and about pictures at their sizes; the five bar buttons,
    // captioned, look raised at rest, and only Intervals lights up under
    // the mouse.
    void picturesAndBarButtons()
    {
        QCOMPARE(frmSplash().findChild<ArtworkLabel *>()->size(), QSize(353, 175));
        QCOMPARE(formabout().findChild<ArtworkLabel *>()->size(), QSize(355, 135));
        Shell s;
        const QStringList captions{"Melody", "Intervals", "Chords", "Scale", "Armony"};
        for (int index = 0; index < 5; ++index) {
            auto *button = test::child<QToolButton>(&s.window, QStringLiteral("botton1_%1").arg(index));
            QVERIFY(!button->autoRaise() && button->text() == captions[index]);
            const QImage rest = button->grab().toImage();
            button->setAttribute(Qt::WA_UnderMouse, true);
            const QImage hover = button->grab().toImage();
            button->setAttribute(Qt::WA_UnderMouse, false);
            QVERIFY2((rest != hover) == (index == 1), qPrintable(button->objectName()));
        }
    }

    // The boxes the program shows for real: a refused note's message titled
    // "tonaro12" with OK alone and no icon; closing asks with the exclamation
    // icon and Yes as the default, and No keeps the window open.
    void realMessageBoxes()
    {
        test::TestServices fx(false);
        QtMessageBoxes boxes;
        Midi_interface midi{fx.platform, boxes};
        MDIForm1 window({midi, boxes, fx.random});
        window.show();
        QStringList seen;
        QList<QMessageBox::StandardButton> presses{QMessageBox::Ok, QMessageBox::No, QMessageBox::Yes};
        modalsOpenedBy([&] {
            midi.NoteOn(1, 60, 100);
            QVERIFY(!window.close() && window.isVisible());
            QVERIFY(window.close());
        }, [&](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            seen << QStringLiteral("%1|%2|%3|%4|%5").arg(box->windowTitle(), box->text()).arg(int(box->icon()))
                        .arg(int(box->standardButtons())).arg(box->defaultButton() ? int(box->standardButton(box->defaultButton())) : 0);
            box->button(presses.takeFirst())->click();
        });
        // Ok 0x400, Yes 0x4000, No 0x10000; the Warning icon is 2.
        const QString exit = QStringLiteral("Tonaro 1.2|Exit from Tonaro 1.2?|2|%1|%2").arg(0x14000).arg(0x4000);
        QCOMPARE(seen, QStringList({QStringLiteral("tonaro12|You must open the MIDI device first|0|%1|0").arg(0x400), exit, exit}));
    }

    // Alt alone reaches the menu; in the about box Tab reaches the link and
    // Enter opens the installed manual, whose address the label shows. Alt
    // with a letter answers as the letter alone and opens nothing; O is no
    // answer letter.
    void altKeysAndMenus()
    {
        // Alt pressed alone enters the menu, whose entries open their dialogs.
        const struct { QList<Qt::Key> keys; QStringList opened; } menus[] = {
            {{Qt::Key_Return}, {"optionsform"}}, {{Qt::Key_Right, Qt::Key_Space}, {"formabout"}}};
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler("file", &catcher, "open");
        QString shown;
        const auto useLink = [&shown](QWidget *dialog) {
            if (auto *link = dialog->findChild<QLabel *>("FreeLink1")) {
                shown = link->text();
                link->setFocus();
                QTest::keyClick(link, Qt::Key_Tab);
                QTest::keyClick(link, Qt::Key_Return);
            }
            dialog->close();
        };
        for (const auto &row : menus) {
            Shell s;
            QTest::keyPress(&s.window, Qt::Key_Alt, Qt::AltModifier);
            QTest::keyRelease(&s.window, Qt::Key_Alt);
            QCOMPARE(QApplication::focusWidget(), s.window.menuBar());
            QCOMPARE(modalsOpenedBy([&] {
                for (Qt::Key key : row.keys)
                    QTest::keyClick(QApplication::focusWidget(), key);
            }, useLink), row.opened);
        }
        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(catcher.urls.size(), 1);
        const QString manual = catcher.urls.constFirst().toLocalFile();
        QVERIFY2(manual.endsWith("/share/doc/tonaro/manual.html") && QFileInfo(manual).isFile(), qPrintable(manual));
        QVERIFY2(shown.contains('>' + catcher.urls.constFirst().toString() + '<'), qPrintable(shown));
        // With a letter, Alt opens nothing and the letter answers.
        Shell asked;
        // Under the start presets (4th to 7th octave, C major) the octave is
        // drawn first, then the note: the 5th octave's A.
        asked.random.script({0.3, 0.8});
        test::click(asked.exercise(), "New");
        const QStringList opened = modalsOpenedBy([] {
            for (Qt::Key key : {Qt::Key_O, Qt::Key_A})
                QTest::keyClick(QApplication::focusWidget(), key, Qt::AltModifier);
        });
        QCOMPARE(opened + QStringList{test::text(asked.exercise(), "rightwronglabel")}, QStringList{"Right!"});
    }

    // Each fault shows its box, with the text the platform gives, and
    // leaves the score and the next question as a fault-free run leaves them.
    void everyFaultIsShownAndLosesNothing()
    {
        const QString mustOpen = "You must open the MIDI device first";
        for (const Phase phase : {Phase::StartUp, Phase::Question, Phase::StopNoise}) {
            for (const Call call : {Call::Open, Call::Close, Call::Send}) {
                const QString operation = call == Call::Open ? "Open" : call == Call::Close ? "Close" : "ShortMsg";
                const QByteArray name = QStringLiteral("phase %1, %2 fails").arg(int(phase)).arg(operation).toLatin1();
                const QStringList clean = runPhase(phase, call, 0);
                QStringList faulty = runPhase(phase, call, 7);
                const QString errorBox = "Operation:" + operation + "\r\nfault 7";
                const QStringList boxes = faulty.takeAt(1).split(u'|', Qt::SkipEmptyParts);
                QVERIFY2(boxes.count(errorBox) + boxes.count(mustOpen) == boxes.size(), name);
                // Every phase sends, start-up opens, and Stop noise! closes and opens.
                const bool made = call == Call::Send || phase == Phase::StopNoise || (call == Call::Open && phase == Phase::StartUp);
                QVERIFY2(!made || boxes.contains(errorBox), name);
                QVERIFY2(clean.at(1).isEmpty() && clean.size() > 3, name);
                QVERIFY2(faulty == QStringList(clean.mid(0, 1) + clean.mid(2)), name);
            }
        }
    }
};

QTEST_MAIN(tst_mainwindow)
#include "tst_mainwindow.moc"
