#include "LinkLabel.h"

namespace tonaro {

LinkLabel::LinkLabel(const QString &address, QWidget *parent)
    : QLabel(QStringLiteral("<a href=\"%1\">%1</a>").arg(address.toHtmlEscaped()), parent)
    , m_textLength(int(address.size()))
{
    setTextFormat(Qt::RichText);
    setTextInteractionFlags(Qt::TextBrowserInteraction);
    setOpenExternalLinks(true);
}

bool LinkLabel::focusNextPrevChild(bool next)
{
    if (QLabel::focusNextPrevChild(next))
        return true;
    // Past the last link, with nowhere else to go: search again from the
    // start of the text (going back, from its end).
    setSelection(next ? 0 : m_textLength, 0);
    return QLabel::focusNextPrevChild(next);
}

} // namespace tonaro
