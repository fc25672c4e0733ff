#include "MenuBarKeys.h"

namespace tonaro {

int MenuBarKeys::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                           QStyleHintReturn *returnData) const
{
    if (hint == SH_MenuBar_AltKeyNavigation)
        return 1;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

} // namespace tonaro
