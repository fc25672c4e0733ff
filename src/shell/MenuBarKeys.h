#pragma once

#include <QProxyStyle>

namespace tonaro {

// The desktop's style for the menu bar, with one difference: Alt pressed
// and released alone puts the menu bar under the keyboard (arrow keys move,
// Enter chooses) in every style. The menu entries carry no mnemonic, so this
// is how a keyboard user reaches them; some styles leave it off.
class MenuBarKeys : public QProxyStyle
{
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption *option = nullptr, const QWidget *widget = nullptr,
                  QStyleHintReturn *returnData = nullptr) const override;
};

} // namespace tonaro
