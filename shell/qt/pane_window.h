// A pane: a child window of the frame with one text that can be read, selected and copied, but not changed.
// Its font and background are the user's. Closing it only hides it. Interface thread only.
#pragma once

#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <vector>

#include "control/settings.h"
#include "shell/qt/pane_text.h"

class PaneEdit : public QPlainTextEdit {
    Q_OBJECT

  public:
    explicit PaneEdit(QWidget* parent = nullptr);

  protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
};

class PaneWindow : public QMdiSubWindow {
    Q_OBJECT

  public:
    explicit PaneWindow(ChildWindow which, QWidget* parent = nullptr);

    ChildWindow kind() const { return pane; }
    // Each replaces the text only if something changes.
    void set_text(const char* text);
    void set_game_text(const char* text, int begin, int end);
    // The protocol grows at its end, and the end stays in view.
    void append_text(const char* text, bool received);
    void trim_text(size_t limit, size_t kept);

    // Takes over the font and the background of the settings.
    void follow_settings();
    // The title in the current language.
    void follow_language();

    // The height of the window with so many lines of text, and its width with such a line.
    int height_for_lines(int lines) const;
    int width_for_text(const QString& line) const;

    PaneEdit& edit() { return *text_edit; }

  Q_SIGNALS:
    void closed(int pane);

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void colour_range();
    void rebuild_protocol();

    ChildWindow pane;
    PaneEdit* text_edit;
    PaneText shown;
    std::vector<DxpPiece> protocol;
};

// The font of the panes, by the settings.
QFont pane_font();
