// Drives the real main window with random actions and checks, after every
// one, the invariants that real faults break. CI runs fixed seeds;
// TONARO_SOAK_SEED adds a run with that seed and TONARO_SOAK_ACTIONS
// lengthens the runs. A failure prints the seed and the last 50 actions.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "shell/MDIForm1.h"

#include <QComboBox>
#include <QSlider>
#include <QToolButton>
#include <deque>
#include <random>

using namespace tonaro;

namespace {

const char *const WindowNames[] = {"formmelody", "formintervalli", "Formchords", "Formscales", "formarmonia"};

class Soak : public test::TestServices
{
public:
    explicit Soak(quint32 seed) : TestServices(false), m_random(seed)
    {
        m_window.MDIForm_Load();
        setWaitScale(0.004); // 1250 ms become 5 ms: nesting still happens
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
    std::deque<QString> log;

private:
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    ExercisePanel *exercise() const { return m_window.exerciseWindow(); }
    QToolButton *barButton(int index) const { return test::child<QToolButton>(&m_window, QStringLiteral("botton1_%1").arg(index)); }
    void note(const QString &action)
    {
        log.push_back(QStringLiteral("%1: %2").arg(m_done).arg(action));
        if (log.size() > 50)
            log.pop_front();
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

    MDIForm1 m_window{services};
    std::mt19937 m_random;
    int m_done = 0;
    bool m_exitAsked = false;
    QString m_scoreError;
    std::size_t m_checked = 0;
};

void Soak::perform(bool posted)
{
    const int kind = below(100);
    if (kind < 6) {
        const int index = below(5);
        note(QStringLiteral("bar button %1").arg(index));
        barButton(index)->click();
    } else if (kind < 60) {
        QAbstractButton *button = anyUsable<QAbstractButton>();
        if (!button)
            return;
        note(QStringLiteral("click %1").arg(button->objectName()));
        QPointer<ExercisePanel> window = exercise();
        const QStringList before = test::score(window);
        button->click();
        // An answer that asked no new question leaves the percentage of the
        // score it made, the fraction dropped. Checked at once: a posted
        // action may ask the next question soon.
        const QStringList after = window ? test::score(window) : before;
        const double questions = after[0].toDouble(), right = after[1].toDouble();
        if (after[2] != before[2] && after[0] == before[0] && questions != 0
            && after[3].toDouble() != std::trunc(right * 100 / questions))
            m_scoreError = QStringLiteral("percentage %1 for %2 right of %3").arg(after[3], after[1], after[0]);
    } else if (kind < 70) {
        if (QComboBox *list = anyUsable<QComboBox>()) {
            const int item = below(list->count());
            note(QStringLiteral("choose %1 item %2").arg(list->objectName()).arg(item));
            list->setCurrentIndex(item);
        }
    } else if (kind < 78) {
        if (QSlider *slider = anyUsable<QSlider>()) {
            const int value = slider->minimum() + below(slider->maximum() - slider->minimum() + 1);
            note(QStringLiteral("move %1 to %2").arg(slider->objectName()).arg(value));
            slider->setValue(value);
        }
    } else if (kind < 98) {
        const QChar letter = QStringLiteral("NRVSCDEFGABXZ").at(below(13));
        const Qt::KeyboardModifiers modifiers[] = {Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier,
                                                   Qt::ControlModifier | Qt::ShiftModifier, Qt::AltModifier};
        const Qt::KeyboardModifiers modifier = modifiers[below(5)];
        note(QStringLiteral("type %1 with modifiers %2").arg(letter).arg(int(modifier)));
        QWidget *target = QApplication::focusWidget();
        if (!target || !exercise() || !exercise()->isAncestorOf(target))
            target = exercise();
        if (target)
            QTest::keyClick(target, Qt::Key(letter.unicode()), modifier);
    } else if (!posted) {
        note(QStringLiteral("exit, answered No"));
        boxes.scriptAnswers({false});
        m_exitAsked = true;
        m_window.close();
    }
}

QString Soak::brokenInvariant()
{
    const auto &records = platform.records();
    for (; m_checked < records.size(); ++m_checked) {
        const auto &record = records[m_checked];
        if (record.call == RecordingMidiPlatform::Call::Send && (record.data1() > 127 || record.data2() > 127 || record.result != 0))
            return QStringLiteral("message %1 was sent wrong, or to a closed port").arg(record.message, 0, 16);
    }
    for (const auto &box : boxes.boxes())
        if (!(box.isQuestion && m_exitAsked))
            return QStringLiteral("unexpected message box: ") + box.text;
    boxes.clear();
    if (!midi.MidiPortOpen)
        return QStringLiteral("the port is closed");
    ExercisePanel *shown = exercise();
    if (!shown || shown->objectName() != QLatin1String(WindowNames[m_window.CurrentExercise]))
        return QStringLiteral("the window shown is not the one the bar shows");
    for (ExercisePanel *window : m_window.findChildren<ExercisePanel *>())
        if (window != shown && !window->isUnloaded())
            return QStringLiteral("%1 is still loaded beside %2").arg(window->objectName(), shown->objectName());
    for (int index = 0; index < 5; ++index)
        if (barButton(index)->isChecked() != (index == m_window.CurrentExercise))
            return QStringLiteral("bar button %1 is in the wrong state").arg(index);
    // Each scored answer needs a question counted after the one before.
    const QStringList score = test::score(shown);
    bool numbers = true;
    for (const QString &counter : score)
        numbers = numbers && counter.toInt() >= 0 && counter == QString::number(counter.toInt());
    if (!numbers || score[2].toInt() > score[0].toInt())
        return QStringLiteral("the score cannot be: ") + score.join(u' ');
    return std::exchange(m_scoreError, QString());
}

} // namespace

class SoakTest : public QObject
{
    Q_OBJECT

private slots:
    // Fixed seeds, so that a run fails or passes the same way every time.
    void randomActionsKeepTheInvariants()
    {
        QList<quint32> seeds{1u, 20261123u};
        if (qEnvironmentVariableIsSet("TONARO_SOAK_SEED"))
            seeds << quint32(qEnvironmentVariableIntValue("TONARO_SOAK_SEED"));
        const int actions = qEnvironmentVariableIsSet("TONARO_SOAK_ACTIONS") ? qEnvironmentVariableIntValue("TONARO_SOAK_ACTIONS") : 1500;
        for (const quint32 seed : seeds) {
            qInfo("soak: seed %u, %d actions", seed, actions);
            Soak soak(seed);
            for (int i = 0; i < actions; ++i) {
                soak.act();
                if (const QString why = soak.brokenInvariant(); !why.isEmpty()) {
                    for (const QString &line : soak.log)
                        qWarning("  %s", qPrintable(line));
                    QFAIL(qPrintable(QStringLiteral("seed %1: %2").arg(seed).arg(why)));
                }
            }
        }
    }
};

QTEST_MAIN(SoakTest)
#include "tst_soak.moc"
