// Details the user meets at the main window: Alt with a letter answers in
// note recognition while the menu stays reachable by Alt alone, the number
// box takes typed text, and the about box links to the installed manual.
#include "TestServices.h"

#include "shell/MDIForm1.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMenuBar>
#include <QProxyStyle>
#include <functional>

using namespace tonaro;

namespace {

// Under the start presets (4th to 7th octave, C major) the octave is drawn
// first, then the note: these draws give the 5th octave's C, E and A.
const std::vector<double> DrawC{0.3, 0.0}, DrawE{0.3, 0.3}, DrawA{0.3, 0.8};

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

struct MainWindow : test::TestServices {
    MDIForm1 window{services};

    // The port is left to the start-up to open.
    MainWindow() : TestServices(false)
    {
        window.MDIForm_Load();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        // Auto NEW would ask again at once and empty the verdict.
        test::child<QCheckBox>(exercise(), QStringLiteral("autonewcheck"))->setChecked(false);
        clearRecords();
    }
    QWidget *exercise() const { return window.exerciseWindow(); }
    QComboBox *numberBox() const { return test::child<QComboBox>(exercise(), QStringLiteral("nnotescombo")); }
    void ask(const std::vector<double> &draws)
    {
        random.script(draws);
        clearRecords();
        test::click(exercise(), QStringLiteral("New"));
    }
};

} // namespace

// A desktop style that leaves the menu bar's Alt navigation off, as some do.
class NoAltNavigationStyle : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == SH_MenuBar_AltKeyNavigation)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

// Receives what QDesktopServices would hand to the desktop's browser.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    explicit UrlCatcher(QList<QUrl> &urls) : m_urls(urls) {}
public slots:
    void open(const QUrl &url) { m_urls << url; }
private:
    QList<QUrl> &m_urls;
};

class ExactnessTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new NoAltNavigationStyle); }

    void altLetterAnswersInNoteRecognition_data()
    {
        QTest::addColumn<std::vector<double>>("question");
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("verdict");
        QTest::newRow("Alt+A on A") << DrawA << int(Qt::Key_A) << "Right!";
        QTest::newRow("Alt+A on C") << DrawC << int(Qt::Key_A) << "Wrong!";
        QTest::newRow("Alt+E on E") << DrawE << int(Qt::Key_E) << "Right!";
        // O is no answer letter: it does nothing, and opens nothing.
        QTest::newRow("Alt+O") << DrawC << int(Qt::Key_O) << "";
    }

    void altLetterAnswersInNoteRecognition()
    {
        QFETCH(std::vector<double>, question);
        QFETCH(int, key);
        QFETCH(QString, verdict);

        MainWindow fx;
        fx.ask(question);
        const QStringList opened = modalsOpenedBy([&fx, key] {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), Qt::AltModifier);
        });
        QCOMPARE(opened, QStringList());
        QCOMPARE(test::text(fx.exercise(), QStringLiteral("rightwronglabel")), verdict);
    }

    void menuReachedWithAltAlone_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<QStringList>("opened");
        QTest::newRow("Enter") << QList<int>{Qt::Key_Return} << QStringList{"optionsform"};
        QTest::newRow("Right, Enter") << QList<int>{Qt::Key_Right, Qt::Key_Return} << QStringList{"formabout"};
        QTest::newRow("Right, Right, Space") << QList<int>{Qt::Key_Right, Qt::Key_Right, Qt::Key_Space}
                                             << QStringList{"optionsform"};
        QTest::newRow("Escape") << QList<int>{Qt::Key_Escape} << QStringList();
    }

    void menuReachedWithAltAlone()
    {
        QFETCH(QList<int>, keys);
        QFETCH(QStringList, opened);

        MainWindow fx;
        QWidget *before = QApplication::focusWidget();
        QTest::keyPress(&fx.window, Qt::Key_Alt, Qt::AltModifier);
        QTest::keyRelease(&fx.window, Qt::Key_Alt);
        QCOMPARE(QApplication::focusWidget(), fx.window.menuBar());
        const QStringList shown = modalsOpenedBy([&keys] {
            for (int key : keys)
                QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        });
        QCOMPARE(shown, opened);
        // Leaving the menu gives the focus back to where it was.
        fx.window.activateWindow();
        QTRY_COMPARE(QApplication::focusWidget(), before);
    }

    void typedNumberOfNotes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("played");
        QTest::newRow("3") << "3" << 3;
        QTest::newRow("10") << "10" << 10;
        QTest::newRow("11") << "11" << 0;
        QTest::newRow("0") << "0" << 0;
        QTest::newRow("three") << "three" << 0;
        QTest::newRow("3 and a blank") << "3 " << 0;
    }

    void typedNumberOfNotes()
    {
        QFETCH(QString, typed);
        QFETCH(int, played);

        MainWindow fx;
        QComboBox *box = fx.numberBox();
        QVERIFY(box->isEditable());
        box->setFocus();
        box->lineEdit()->selectAll();
        QTest::keyClicks(box, typed);
        QTest::keyClick(box, Qt::Key_Return);
        QCOMPARE(box->currentText(), typed);

        fx.ask({});
        QCOMPARE(fx.played().size(), played);
        QCOMPARE(test::score(fx.exercise()).constFirst(), QString::number(played));
        // A number typed over one item enables the delay, as choosing it does.
        QCOMPARE(test::child<QWidget>(fx.exercise(), QStringLiteral("slidermultinotes"))->isEnabled(), played > 1);
    }

    void lettersTypedIntoTheNumberBoxStayThere()
    {
        MainWindow fx;
        fx.ask(DrawA);
        QComboBox *box = fx.numberBox();
        QVERIFY(box->isEditable());
        box->setFocus();
        box->lineEdit()->clear();
        QTest::keyClicks(box, QStringLiteral("a"));
        QCOMPARE(box->currentText(), "a");
        QCOMPARE(test::text(fx.exercise(), QStringLiteral("rightwronglabel")), "");

        // Anywhere else the letter answers.
        test::child<QWidget>(fx.exercise(), QStringLiteral("Nota_0"))->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_A);
        QCOMPARE(test::text(fx.exercise(), QStringLiteral("rightwronglabel")), "Right!");
    }

    void aboutLinkOpensTheManual()
    {
        test::TestServices fx;
        MDIForm1 window(fx.services);
        QList<QUrl> opened;
        UrlCatcher catcher(opened);
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");

        QString shown;
        QTimer::singleShot(0, &window, [&shown] {
            QWidget *about = QApplication::activeModalWidget();
            auto *link = test::child<QLabel>(about, QStringLiteral("FreeLink1"));
            shown = link->text();
            // Tab reaches the link, Enter follows it.
            link->setFocus();
            QTest::keyClick(link, Qt::Key_Tab);
            QTest::keyClick(link, Qt::Key_Return);
            about->close();
        });
        window.aboutmnu_Click();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

        QCOMPARE(opened.size(), 1);
        const QUrl manual = opened.constFirst();
        QVERIFY2(manual.isLocalFile(), qPrintable(manual.toString()));
        QVERIFY2(manual.path().endsWith(QLatin1String("/share/doc/tonaro/manual.html")), qPrintable(manual.path()));
        QVERIFY2(QFileInfo(manual.toLocalFile()).isFile(), qPrintable(manual.toLocalFile()));
        // The label shows the address it opens.
        QVERIFY2(shown.contains(QStringLiteral(">%1<").arg(manual.toString())), qPrintable(shown));
        // The page's pictures come with it.
        QFile page(manual.toLocalFile());
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(page.readAll());
        static const QRegularExpression image(QStringLiteral("<img src=\"([^\"]+)\""));
        int images = 0;
        for (auto match = image.globalMatch(html); match.hasNext(); ++images) {
            const QString picture = QFileInfo(manual.toLocalFile()).dir().filePath(match.next().captured(1));
            QVERIFY2(QImage(picture).width() > 100, qPrintable(picture));
        }
        QVERIFY(images >= 3);
    }
};

QTEST_MAIN(ExactnessTest)
#include "tst_exactness.moc"
