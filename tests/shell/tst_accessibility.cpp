// What a keyboard or screen-reader user meets in every window: the names the
// accessibility tree gives the controls, the labels that name them, and
// where Tab goes and whether the focus shows.
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercises/Formchords/ChordCatalogue.h"
#include "exercises/Formscales/ScaleCatalogue.h"
#include "exercises/formarmonia/DegreeCatalogue.h"
#include "exercises/formintervalli/IntervalCatalogue.h"
#include "midi/optionsform.h"
#include "shell/MDIForm1.h"
#include "shell/formabout.h"

#include <QAbstractSlider>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QTextDocumentFragment>
#include <QToolButton>
#include <memory>

using namespace tonaro;

namespace {

enum class Root { Melody, Intervals, Chords, Scales, Harmony, IntervalsPractice, Settings, About };

constexpr std::array<QAccessible::Role, 9> OperableRoles{
    QAccessible::Button, QAccessible::CheckBox, QAccessible::RadioButton, QAccessible::ComboBox,
    QAccessible::Slider, QAccessible::SpinBox, QAccessible::Link, QAccessible::MenuItem, QAccessible::EditableText};

bool operable(QAccessible::Role role)
{
    return std::find(OperableRoles.begin(), OperableRoles.end(), role) != OperableRoles.end();
}

QString labelledBy(QAccessibleInterface *iface)
{
    QStringList labels;
    for (const auto &[label, relation] : iface->relations(QAccessible::Label))
        labels << label->text(QAccessible::Name);
    return labels.join(QLatin1Char(' ')).trimmed();
}

// What a screen reader announces as the control's name. A combo box reads
// out its current item as its name on this platform, so it is named by the
// label it is related to.
QString spokenName(QAccessibleInterface *iface)
{
    if (iface->role() == QAccessible::ComboBox)
        return labelledBy(iface);
    return iface->text(QAccessible::Name).trimmed();
}

void collect(QAccessibleInterface *iface, QList<QAccessibleInterface *> &found)
{
    if (!iface || iface->state().invisible)
        return;
    found << iface;
    for (int i = 0; i < iface->childCount(); ++i)
        collect(iface->child(i), found);
}

// The controls a user can operate: buttons of every kind, boxes, lists,
// sliders and labels with links.
bool isControl(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->textInteractionFlags() & Qt::LinksAccessibleByKeyboard;
    return qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QComboBox *>(widget)
        || qobject_cast<const QAbstractSlider *>(widget);
}

// Tab stops on one option button of a group, the selected one, and the
// arrow keys move between them: a group counts as reached as a whole.
bool reached(QWidget *control, const QList<QWidget *> &cycle)
{
    if (cycle.contains(control))
        return true;
    const auto *option = qobject_cast<QRadioButton *>(control);
    return option && option->autoExclusive() && std::any_of(cycle.begin(), cycle.end(), [option](QWidget *stop) {
        return qobject_cast<QRadioButton *>(stop) && stop->parentWidget() == option->parentWidget();
    });
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
    const bool left = to.right() < from.left() + Slack;
    return (above && to.left() < from.right() - Slack) || (sameRow && !above && left);
}

QString describe(const QWidget *widget)
{
    return QStringLiteral("%1 %2").arg(QLatin1String(widget->metaObject()->className()), widget->objectName());
}

void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

struct Scene {
    test::TestServices fx{false};
    std::unique_ptr<MDIForm1> shell;
    std::unique_ptr<QWidget> dialog;
    QWidget *root = nullptr;

    explicit Scene(Root which)
    {
        if (which == Root::Settings || which == Root::About) {
            if (which == Root::Settings)
                dialog = std::make_unique<optionsform>(fx.midi);
            else
                dialog = std::make_unique<formabout>();
            root = dialog.get();
        } else {
            shell = std::make_unique<MDIForm1>(fx.services);
            shell->MDIForm_Load();
            const int bar = which == Root::IntervalsPractice ? 1 : int(which);
            if (bar != 0)
                shell->botton1_Click(bar);
            settle();
            if (which == Root::IntervalsPractice)
                test::click(shell->exerciseWindow()->findChild<QRadioButton *>(QStringLiteral("Notest")));
            root = shell.get();
        }
        root->show();
        root->activateWindow();
        if (!QTest::qWaitForWindowActive(root))
            qFatal("the window under test never became active");
    }

    QList<QAccessibleInterface *> tree() const
    {
        QList<QAccessibleInterface *> found;
        collect(QAccessible::queryAccessibleInterface(root), found);
        return found;
    }
    QList<QWidget *> controls() const
    {
        QList<QWidget *> found;
        for (QWidget *widget : root->findChildren<QWidget *>()) {
            if (isControl(widget) && widget->window() == root && widget->isVisible() && widget->isEnabled()
                && (widget->focusPolicy() & Qt::TabFocus))
                found << widget;
        }
        return found;
    }
};

void addRootRows()
{
    QTest::addColumn<Root>("which");
    QTest::newRow("main window, melody") << Root::Melody;
    QTest::newRow("main window, intervals") << Root::Intervals;
    QTest::newRow("main window, chords") << Root::Chords;
    QTest::newRow("main window, scales") << Root::Scales;
    QTest::newRow("main window, harmony") << Root::Harmony;
    QTest::newRow("main window, intervals practising") << Root::IntervalsPractice;
    QTest::newRow("settings") << Root::Settings;
    QTest::newRow("about") << Root::About;
}

} // namespace

class AccessibilityTest : public QObject
{
    Q_OBJECT

private slots:
    void everyControlHasAUniqueName_data() { addRootRows(); }
    void everyControlHasAUniqueName();
    void pictureButtonsSayWhatTheyDo_data();
    void pictureButtonsSayWhatTheyDo();
    void labelsShowTheirTextAndNameTheirControls_data() { addRootRows(); }
    void labelsShowTheirTextAndNameTheirControls();
    void tabVisitsEveryControlInReadingOrderWithVisibleFocus_data() { addRootRows(); }
    void tabVisitsEveryControlInReadingOrderWithVisibleFocus();
};

void AccessibilityTest::everyControlHasAUniqueName()
{
    QFETCH(Root, which);
    Scene scene(which);
    const QList<QAccessibleInterface *> tree = scene.tree();

    // Every control must have its own interface of its own kind; a tree that
    // came back empty or generic would make the checks below pass on nothing.
    const QList<QWidget *> controls = scene.controls();
    QVERIFY(!controls.isEmpty());
    for (QWidget *control : controls) {
        QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
        QVERIFY2(iface && tree.contains(iface), qPrintable(describe(control) + QStringLiteral(" is not in the tree")));
        QVERIFY2(operable(iface->role()) || qobject_cast<QLabel *>(control),
                 qPrintable(describe(control) + QStringLiteral(" has the role of no control")));
    }

    QList<QAccessibleInterface *> toName;
    for (QAccessibleInterface *iface : tree) {
        if (operable(iface->role()) || controls.contains(qobject_cast<QWidget *>(iface->object())))
            toName << iface;
    }
    QSet<QString> seen;
    for (QAccessibleInterface *iface : std::as_const(toName)) {
        const QString name = spokenName(iface);
        const QString who = iface->object() ? iface->object()->objectName() : QString();
        // A name of symbols alone ("▶", "#") says nothing.
        QVERIFY2(std::any_of(name.begin(), name.end(), [](QChar c) { return c.isLetterOrNumber(); }),
                 qPrintable(who + QStringLiteral(" has no name: \"") + name + QLatin1Char('"')));
        const QString key = QString::number(iface->role()) + QLatin1Char('/') + name;
        QVERIFY2(!seen.contains(key), qPrintable(QStringLiteral("two controls are called \"%1\"").arg(name)));
        seen << key;
    }
}

void AccessibilityTest::pictureButtonsSayWhatTheyDo_data()
{
    QTest::addColumn<Root>("which");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QStringList>("names");

    const auto plays = [](std::span<const CatalogueEntry> catalogue) {
        QStringList names;
        for (const CatalogueEntry &entry : catalogue)
            names << QStringLiteral("Play ") + QLatin1String(entry.revealName);
        return names;
    };
    QTest::newRow("bar") << Root::Melody << "botton1_"
                         << QStringList{"Melody", "Intervals", "Chords", "Scale", "Armony"};
    QTest::newRow("piano keys") << Root::Melody << "tasto_"
                                << QStringList{"C", "C sharp", "D", "D sharp", "E", "F", "F sharp", "G",
                                               "G sharp", "A", "A sharp", "B"};
    QTest::newRow("intervals") << Root::Intervals << "playint_" << plays(IntervalCatalogue);
    QTest::newRow("chords") << Root::Chords << "playchord_" << plays(ChordCatalogue);
    QTest::newRow("scales") << Root::Scales << "playscale_" << plays(ScaleCatalogue);
    QTest::newRow("harmony") << Root::Harmony << "playchord_" << plays(DegreeCatalogue);
}

void AccessibilityTest::pictureButtonsSayWhatTheyDo()
{
    QFETCH(Root, which);
    QFETCH(QString, prefix);
    QFETCH(QStringList, names);
    Scene scene(which);
    for (int index = 0; index < names.size(); ++index) {
        auto *button = test::child<QAbstractButton>(scene.root, prefix + QString::number(index));
        QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(button);
        QVERIFY(iface);
        QCOMPARE(iface->text(QAccessible::Name), names[index]);
    }
    QVERIFY2(!scene.root->findChild<QAbstractButton *>(prefix + QString::number(names.size())),
             "more buttons than names");
}

void AccessibilityTest::labelsShowTheirTextAndNameTheirControls()
{
    QFETCH(Root, which);
    Scene scene(which);
    int labels = 0;
    for (QLabel *label : scene.root->findChildren<QLabel *>()) {
        if (!label->isVisible() || label->window() != scene.root)
            continue;
        // What the label shows must be what a screen reader reads: a name
        // set over a counter or an answer would hide its value.
        const bool rich = label->textFormat() == Qt::RichText
            || (label->textFormat() == Qt::AutoText && Qt::mightBeRichText(label->text()));
        const QString shown = (rich ? QTextDocumentFragment::fromHtml(label->text()).toPlainText() : label->text()).trimmed();
        const QString name = QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name);
        QVERIFY2(name.contains(shown), qPrintable(label->objectName() + QStringLiteral(" shows \"") + shown
                                                  + QStringLiteral("\" but is read as \"") + name + QLatin1Char('"')));
        ++labels;

        // A caption just left of or just above a list or slider describes it.
        for (QWidget *sibling : label->parentWidget()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            if (!qobject_cast<QComboBox *>(sibling) && !qobject_cast<QAbstractSlider *>(sibling))
                continue;
            const QRect l = label->geometry();
            const QRect c = sibling->geometry();
            const bool before = l.right() <= c.left() && c.left() - l.right() < 40 && l.top() <= c.bottom()
                && c.top() <= l.bottom();
            const bool overIt = l.bottom() <= c.top() && c.top() - l.bottom() < 12 && l.left() <= c.right()
                && c.left() <= l.right();
            if (before || overIt)
                QVERIFY2(label->buddy() == sibling,
                         qPrintable(label->objectName() + QStringLiteral(" describes ") + sibling->objectName()
                                    + QStringLiteral(" but is not its buddy")));
        }
    }
    QVERIFY(labels > 0);

    // Lists and sliders have no caption of their own: each must be labelled.
    for (QWidget *control : scene.controls()) {
        if (!qobject_cast<QComboBox *>(control) && !qobject_cast<QAbstractSlider *>(control))
            continue;
        QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
        QVERIFY2(!labelledBy(iface).isEmpty() || !control->accessibleName().isEmpty(),
                 qPrintable(control->objectName() + QStringLiteral(" has no label")));
    }
}

void AccessibilityTest::tabVisitsEveryControlInReadingOrderWithVisibleFocus()
{
    QFETCH(Root, which);
    Scene scene(which);
    const QList<QWidget *> controls = scene.controls();
    QVERIFY(!controls.isEmpty());

    // One Tab first, so that the window shows keyboard focus as it does for
    // a user; then round the whole cycle, which must come back to its start.
    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : scene.root, Qt::Key_Tab);
    QWidget *start = QApplication::focusWidget();
    QVERIFY(start);
    QList<QWidget *> cycle{start};
    // Every stop as it looked when Tab landed on it, to be judged below.
    QList<std::pair<QWidget *, QImage>> landings{{start, start->grab().toImage()}};
    for (int presses = 0; presses <= 2 * controls.size() + 4; ++presses) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget *to = QApplication::focusWidget();
        QVERIFY(to);
        landings.emplace_back(to, to->grab().toImage());
        if (to == start)
            break;
        QVERIFY2(!cycle.contains(to), qPrintable(QStringLiteral("Tab loops back to ") + describe(to)
                                                 + QStringLiteral(" before reaching the rest")));
        cycle << to;
    }
    QCOMPARE(QApplication::focusWidget(), start);

    // Shift+Tab walks the same cycle the other way.
    for (qsizetype step = 1; step <= cycle.size(); ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(QApplication::focusWidget(), cycle[(cycle.size() - step) % cycle.size()]);
    }

    // Wherever Tab lands, the control must look focused.
    for (const auto &[stop, look] : std::as_const(landings)) {
        stop->clearFocus();
        QVERIFY2(stop->grab().toImage() != look, qPrintable(describe(stop) + QStringLiteral(" shows no focus")));
    }

    for (QWidget *control : controls)
        QVERIFY2(reached(control, cycle), qPrintable(QStringLiteral("Tab never reaches ") + describe(control)));
    for (QWidget *stop : std::as_const(cycle))
        QVERIFY2(isControl(stop), qPrintable(QStringLiteral("Tab stops on ") + describe(stop)));

    // Read from the top-left stop, the cycle is in reading order.
    const auto topLeft = std::min_element(cycle.begin(), cycle.end(), [](QWidget *a, QWidget *b) {
        const QRect ra = inWindow(a), rb = inWindow(b);
        return std::pair(ra.top(), ra.left()) < std::pair(rb.top(), rb.left());
    });
    std::rotate(cycle.begin(), topLeft, cycle.end());
    for (qsizetype i = 1; i < cycle.size(); ++i)
        QVERIFY2(!jumpsBack(inWindow(cycle[i - 1]), inWindow(cycle[i])),
                 qPrintable(QStringLiteral("Tab jumps back from ") + describe(cycle[i - 1]) + QStringLiteral(" to ")
                            + describe(cycle[i])));

}

QTEST_MAIN(AccessibilityTest)
#include "tst_accessibility.moc"
