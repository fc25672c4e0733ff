#pragma once

#include <QLabel>

namespace tonaro {

// A label whose links the keyboard reaches: Tab highlights a link and Enter
// opens it in the desktop's browser. When Tab finds no further link and no
// other control to go to, it comes round to the first link again; a plain
// label would keep the focus with nothing highlighted, so that every other
// Tab showed no focus at all.
class LinkLabel : public QLabel
{
    Q_OBJECT

public:
    explicit LinkLabel(const QString &address, QWidget *parent = nullptr);

protected:
    bool focusNextPrevChild(bool next) override;

private:
    int m_textLength;
};

} // namespace tonaro
