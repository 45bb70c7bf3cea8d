// How the child windows of the frame are drawn: as the desktop's style does it, but for the cross that closes
// them, which some styles draw in black on whatever colour the bar has.
#pragma once

#include <QProxyStyle>
#include <QStyleOptionTitleBar>

class ChildStyle : public QProxyStyle {
    Q_OBJECT

  public:
    // On a style of its own of the same kind as the program's.
    ChildStyle();

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;

  private:
    void draw_cross(const QStyleOptionTitleBar& bar, QPainter& painter, const QWidget* widget) const;
};
