#pragma once

#include <QToolButton>

namespace tonaro {

// A button of the exercise bar: raised at rest, pressed while its exercise
// is shown. Only a button made with a hover highlight lights up under the
// mouse; the others look the same whether the mouse is over them or not.
class BarButton : public QToolButton
{
    Q_OBJECT
public:
    BarButton(bool hoverHighlight, QWidget *parent = nullptr);

    // The picture, an SVG drawing whose staff is drawn in the palette's text
    // colour and whose notes are lightened on a dark palette, so that it
    // stays clear on light and dark desktops alike.
    void setPicture(const QString &svgPath);
    QPixmap picture() const;

    bool hasHoverHighlight() const { return m_hoverHighlight; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_hoverHighlight;
    QByteArray m_svg;
    mutable QPixmap m_picture;
    mutable QString m_pictureKey;
};

} // namespace tonaro
