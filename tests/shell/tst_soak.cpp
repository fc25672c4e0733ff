// Drives the real main window with random actions and checks, after every
// one, the invariants that real faults break. TONARO_SOAK_SEED and
// TONARO_SOAK_ACTIONS replay or lengthen a run; a failure prints the seed and
// the last 50 actions. CI runs fixed seeds.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MDIForm1.h"

#include <QComboBox>
#include <QDialog>
#include <QSlider>
#include <QToolButton>
#include <deque>
#include <memory>
#include <random>

using namespace tonaro;

namespace {

constexpr std::array<const char *, 5> WindowNames{"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};
constexpr double SoakWaitScale = 0.004; // 1250 ms become 5 ms: nesting still happens
const QStringList SoakDevices{"Built-in synthesizer", "Port one", "A port name that is longer than thirty-one characters"};

int envOr(const char *name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok ? value : fallback;
}

class Soak : public test::TestServices
{
public:
    explicit Soak(quint32 seed) : TestServices(false), m_random(seed)
    {
        platform.setDeviceNames(SoakDevices);
        m_window.MDIForm_Load();
        setWaitScale(SoakWaitScale);
        clearRecords();
    }

    void act()
    {
        m_exitAsked = false;
        ++m_done;
        perform(false);
        // Some actions are posted to run later, often inside a wait that is
        // still running then.
        if (below(4) == 0)
            QTimer::singleShot(below(8), exercise(), [this] { perform(true); });
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Why the program is now in a state no run may reach; empty when it is not.
    QString brokenInvariant();
    QStringList lastActions() const { return {m_log.begin(), m_log.end()}; }
    int actionsDone() const { return m_done; }

private:
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    ExercisePanel *exercise() const { return m_window.exerciseWindow(); }
    QToolButton *barButton(int index) const { return test::child<QToolButton>(&m_window, QStringLiteral("botton1_%1").arg(index)); }
    void log(const QString &action)
    {
        m_log.push_back(QStringLiteral("%1: %2").arg(m_done).arg(action));
        if (m_log.size() > 50)
            m_log.pop_front();
    }
    template<typename T>
    T *anyUsable()
    {
        QList<T *> usable;
        for (T *widget : exercise() ? exercise()->findChildren<T *>() : QList<T *>())
            if (widget->isEnabled() && widget->isVisibleTo(exercise()))
                usable << widget;
        return usable.isEmpty() ? nullptr : usable[below(int(usable.size()))];
    }

    void perform(bool posted);
    void clickControl();
    void typeLetter();
    void useSettingsDialog();

    MDIForm1 m_window{services};
    std::mt19937 m_random;
    std::deque<QString> m_log;
    int m_done = 0;
    bool m_exitAsked = false;
    QString m_scoreError;
    std::size_t m_recordsChecked = 0;
};

void Soak::perform(bool posted)
{
    if (posted)
        log(QStringLiteral("(posted action follows)"));
    const int kind = below(100);
    if (kind < 6) {
        const int index = below(5);
        log(QStringLiteral("bar button %1").arg(index));
        barButton(index)->click();
    } else if (kind < 60) {
        clickControl();
    } else if (kind < 70) {
        if (QComboBox *list = anyUsable<QComboBox>()) {
            const int item = below(list->count());
            log(QStringLiteral("choose %1 item %2").arg(list->objectName()).arg(item));
            list->setCurrentIndex(item);
            emit list->activated(item);
        }
    } else if (kind < 78) {
        if (QSlider *slider = anyUsable<QSlider>()) {
            const int value = slider->minimum() + below(slider->maximum() - slider->minimum() + 1);
            log(QStringLiteral("move %1 to %2").arg(slider->objectName()).arg(value));
            slider->setValue(value);
        }
    } else if (kind < 94) {
        typeLetter();
    } else if (kind < 97 && !posted) {
        useSettingsDialog();
    } else if (kind < 98 && !posted) {
        log(QStringLiteral("about box"));
        QTimer::singleShot(0, &m_window, [this] { test::child<QDialog>(&m_window, QStringLiteral("formabout"))->close(); });
        m_window.aboutmnu_Click();
    } else if (!posted) {
        log(QStringLiteral("exit, answered No"));
        boxes.scriptAnswers({false});
        m_exitAsked = true;
        m_window.close();
    }
}

void Soak::clickControl()
{
    QAbstractButton *button = anyUsable<QAbstractButton>();
    if (!button)
        return;
    log(QStringLiteral("click %1").arg(button->objectName()));
    QPointer<ExercisePanel> window = exercise();
    const QStringList before = test::score(window);
    button->click();
    // An answer that asked no new question, even one the Auto NEW box
    // unticked during its wait, leaves the percentage of the score it made.
    // Checked at once: a posted action may ask the next question soon.
    const QStringList after = window ? test::score(window) : before;
    const double questions = after[0].toDouble(), right = after[1].toDouble();
    if (after[2] != before[2] && after[0] == before[0] && questions != 0
        && after[3].toDouble() != std::trunc(right * 100 / questions))
        m_scoreError = QStringLiteral("percentage %1 for %2 right of %3").arg(after[3], after[1], after[0]);
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
    if (!target)
        return;
    // Alt with a menu's letter opens its dialog, modal: close what this key
    // opened, as a user would, and leave any other dialog alone.
    auto typing = std::make_shared<bool>(true);
    QTimer::singleShot(0, &m_window, [typing] {
        if (QWidget *dialog = QApplication::activeModalWidget(); dialog && *typing)
            dialog->close();
    });
    QTest::keyClick(target, Qt::Key(letter.unicode()), modifier);
    *typing = false;
}

void Soak::useSettingsDialog()
{
    const int device = below(int(SoakDevices.size())), channel = below(16), volume = below(128), instrument = below(128);
    const bool okButton = below(2) == 0;
    log(QStringLiteral("settings: device %1 channel %2 volume %3 instrument %4, %5")
            .arg(device).arg(channel + 1).arg(volume).arg(instrument).arg(okButton ? "OK" : "close box"));
    QTimer::singleShot(0, &m_window, [=, this] {
        auto *dialog = test::child<QDialog>(&m_window, QStringLiteral("optionsform"));
        test::child<QComboBox>(dialog, QStringLiteral("Combodevice"))->setCurrentIndex(device);
        test::child<QComboBox>(dialog, QStringLiteral("Combochannel"))->setCurrentIndex(channel);
        test::child<QSlider>(dialog, QStringLiteral("volumeslider"))->setValue(volume);
        test::child<QComboBox>(dialog, QStringLiteral("comboinstr"))->setCurrentIndex(instrument);
        okButton ? test::child<QPushButton>(dialog, QStringLiteral("Command1"))->click() : void(dialog->close());
    });
    m_window.optionmnu_Click();
}

QString Soak::brokenInvariant()
{
    const auto &records = platform.records();
    for (; m_recordsChecked < records.size(); ++m_recordsChecked) {
        const auto &record = records[m_recordsChecked];
        if (record.call != RecordingMidiPlatform::Call::Send)
            continue;
        if (record.data1() > 127 || record.data2() > 127 || record.status() < 0x80)
            return QStringLiteral("message %1 has a data byte above 127").arg(record.message, 0, 16);
        if (record.result != 0)
            return QStringLiteral("a message reached the device while the port was closed");
    }
    for (const auto &box : boxes.boxes())
        if (!(box.isQuestion && m_exitAsked))
            return QStringLiteral("unexpected message box: ") + box.text;
    boxes.clear();
    if (!midi.MidiPortOpen)
        return QStringLiteral("the port is closed");

    ExercisePanel *shown = exercise();
    if (!shown || shown->objectName() != QLatin1String(WindowNames[std::size_t(m_window.CurrentExercise)]))
        return QStringLiteral("the window shown is not the one the bar shows");
    for (ExercisePanel *window : m_window.findChildren<ExercisePanel *>())
        if (window != shown && !window->isUnloaded())
            return QStringLiteral("%1 is still loaded beside %2").arg(window->objectName(), shown->objectName());
    for (int index = 0; index < 5; ++index)
        if (barButton(index)->isChecked() != (index == m_window.CurrentExercise))
            return QStringLiteral("bar button %1 is in the wrong state").arg(index);

    const QStringList score = test::score(shown);
    for (const QString &counter : score) {
        bool ok = false;
        if (counter.toDouble(&ok) < 0 || !ok)
            return QStringLiteral("a counter is negative or not a number: ") + score.join(u' ');
    }
    // Each scored answer needs a question counted after the one before.
    if (score[2].toDouble() > score[0].toDouble())
        return QStringLiteral("more answers than questions: ") + score.join(u' ');
    return std::exchange(m_scoreError, QString());
}

} // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private slots:
    // Fixed seeds, so that a run fails or passes the same way every time;
    // TONARO_SOAK_SEED adds a run with that seed, "clock" one from the clock.
    void randomActionsKeepTheInvariants_data()
    {
        QTest::addColumn<quint32>("seed");
        for (const quint32 seed : {1u, 20261123u})
            QTest::addRow("seed %u", seed) << seed;
        const QByteArray extra = qgetenv("TONARO_SOAK_SEED");
        if (!extra.isEmpty()) {
            const quint32 seed = extra == "clock" ? quint32(QDateTime::currentMSecsSinceEpoch() & 0x7FFFFFFF) : extra.toUInt();
            QTest::addRow("seed %u", seed) << seed;
        }
    }

    void randomActionsKeepTheInvariants()
    {
        QFETCH(quint32, seed);
        const int actions = envOr("TONARO_SOAK_ACTIONS", 3000);
        qInfo("soak: seed %u, %d actions (TONARO_SOAK_SEED=%u replays this run)", seed, actions, seed);
        Soak soak(seed);
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < actions; ++i) {
            soak.act();
            if (const QString why = soak.brokenInvariant(); !why.isEmpty()) {
                qWarning("soak failed after action %d with seed %u: %s", soak.actionsDone(), seed, qPrintable(why));
                for (const QString &line : soak.lastActions())
                    qWarning("  %s", qPrintable(line));
                QFAIL(qPrintable(why));
            }
        }
        qInfo("soak: %d actions in %.1f s", actions, clock.elapsed() / 1000.0);
    }
};

QTEST_MAIN(SoakTest)
#include "tst_soak.moc"
