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
    const QString& text() const { return told; }
    // What is being typed stands in front of the text, until it is empty.
    void set_typing(const QString& text);
    const QString& typing() const { return typed; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const QString& shown() const;
    void show_line();

    QString told;
    QString typed;
};
