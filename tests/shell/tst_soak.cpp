// Drives the real main window with random actions and checks, after every
// one, the invariants that real faults break. TONARO_SOAK_SEED and
// TONARO_SOAK_ACTIONS replay or lengthen a run; a failure prints the seed and
// the last 50 actions.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MDIForm1.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QSlider>
#include <QToolButton>
#include <deque>
#include <random>

using namespace tonaro;

namespace {

constexpr std::array<const char *, 5> WindowNames{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};
constexpr double SoakWaitScale = 0.004; // 1250 ms become 5 ms: nesting still happens
const QStringList SoakDevices{QStringLiteral("Built-in synthesizer"), QStringLiteral("Port one"),
                              QStringLiteral("A port name that is longer than thirty-one characters")};

int envOr(const char *name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok ? value : fallback;
}

class Soak
{
public:
    Soak(test::TestServices &fx, MDIForm1 &window, quint32 seed) : m_fx(fx), m_window(window), m_random(seed) {}

    void act();
    bool checkInvariants(QString *why);
    QStringList lastActions() const { return {m_log.begin(), m_log.end()}; }
    int actionsDone() const { return m_done; }

private:
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    void log(const QString &action);
    void perform(bool posted);
    void clickBar();
    void clickControl();
    void chooseListItem();
    void moveSlider();
    void typeLetter();
    void useSettingsDialog();
    void openAbout();
    void askExit();
    ExercisePanel *exercise() const { return m_window.exerciseWindow(); }
    template<typename T>
    QList<T *> usable() const;

    test::TestServices &m_fx;
    MDIForm1 &m_window;
    std::mt19937 m_random;
    std::deque<QString> m_log;
    int m_done = 0;
    bool m_exitAsked = false;
    bool m_restarted = false;
    bool m_scoreCheck = false;
    std::size_t m_recordsChecked = 0;
};

template<typename T>
QList<T *> Soak::usable() const
{
    QList<T *> result;
    if (!exercise())
        return result;
    for (T *widget : exercise()->findChildren<T *>()) {
        if (widget->isEnabled() && widget->isVisibleTo(exercise()))
            result << widget;
    }
    return result;
}

void Soak::log(const QString &action)
{
    m_log.push_back(QStringLiteral("%1: %2").arg(m_done).arg(action));
    if (m_log.size() > 50)
        m_log.pop_front();
}

void Soak::act()
{
    m_exitAsked = false;
    m_restarted = false;
    m_scoreCheck = false;
    ++m_done;
    perform(false);
    // Some actions are posted to run later, often inside a wait that is
    // still running then.
    if (below(4) == 0) {
        QTimer::singleShot(below(8), exercise(), [this] { perform(true); });
    }
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Soak::perform(bool posted)
{
    if (posted)
        log(QStringLiteral("(posted action follows)"));
    const int kind = below(100);
    if (kind < 6)
        clickBar();
    else if (kind < 60)
        clickControl();
    else if (kind < 70)
        chooseListItem();
    else if (kind < 78)
        moveSlider();
    else if (kind < 94)
        typeLetter();
    else if (kind < 97 && !posted)
        useSettingsDialog();
    else if (kind < 98 && !posted)
        openAbout();
    else if (!posted)
        askExit();
}

void Soak::clickBar()
{
    const int index = below(5);
    log(QStringLiteral("bar button %1").arg(index));
    m_window.findChild<QToolButton *>(QStringLiteral("botton1_%1").arg(index))->click();
}

void Soak::clickControl()
{
    const QList<QAbstractButton *> buttons = usable<QAbstractButton>();
    if (buttons.isEmpty())
        return;
    QAbstractButton *button = buttons[below(int(buttons.size()))];
    const QString name = button->objectName();
    log(QStringLiteral("click %1").arg(name));
    m_restarted = name == QLatin1String("stopnoise");
    const auto answersBefore = exercise()->findChild<QLabel *>(QStringLiteral("anslabel"))->text();
    QPointer<ExercisePanel> window = exercise();
    button->click();
    // An answer that did not start a new question leaves a fresh percentage.
    if (window && window == exercise() && !window->findChild<QCheckBox *>(QStringLiteral("autonewcheck"))->isChecked())
        m_scoreCheck = answersBefore != window->findChild<QLabel *>(QStringLiteral("anslabel"))->text();
}

void Soak::chooseListItem()
{
    const QList<QComboBox *> lists = usable<QComboBox>();
    if (lists.isEmpty())
        return;
    QComboBox *list = lists[below(int(lists.size()))];
    const int item = below(list->count());
    log(QStringLiteral("choose %1 item %2").arg(list->objectName()).arg(item));
    list->setCurrentIndex(item);
    emit list->activated(item);
}

void Soak::moveSlider()
{
    const QList<QSlider *> sliders = usable<QSlider>();
    if (sliders.isEmpty())
        return;
    QSlider *slider = sliders[below(int(sliders.size()))];
    const int value = slider->minimum() + below(slider->maximum() - slider->minimum() + 1);
    log(QStringLiteral("move %1 to %2").arg(slider->objectName()).arg(value));
    slider->setValue(value);
}

void Soak::typeLetter()
{
    static const QString letters = QStringLiteral("NRVSCDEFGABXZ");
    static const std::array<Qt::KeyboardModifiers, 5> modifiers{
        Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier, Qt::ControlModifier | Qt::ShiftModifier, Qt::AltModifier};
    const QChar letter = letters[below(int(letters.size()))];
    const Qt::KeyboardModifiers modifier = modifiers[std::size_t(below(int(modifiers.size())))];
    log(QStringLiteral("type %1 with modifiers %2").arg(letter).arg(int(modifier)));
    QWidget *target = QApplication::focusWidget();
    if (!target || !exercise() || !exercise()->isAncestorOf(target))
        target = exercise();
    if (target)
        QTest::keyClick(target, Qt::Key(letter.unicode()), modifier);
}

void Soak::useSettingsDialog()
{
    const int device = below(int(SoakDevices.size()));
    const int channel = below(16);
    const int volume = below(128);
    const int instrument = below(128);
    const bool okButton = below(2) == 0;
    log(QStringLiteral("settings: device %1 channel %2 volume %3 instrument %4, %5")
            .arg(device).arg(channel + 1).arg(volume).arg(instrument).arg(okButton ? "OK" : "close box"));
    QTimer::singleShot(0, &m_window, [=, this] {
        auto *dialog = m_window.findChild<QDialog *>(QStringLiteral("optionsform"));
        if (!dialog)
            return;
        dialog->findChild<QComboBox *>(QStringLiteral("Combodevice"))->setCurrentIndex(device);
        dialog->findChild<QComboBox *>(QStringLiteral("Combochannel"))->setCurrentIndex(channel);
        dialog->findChild<QSlider *>(QStringLiteral("volumeslider"))->setValue(volume);
        dialog->findChild<QComboBox *>(QStringLiteral("comboinstr"))->setCurrentIndex(instrument);
        if (okButton)
            dialog->findChild<QPushButton *>(QStringLiteral("Command1"))->click();
        else
            dialog->close();
    });
    m_window.optionmnu_Click();
    m_restarted = true;
}

void Soak::openAbout()
{
    log(QStringLiteral("about box"));
    QTimer::singleShot(0, &m_window, [this] {
        if (auto *about = m_window.findChild<QDialog *>(QStringLiteral("formabout")))
            about->close();
    });
    m_window.aboutmnu_Click();
}

void Soak::askExit()
{
    log(QStringLiteral("exit, answered No"));
    m_fx.boxes.scriptAnswers({false});
    m_exitAsked = true;
    m_window.close();
}

bool Soak::checkInvariants(QString *why)
{
    const auto fail = [why](const QString &text) {
        *why = text;
        return false;
    };
    const auto &records = m_fx.platform.records();
    for (; m_recordsChecked < records.size(); ++m_recordsChecked) {
        const auto &record = records[m_recordsChecked];
        if (record.call != RecordingMidiPlatform::Call::Send)
            continue;
        if (record.data1() > 127 || record.data2() > 127 || record.status() < 0x80)
            return fail(QStringLiteral("message %1 has a data byte above 127").arg(record.message, 0, 16));
        if (record.result != 0)
            return fail(QStringLiteral("a message reached the device while the port was closed"));
    }
    for (const auto &box : m_fx.boxes.boxes()) {
        if (!(box.isQuestion && m_exitAsked))
            return fail(QStringLiteral("unexpected message box: %1").arg(box.text));
    }
    m_fx.boxes.clear();
    if (m_restarted && !m_fx.midi.MidiPortOpen)
        return fail(QStringLiteral("the port is closed after a restart"));
    if (!m_fx.midi.MidiPortOpen)
        return fail(QStringLiteral("the port is closed"));

    ExercisePanel *shown = exercise();
    if (!shown || shown->objectName() != QLatin1String(WindowNames[std::size_t(m_window.CurrentExercise)]))
        return fail(QStringLiteral("the window shown is not the one the bar shows"));
    for (ExercisePanel *window : m_window.findChildren<ExercisePanel *>()) {
        if (window != shown && !window->isUnloaded())
            return fail(QStringLiteral("%1 is still loaded beside %2").arg(window->objectName(), shown->objectName()));
    }
    for (int index = 0; index < 5; ++index) {
        if (m_window.findChild<QToolButton *>(QStringLiteral("botton1_%1").arg(index))->isChecked() != (index == m_window.CurrentExercise))
            return fail(QStringLiteral("bar button %1 is in the wrong state").arg(index));
    }

    const auto counter = [shown](const char *name) {
        bool ok = false;
        const double value = shown->findChild<QLabel *>(QString::fromLatin1(name))->text().toDouble(&ok);
        return ok ? value : -1.0;
    };
    const double questions = counter("questlabel");
    const double right = counter("rightanslabel");
    const double answers = counter("anslabel");
    const double percentage = counter("perclabel");
    if (questions < 0 || right < 0 || answers < 0 || percentage < 0)
        return fail(QStringLiteral("a counter is negative or not a number"));
    // Each scored answer needs a question counted after the one before.
    if (answers > questions)
        return fail(QStringLiteral("%1 answers to %2 questions").arg(answers).arg(questions));
    if (m_scoreCheck && questions != 0 && percentage != std::trunc(right * 100 / questions))
        return fail(QStringLiteral("percentage %1 for %2 right of %3").arg(percentage).arg(right).arg(questions));
    return true;
}

} // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private slots:
    void randomActionsKeepTheInvariants();
};

void SoakTest::randomActionsKeepTheInvariants()
{
    const quint32 seed = quint32(envOr("TONARO_SOAK_SEED", int(QDateTime::currentMSecsSinceEpoch() & 0x7FFFFFFF)));
    const int actions = envOr("TONARO_SOAK_ACTIONS", 5000);
    qInfo("soak: seed %u, %d actions (TONARO_SOAK_SEED=%u replays this run)", seed, actions, seed);

    test::TestServices fx(false);
    fx.platform.setDeviceNames(SoakDevices);
    MDIForm1 window(fx.services);
    window.MDIForm_Load();
    setWaitScale(SoakWaitScale);
    fx.clearRecords();

    Soak soak(fx, window, seed);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < actions; ++i) {
        soak.act();
        QString why;
        if (!soak.checkInvariants(&why)) {
            qWarning("soak failed after action %d with seed %u: %s", soak.actionsDone(), seed, qPrintable(why));
            for (const QString &line : soak.lastActions())
                qWarning("  %s", qPrintable(line));
            QFAIL(qPrintable(why));
        }
    }
    qInfo("soak: %d actions in %.1f s, %.0f actions per second", actions, clock.elapsed() / 1000.0,
          actions * 1000.0 / std::max<qint64>(1, clock.elapsed()));
    setWaitScale(0);
}

QTEST_MAIN(SoakTest)
#include "tst_soak.moc"
