// The main window as the user meets it: where and how it opens, the bar,
// the exit question and the real message boxes, Alt with a letter answering
// in note recognition while Alt alone reaches the menu, the typed number of
// notes, the about box's link to the installed manual; and every platform
// call failing at every point where the program talks to the device.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MDIForm1.h"

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

// The port is left to the start-up to open.
struct Shell : test::TestServices {
    MDIForm1 window{services};
    Shell() : TestServices(false)
    {
        window.MDIForm_Load();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        // Auto NEW would ask again at once and empty the verdict.
        test::child<QCheckBox>(exercise(), "autonewcheck")->setChecked(false);
    }
    ExercisePanel *exercise() const { return window.exerciseWindow(); }
    QToolButton *barButton(int index) const { return test::child<QToolButton>(&window, QStringLiteral("botton1_%1").arg(index)); }
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

enum class Phase { StartUp, Question, Wait, StopNoise, Settings };

// What the user can see of note recognition after a phase, with a fault
// (code) or without (0), and what the next question sends once the fault
// has gone: the score, the ticked boxes, the boxes shown, the notes.
QStringList runPhase(Phase phase, Call call, int code)
{
    test::TestServices fx(false);
    MDIForm1 window(fx.services);
    const auto inject = [&] {
        if (code != 0)
            fx.platform.setFailure(call, code);
    };
    if (phase == Phase::StartUp)
        inject();
    window.MDIForm_Load();
    ExercisePanel *melody = window.exerciseWindow();
    test::child<QComboBox>(melody, "nnotescombo")->setCurrentIndex(2);
    fx.random.script({0.1, 0.2, 0.3, 0.4, 0.5, 0.6});
    if (phase == Phase::Wait) {
        // The fault arrives between two notes of a question.
        setWaitScale(0.02);
        QTimer::singleShot(5, melody, inject);
    } else if (phase != Phase::StartUp) {
        inject();
    }
    if (phase == Phase::Question || phase == Phase::Wait)
        test::click(melody, "New");
    else if (phase == Phase::StopNoise)
        test::click(melody, "stopnoise");
    if (phase == Phase::Settings) {
        QTimer::singleShot(0, &window, [&] { test::child(&window, "optionsform")->close(); });
        window.optionmnu_Click();
    }
    setWaitScale(0);
    QString ticked;
    for (const QCheckBox *box : melody->findChildren<QCheckBox *>())
        ticked += box->isChecked() ? 'x' : '-';
    QStringList outcome{test::score(melody).join(u' '), ticked, fx.boxes.texts().join(u'|')};
    // A restart brings the port back and the next question sounds.
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

    // In the centre of the screen, with note recognition and the sound set
    // up: bank select 0 (MSB and LSB) and program 24 on channel 1.
    void startsCentredWithMelodyAndTheDefaultSound()
    {
        Shell s;
        QCOMPARE(s.window.size(), QSize(7275 / 15, 10050 / 15));
        const QRect frame = s.window.frameGeometry(), available = s.window.screen()->availableGeometry();
        QVERIFY((frame.center() - available.center()).manhattanLength() <= 2);
        for (int index = 0; index < 5; ++index)
            QCOMPARE(s.barButton(index)->isChecked(), index == 0);
        QCOMPARE(s.exercise()->objectName(), "formmelody");
        QVERIFY(s.midi.MidiPortOpen);
        const auto sent = s.platform.sent();
        QVERIFY(sent.size() >= 3);
        QCOMPARE(QStringLiteral("%1 %2 %3").arg(sent[0].message, 6, 16, QChar('0')).arg(sent[1].message, 6, 16, QChar('0'))
                     .arg(sent[2].message, 6, 16, QChar('0')), "0000b0 0020b0 0018c0");
        QVERIFY(s.boxes.boxes().empty());
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
        // Ok 0x400, Yes 0x4000, No 0x10000; the Warning icon is 2.
        const QString exit = QStringLiteral("Tonaro 1.2|Exit from Tonaro 1.2?|2|%1|%2").arg(0x14000).arg(0x4000);
        QCOMPARE(seen, QStringList({QStringLiteral("tonaro12|You must open the MIDI device first|0|%1|0").arg(0x400), exit, exit}));
    }

    // Alt with a letter answers as the letter alone and opens nothing; O is
    // no answer letter.
    void altLetterAnswersInNoteRecognition()
    {
        const struct { double noteR; Qt::Key key; const char *verdict; } rows[] = {
            {0.8, Qt::Key_A, "Right!"}, {0.0, Qt::Key_A, "Wrong!"}, {0.3, Qt::Key_E, "Right!"}, {0.0, Qt::Key_O, ""}};
        for (const auto &row : rows) {
            Shell s;
            s.ask({0.3, row.noteR});
            const QStringList opened = modalsOpenedBy([&] { QTest::keyClick(QApplication::focusWidget(), row.key, Qt::AltModifier); });
            QCOMPARE(opened.join(u' ') + '|' + s.verdict(), QString('|') + row.verdict);
        }
    }

    // Alt pressed alone enters the menu, and leaving it gives the focus back.
    void menuReachedWithAltAlone()
    {
        const struct { QList<Qt::Key> keys; QStringList opened; } rows[] = {
            {{Qt::Key_Return}, {"optionsform"}}, {{Qt::Key_Right, Qt::Key_Space}, {"formabout"}}, {{Qt::Key_Escape}, {}}};
        for (const auto &row : rows) {
            Shell s;
            QWidget *before = QApplication::focusWidget();
            QTest::keyPress(&s.window, Qt::Key_Alt, Qt::AltModifier);
            QTest::keyRelease(&s.window, Qt::Key_Alt);
            QCOMPARE(QApplication::focusWidget(), s.window.menuBar());
            QCOMPARE(modalsOpenedBy([&] {
                for (Qt::Key key : row.keys)
                    QTest::keyClick(QApplication::focusWidget(), key);
            }), row.opened);
            s.window.activateWindow();
            QTRY_COMPARE(QApplication::focusWidget(), before);
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
            // A number typed over one item enables the delay, as choosing it does.
            QCOMPARE(test::child<QWidget>(s.exercise(), "slidermultinotes")->isEnabled(), row.played > 1);
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

    // Tab reaches the link and Enter opens the installed manual, with its
    // pictures beside it; the label shows the address it opens.
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
        QFile page(manual);
        QVERIFY(page.open(QIODevice::ReadOnly));
        int images = 0;
        for (auto match = QRegularExpression("<img src=\"([^\"]+)\"").globalMatch(page.readAll()); match.hasNext(); ++images)
            QVERIFY(QImage(QFileInfo(manual).dir().filePath(match.next().captured(1))).width() > 100);
        QVERIFY(images >= 3);
    }

    // Each fault shows its box, and leaves the score, the ticked choices
    // and the next question as a fault-free run leaves them. The platform
    // gives the text; three of its codes stand for all.
    void everyFaultIsShownAndLosesNothing()
    {
        const char *phases[] = {"start-up", "question", "wait", "stop noise", "settings"};
        for (int phase = 0; phase < 5; ++phase) {
            for (const Call call : {Call::Open, Call::Close, Call::Send}) {
                const QString operation = call == Call::Open ? "Open" : call == Call::Close ? "Close" : "ShortMsg";
                const QStringList clean = runPhase(Phase(phase), call, 0);
                QCOMPARE(clean[2], "");
                for (const MidiResult result : {MidiResult::Error, MidiResult::DeviceVanished, MidiResult::NoMidiSystem}) {
                    const int code = toCode(result);
                    const QByteArray name = QStringLiteral("%1, %2 fails with %3").arg(phases[phase], operation).arg(code).toLatin1();
                    QStringList faulty = runPhase(Phase(phase), call, code);
                    const QString errorBox = QStringLiteral("Operation:%1\r\nfault %2").arg(operation).arg(code);
                    const QStringList boxes = faulty[2].split(u'|', Qt::SkipEmptyParts);
                    for (const QString &box : boxes)
                        QVERIFY2(box == errorBox || box == "You must open the MIDI device first", name);
                    // Every phase sends, start-up opens, and the restarts close and open.
                    const bool made = call == Call::Send || Phase(phase) == Phase::StopNoise || Phase(phase) == Phase::Settings
                                      || (call == Call::Open && Phase(phase) == Phase::StartUp);
                    QVERIFY2(!made || boxes.contains(errorBox), name);
                    faulty[2] = "";
                    QVERIFY2(faulty == clean && clean.size() > 3, name);
                }
            }
        }
    }
};

QTEST_MAIN(tst_mainwindow)
#include "tst_mainwindow.moc"
