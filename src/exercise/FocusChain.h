#pragma once

#include <QList>

class QWidget;

// Walks of a window's Tab chain, limited to the controls inside one widget.
namespace tonaro::focuschain {

// Every control inside root that can take the focus at all, in the order the
// chain holds them now (disabled, hidden and unchecked exclusive buttons too).
QList<QWidget *> controls(const QWidget *root);

// The controls inside root that Tab stops at now, in the order it visits them.
QList<QWidget *> stops(const QWidget *root);

// The controls of controls(root) in the order a reader meets them: each
// widget's layout, item by item and into nested layouts, then the children
// it places by hand (a piano's keys), which keep their order in the chain.
QList<QWidget *> inLayoutOrder(const QWidget *root);

// Links the controls into the chain in the order given.
void arrange(const QList<QWidget *> &order);

} // namespace tonaro::focuschain
