// What a keyboard or screen-reader user meets in every window: the names the
// accessibility tree gives the controls, the labels that name them, and
// where Tab goes and whether the focus shows.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "midi/optionsform.h"
#include "shell/MDIForm1.h"
#include "shell/formabout.h"

#include <QAbstractSlider>
#include <QAccessible>
#include <QComboBox>
#include <QRadioButton>
#include <QTextDocumentFragment>
#include <memory>

using namespace tonaro;

namespace {

enum class Root { Melody, Intervals, Chords, Scales, Harmony, IntervalsPractice, Settings, About };

constexpr std::array OperableRoles{QAccessible::Button, QAccessible::CheckBox, QAccessible::RadioButton,
                                   QAccessible::ComboBox, QAccessible::Slider, QAccessible::SpinBox,
                                   QAccessible::Link, QAccessible::MenuItem, QAccessible::EditableText};

bool operable(QAccessibleInterface *iface)
{
    return std::find(OperableRoles.begin(), OperableRoles.end(), iface->role()) != OperableRoles.end();
}

bool isList(const QWidget *widget)
{
    return qobject_cast<const QComboBox *>(widget) || qobject_cast<const QAbstractSlider *>(widget);
}

// The controls a user can operate: buttons of every kind, lists, sliders and
// labels with links.
bool isControl(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->textInteractionFlags() & Qt::LinksAccessibleByKeyboard;
    return qobject_cast<const QAbstractButton *>(widget) || isList(widget);
}

QString labelledBy(QAccessibleInterface *iface)
{
    QStringList labels;
    for (const auto &[label, relation] : iface->relations(QAccessible::Label))
        labels << label->text(QAccessible::Name);
    return labels.join(u' ').trimmed();
}

// A combo box reads out its current item as its name on this platform, so a
// screen reader names it by the label it is related to.
QString spokenName(QAccessibleInterface *iface)
{
    return iface->role() == QAccessible::ComboBox ? labelledBy(iface) : iface->text(QAccessible::Name).trimmed();
}

// Tab stops on the selected option button of a group and the arrow keys move
// between them: a group counts as reached as a whole.
bool reached(QWidget *control, const QList<QWidget *> &cycle)
{
    const auto *option = qobject_cast<QRadioButton *>(control);
    return cycle.contains(control) || (option && option->autoExclusive() && std::any_of(cycle.begin(), cycle.end(), [option](QWidget *stop) {
        return qobject_cast<QRadioButton *>(stop) && stop->parentWidget() == option->parentWidget();
    }));
}

QRect inWindow(const QWidget *widget)
{
    return {widget->mapTo(widget->window(), QPoint(0, 0)), widget->size()};
}

// Reading order, tolerantly: Tab may go down, right along a row, or up into
// a column further right; going back up the same column or left along a row
// is a jump backwards.
bool jumpsBack(const QRect &from, const QRect &to)
{
    constexpr int Slack = 2;
    const bool above = to.bottom() < from.top() - Slack;
    const bool sameRow = to.top() <= from.bottom() && from.top() <= to.bottom();
    return (above && to.left() < from.right() - Slack) || (sameRow && !above && to.right() < from.left() + Slack);
}

QString describe(const QWidget *widget)
{
    return QLatin1String(widget->metaObject()->className()) + u' ' + widget->objectName();
}

// "prefix<i>=name" for the i-th name: the picture buttons and what they are called.
QStringList named(const QString &prefix, const QStringList &names)
{
    QStringList rows;
    for (const QString &name : names)
        rows << prefix + QString::number(rows.size()) + u'=' + name;
    return rows;
}

struct Scene {
    test::TestServices fx{false};
    std::unique_ptr<QWidget> root;

    explicit Scene(Root which)
    {
        if (which == Root::Settings) {
            root = std::make_unique<optionsform>(fx.midi);
        } else if (which == Root::About) {
            root = std::make_unique<formabout>();
        } else {
            auto shell = std::make_unique<MDIForm1>(fx.services);
            shell->MDIForm_Load();
            if (which != Root::Melody)
                shell->botton1_Click(which == Root::IntervalsPractice ? 1 : int(which));
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            if (which == Root::IntervalsPractice)
                test::click(shell->exerciseWindow(), QStringLiteral("Notest"));
            root = std::move(shell);
        }
        root->show();
        root->activateWindow();
        if (!QTest::qWaitForWindowActive(root.get()))
            qFatal("the window under test never became active");
    }

    // The controls shown; with tabbable, only those Tab must reach.
    QList<QWidget *> controls(bool tabbable) const
    {
        QList<QWidget *> found;
        for (QWidget *widget : root->findChildren<QWidget *>())
            if (isControl(widget) && widget->window() == root.get() && widget->isVisible()
                && (!tabbable || (widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus))))
                found << widget;
        return found;
    }
};

} // namespace

class AccessibilityTest : public QObject
{
    Q_OBJECT

private slots:
    void everyWindowIsNamedLabelledAndReachedByTab_data();
    void everyWindowIsNamedLabelledAndReachedByTab();
};

void AccessibilityTest::everyWindowIsNamedLabelledAndReachedByTab_data()
{
    QTest::addColumn<Root>("which");
    QTest::addColumn<QStringList>("pictures"); // "objectName=name" of buttons that show a picture or a symbol
    QTest::newRow("melody") << Root::Melody
        << named("botton1_", {"Melody", "Intervals", "Chords", "Scale", "Armony"})
            + named("tasto_", {"C", "C sharp", "D", "D sharp", "E", "F", "F sharp", "G", "G sharp", "A", "A sharp", "B"});
    QTest::newRow("intervals") << Root::Intervals << QStringList{"playint_0=Play Unison", "playint_5=Play Perfect 4th", "playint_12=Play Octave"};
    QTest::newRow("chords") << Root::Chords << QStringList{"playchord_0=Play maj", "playchord_19=Play 13"};
    QTest::newRow("scales") << Root::Scales << QStringList{"playscale_2=Play armonic minor", "playscale_17=Play locrian"};
    QTest::newRow("harmony") << Root::Harmony << QStringList{"playchord_0=Play I", "playchord_6=Play VII"};
    QTest::newRow("intervals practising") << Root::IntervalsPractice << QStringList();
    QTest::newRow("settings") << Root::Settings << QStringList();
    QTest::newRow("about") << Root::About << QStringList();
}

void AccessibilityTest::everyWindowIsNamedLabelledAndReachedByTab()
{
    QFETCH(Root, which);
    QFETCH(QStringList, pictures);
    Scene scene(which);
    const QList<QWidget *> controls = scene.controls(true);
    QVERIFY(!controls.isEmpty());

    // Every control is read out as a control of its kind, by a name of its
    // own; a name of symbols alone ("▶", "#") says nothing.
    QSet<QString> seen;
    for (QWidget *control : scene.controls(false)) {
        QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
        QVERIFY2(iface && (operable(iface) || qobject_cast<QLabel *>(control)), qPrintable(describe(control) + QStringLiteral(" has no control's role")));
        const QString name = spokenName(iface);
        QVERIFY2(std::any_of(name.begin(), name.end(), [](QChar c) { return c.isLetterOrNumber(); }),
                 qPrintable(describe(control) + QStringLiteral(" has no name: ") + name));
        const QString key = QString::number(iface->role()) + u'/' + name;
        QVERIFY2(!seen.contains(key), qPrintable(QStringLiteral("two controls are called ") + name));
        seen << key;
    }
    for (const QString &picture : std::as_const(pictures))
        QCOMPARE(QAccessible::queryAccessibleInterface(test::child(scene.root.get(), picture.section(u'=', 0, 0)))
                     ->text(QAccessible::Name),
                 picture.section(u'=', 1));

    // A label is read as it shows (a name set over a counter or an answer
    // would hide its value), and a caption just left of or above a list or
    // slider is its buddy.
    for (QLabel *label : scene.root->findChildren<QLabel *>()) {
        if (!label->isVisible() || label->window() != scene.root.get())
            continue;
        const bool rich = label->textFormat() == Qt::RichText
            || (label->textFormat() == Qt::AutoText && Qt::mightBeRichText(label->text()));
        const QString shown = (rich ? QTextDocumentFragment::fromHtml(label->text()).toPlainText() : label->text()).trimmed();
        const QString read = QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
        QVERIFY2(read.contains(shown), qPrintable(label->objectName() + QStringLiteral(" shows ") + shown
                                                  + QStringLiteral(" but is read as ") + read));
        for (QWidget *sibling : label->parentWidget()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            const QRect l = label->geometry(), c = sibling->geometry();
            const bool before = l.right() <= c.left() && c.left() - l.right() < 40 && l.top() <= c.bottom() && c.top() <= l.bottom();
            const bool over = l.bottom() <= c.top() && c.top() - l.bottom() < 12 && l.left() <= c.right() && c.left() <= l.right();
            QVERIFY2(!isList(sibling) || !(before || over) || label->buddy() == sibling,
                     qPrintable(label->objectName() + QStringLiteral(" describes ") + sibling->objectName()
                                + QStringLiteral(" but is not its buddy")));
        }
    }
    for (QWidget *control : scene.controls(false))
        QVERIFY2(!isList(control) || !labelledBy(QAccessible::queryAccessibleInterface(control)).isEmpty()
                     || !control->accessibleName().isEmpty(),
                 qPrintable(control->objectName() + QStringLiteral(" has no label")));

    // One Tab first, so that the window shows keyboard focus as it does for a
    // user; then round the whole cycle, which must come back to its start.
    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : scene.root.get(), Qt::Key_Tab);
    QWidget *start = QApplication::focusWidget();
    QVERIFY(start);
    QList<QWidget *> cycle{start};
    // Every stop as it looked when Tab landed on it, to be judged below.
    QList<std::pair<QWidget *, QImage>> landings{{start, start->grab().toImage()}};
    for (qsizetype presses = 0; presses <= 2 * controls.size() + 4; ++presses) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget *to = QApplication::focusWidget();
        QVERIFY(to);
        landings.emplace_back(to, to->grab().toImage());
        if (to == start)
            break;
        QVERIFY2(!cycle.contains(to), qPrintable(QStringLiteral("Tab loops back to ") + describe(to)));
        cycle << to;
    }
    QCOMPARE(QApplication::focusWidget(), start);
    for (qsizetype step = 1; step <= cycle.size(); ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(QApplication::focusWidget(), cycle[(cycle.size() - step) % cycle.size()]);
    }
    for (const auto &[stop, look] : std::as_const(landings)) {
        stop->clearFocus();
        QVERIFY2(stop->grab().toImage() != look, qPrintable(describe(stop) + QStringLiteral(" shows no focus")));
    }
    for (QWidget *control : controls)
        QVERIFY2(reached(control, cycle), qPrintable(QStringLiteral("Tab never reaches ") + describe(control)));
    for (QWidget *stop : std::as_const(cycle))
        QVERIFY2(isControl(stop), qPrintable(QStringLiteral("Tab stops on ") + describe(stop)));

    // Read from the top-left stop, the cycle is in reading order.
    std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end(), [](QWidget *a, QWidget *b) {
                    return std::pair(inWindow(a).top(), inWindow(a).left()) < std::pair(inWindow(b).top(), inWindow(b).left());
                }), cycle.end());
    for (qsizetype i = 1; i < cycle.size(); ++i)
        QVERIFY2(!jumpsBack(inWindow(cycle[i - 1]), inWindow(cycle[i])),
                 qPrintable(QStringLiteral("Tab jumps back from ") + describe(cycle[i - 1]) + QStringLiteral(" to ") + describe(cycle[i])));
}

QTEST_MAIN(AccessibilityTest)
#include "tst_accessibility.moc"
