#include "FocusChain.h"

#include <QLayout>
#include <QWidget>
#include <algorithm>

namespace tonaro::focuschain {

namespace {

void addLayoutWidgets(const QLayout *layout, QList<QWidget *> &widgets)
{
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem *item = layout->itemAt(i);
        if (QWidget *widget = item->widget())
            widgets << widget;
        else if (const QLayout *inner = item->layout())
            addLayoutWidgets(inner, widgets);
    }
}

// Where a widget, or the first control inside it, stands in the chain.
qsizetype chainPosition(const QWidget *widget, const QList<QWidget *> &chain)
{
    for (qsizetype i = 0; i < chain.size(); ++i) {
        if (chain[i] == widget || widget->isAncestorOf(chain[i]))
            return i;
    }
    return chain.size();
}

void visit(const QWidget *parent, const QList<QWidget *> &chain, QList<QWidget *> &order)
{
    QList<QWidget *> children;
    if (const QLayout *layout = parent->layout())
        addLayoutWidgets(layout, children);
    QList<QWidget *> placedByHand;
    for (QObject *object : parent->children()) {
        auto *child = qobject_cast<QWidget *>(object);
        if (child && !child->isWindow() && !children.contains(child))
            placedByHand << child;
    }
    std::stable_sort(placedByHand.begin(), placedByHand.end(), [&chain](const QWidget *a, const QWidget *b) {
        return chainPosition(a, chain) < chainPosition(b, chain);
    });
    for (QWidget *child : children + placedByHand) {
        if (chain.contains(child))
            order << child;
        visit(child, chain, order);
    }
}

} // namespace

QList<QWidget *> controls(const QWidget *root)
{
    QList<QWidget *> found;
    for (QWidget *widget = root->nextInFocusChain(); widget != root; widget = widget->nextInFocusChain()) {
        // A widget that hands its focus to a proxy is no stop of its own; the
        // proxy is.
        if (root->isAncestorOf(widget) && widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy())
            found << widget;
    }
    return found;
}

QList<QWidget *> stops(const QWidget *root)
{
    QList<QWidget *> found;
    for (QWidget *widget : controls(root)) {
        // Qt takes the Tab stop away from the unchecked buttons of an
        // exclusive group, so the policy already tells which one counts.
        if ((widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && widget->isVisibleTo(root)
            && widget->isEnabled())
            found << widget;
    }
    return found;
}

QList<QWidget *> inLayoutOrder(const QWidget *root)
{
    const QList<QWidget *> chain = controls(root);
    QList<QWidget *> order;
    visit(root, chain, order);
    return order;
}

void arrange(const QList<QWidget *> &order)
{
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

} // namespace tonaro::focuschain
