// The main window as the user meets it: where and how it opens, the bar,
// the real message boxes and the question on closing, Alt with a letter answering
// in note recognition while Alt alone reaches the menu, the typed number of
// notes, the about box's link to the installed manual; and every platform
// call failing at every point where the program talks to the device.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "shell/ArtworkLabel.h"
#include "shell/formabout.h"
#include "shell/frmSplash.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QLineEdit>
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
    // Under the start presets (4th to 7th octave, C major) the octave is
    // drawn first, then the note: {0.3, r} gives the 5th octave's C, E, A
    // for r = 0, 0.3, 0.8.
    void ask(const std::vector<double> &draws)
    {
        random.script(draws);
        clearRecords();
        test::click(exercise(), "New");
    }
    QString verdict() const { return test::text(exercise(), "rightwronglabel"); }
};

// Closes every modal window that opens while run() runs and says which
// windows those were.
QStringList modalsOpenedBy(const std::function<void()> &run)
{
    QStringList opened;
    QTimer watch;
    watch.setInterval(10);
    QObject::connect(&watch, &QTimer::timeout, [&opened] {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            opened << modal->objectName();
            modal->close();
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
        QVERIFY(s.boxes.boxes().empty());
    }

    // The pictures at their sizes; the five bar buttons, captioned, look
    // raised at rest, and only Intervals lights up under the mouse.
    void picturesAndBar()
    {
        frmSplash splash;
        QCOMPARE(splash.findChild<ArtworkLabel *>()->size(), QSize(353, 175));
        formabout about;
        QCOMPARE(about.findChild<ArtworkLabel *>()->size(), QSize(355, 135));
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
        midi.NoteOn(1, 60, 100);
        inspect(QMessageBox::No);
        QVERIFY(!window.close() && window.isVisible());
        inspect(QMessageBox::Yes);
        QVERIFY(window.close());
        // Ok 0x400, Yes 0x4000, No 0x10000; the Warning icon is 2.
        const QString exit = QStringLiteral("Tonaro 1.2|Exit from Tonaro 1.2?|2|%1|%2").arg(0x14000).arg(0x4000);
        QCOMPARE(seen, QStringList({QStringLiteral("tonaro12|You must open the MIDI device first|0|%1|0").arg(0x400), exit, exit}));
    }

    // Alt with a letter answers as the letter alone and opens nothing; O is
    // no answer letter. Alt alone reaches the menu.
    void altKeys()
    {
        const struct { double noteR; Qt::Key key; const char *verdict; } rows[] = {
            {0.8, Qt::Key_A, "Right!"}, {0.0, Qt::Key_A, "Wrong!"}, {0.3, Qt::Key_E, "Right!"}, {0.0, Qt::Key_O, ""}};
        for (const auto &row : rows) {
            Shell s;
            s.ask({0.3, row.noteR});
            const QStringList opened = modalsOpenedBy([&] { QTest::keyClick(QApplication::focusWidget(), row.key, Qt::AltModifier); });
            QCOMPARE(opened.join(u' ') + '|' + s.verdict(), QString('|') + row.verdict);
        }
        // Alt pressed alone enters the menu, whose entries open their dialogs.
        const struct { QList<Qt::Key> keys; QStringList opened; } menus[] = {
            {{Qt::Key_Return}, {"optionsform"}}, {{Qt::Key_Right, Qt::Key_Space}, {"formabout"}}};
        for (const auto &row : menus) {
            Shell s;
            QTest::keyPress(&s.window, Qt::Key_Alt, Qt::AltModifier);
            QTest::keyRelease(&s.window, Qt::Key_Alt);
            QCOMPARE(QApplication::focusWidget(), s.window.menuBar());
            QCOMPARE(modalsOpenedBy([&] {
                for (Qt::Key key : row.keys)
                    QTest::keyClick(QApplication::focusWidget(), key);
            }), row.opened);
        }
    }

    // Typed into the number box, a number of the list chooses it; any other
    // text chooses nothing, and New then plays and counts nothing. Letters
    // typed there stay there; anywhere else they answer.
    void typedNumberOfNotes()
    {
        const struct { const char *typed; int played; } rows[] = {{"3", 3}, {"10", 10}, {"11", 0}, {"three", 0}, {"3 ", 0}};
        for (const auto &row : rows) {
            Shell s;
            auto *box = test::child<QComboBox>(s.exercise(), "nnotescombo");
            box->setFocus();
            box->lineEdit()->selectAll();
            QTest::keyClicks(box, row.typed);
            QTest::keyClick(box, Qt::Key_Return);
            QCOMPARE(box->currentText(), row.typed);
            s.ask({});
            QCOMPARE(int(s.played().size()), row.played);
            QCOMPARE(test::score(s.exercise()).constFirst(), QString::number(row.played));
        }
        Shell s;
        s.ask({0.3, 0.8});
        auto *box = test::child<QComboBox>(s.exercise(), "nnotescombo");
        box->setFocus();
        box->lineEdit()->clear();
        QTest::keyClicks(box, "a");
        QCOMPARE(box->currentText() + '|' + s.verdict(), "a|");
        test::child<QWidget>(s.exercise(), "Nota_0")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_A);
        QCOMPARE(s.verdict(), "Right!");
    }

    // Tab reaches the link and Enter opens the installed manual; the label
    // shows the address it opens.
    void aboutLinkOpensTheManual()
    {
        test::TestServices fx;
        MDIForm1 window(fx.services);
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler("file", &catcher, "open");
        QString shown;
        QTimer::singleShot(0, &window, [&shown] {
            QWidget *about = QApplication::activeModalWidget();
            auto *link = test::child<QLabel>(about, "FreeLink1");
            shown = link->text();
            link->setFocus();
            QTest::keyClick(link, Qt::Key_Tab);
            QTest::keyClick(link, Qt::Key_Return);
            about->close();
        });
        window.aboutmnu_Click();
        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(catcher.urls.size(), 1);
        const QString manual = catcher.urls.constFirst().toLocalFile();
        QVERIFY2(manual.endsWith("/share/doc/tonaro/manual.html") && QFileInfo(manual).isFile(), qPrintable(manual));
        QVERIFY2(shown.contains('>' + catcher.urls.constFirst().toString() + '<'), qPrintable(shown));
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
