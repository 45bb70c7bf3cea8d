// The one line of text at the bottom. A text that is too long ends in dots and never widens the window.
// Interface thread only.
#pragma once

#include <QString>
#include <QWidget>

class StatusLine : public QWidget {
    Q_OBJECT

  public:
    explicit StatusLine(QWidget* parent = nullptr);

    void set_text(const QString& text);
    const QString& text() const { return shown; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString shown;
};
