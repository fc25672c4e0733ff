// The titles the window manager shows: each window is opened on a real X
// server and its _NET_WM_NAME and WM_NAME are read back with xprop, so that
// whatever the toolkit adds to a title on its way to the window system is
// seen too. Runs under xvfb-run (tests/CMakeLists.txt).
#include "ScriptedRandomSource.h"
#include "exercise/Services.h"
#include "midi/Midi_interface.h"
#include "RecordingMidiPlatform.h"
#include "shell/ApplicationIdentity.h"
#include "shell/MDIForm1.h"
#include "shell/MessageBoxes.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QProcess>
#include <QtTest>
#include <functional>

using namespace tonaro;

namespace {

// Both title properties of a native window, as "NAME = value" lines.
QStringList titleProperties(QWidget *window)
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window->winId()),
                                          QStringLiteral("-notype"), QStringLiteral("_NET_WM_NAME"),
                                          QStringLiteral("WM_NAME")});
    if (!xprop.waitForFinished(10000))
        return {QStringLiteral("xprop did not finish")};
    return QString::fromUtf8(xprop.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList expectedProperties(const QString &title)
{
    return {QStringLiteral("_NET_WM_NAME = \"%1\"").arg(title), QStringLiteral("WM_NAME = \"%1\"").arg(title)};
}

void dismiss(QWidget *dialog)
{
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
        QAbstractButton *button = box->button(QMessageBox::No);
        (button ? button : box->buttons().constFirst())->click();
        return;
    }
    dialog->close();
}

// Opens a modal window with open(), reads its titles once it is on the
// server, and closes it.
QStringList modalTitles(const std::function<void()> &open)
{
    QStringList titles;
    auto *poll = new QTimer;
    poll->setInterval(20);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, &titles] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (!dialog || !dialog->windowHandle() || !dialog->windowHandle()->isExposed())
            return;
        poll->stop();
        titles = titleProperties(dialog);
        dismiss(dialog);
    });
    poll->start();
    open();
    delete poll;
    return titles;
}

} // namespace

class WindowTitlesTest : public QObject
{
    Q_OBJECT

    RecordingMidiPlatform m_platform;
    QtMessageBoxes m_boxes;
    ScriptedRandomSource m_random;
    Midi_interface m_midi{m_platform, m_boxes};
    Services m_services{m_midi, m_boxes, m_random};

private slots:
    void initTestCase()
    {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            QSKIP("needs an X server (run under xvfb-run with QT_QPA_PLATFORM=xcb)");
        nameApplication();
        m_midi.MidiDeviceId = 0;
        m_midi.MidiChannel = 1;
        m_midi.ToggleMidiOut();
        QVERIFY(m_midi.MidiPortOpen);
    }

    void titleOnTheServer_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("title");
        QTest::newRow("main window") << "main" << "Tonaro 1.2";
        QTest::newRow("refusal box") << "refusal" << "tonaro12";
        QTest::newRow("MIDI error box") << "error" << "tonaro12";
        QTest::newRow("settings dialog") << "settings" << "Settings";
        QTest::newRow("about box") << "about" << "About Tonaro 1.2";
        QTest::newRow("exit question") << "exit" << "Tonaro 1.2";
    }

    void titleOnTheServer()
    {
        QFETCH(QString, window);
        QFETCH(QString, title);

        MDIForm1 main(m_services);
        main.show();
        QVERIFY(QTest::qWaitForWindowExposed(&main));

        QStringList titles;
        if (window == QLatin1String("main")) {
            titles = titleProperties(&main);
        } else if (window == QLatin1String("refusal")) {
            m_midi.MidiPortOpen = false;
            titles = modalTitles([this] { m_midi.NoteOn(1, 60, 100); });
            m_midi.MidiPortOpen = true;
        } else if (window == QLatin1String("error")) {
            m_platform.failNext(RecordingMidiPlatform::Call::Send, 1);
            titles = modalTitles([this] { m_midi.NoteOn(1, 60, 100); });
        } else if (window == QLatin1String("settings")) {
            // Closing the dialog restarts the port: its boxes are no concern here.
            titles = modalTitles([&main] { main.optionmnu_Click(); });
        } else if (window == QLatin1String("about")) {
            titles = modalTitles([&main] { main.aboutmnu_Click(); });
        } else {
            titles = modalTitles([&main] { main.close(); });
        }
        QCOMPARE(titles, expectedProperties(title));
    }
};

QTEST_MAIN(WindowTitlesTest)
#include "x11_windowtitles.moc"
