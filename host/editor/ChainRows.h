#pragma once

#include <QWidget>

class QLabel;
class QToolButton;
class FxGuiImageFilter;

namespace editor {

constexpr int kRowBarWidth = 22;  ///< of the buttons at the left of a row

/// One end of the chain: the source or the result.
class StageRow : public QWidget {
    Q_OBJECT

public:
    StageRow(const QString& title, const QString& toolTip, QWidget* parent);

    void setShown(bool shown);  ///< whether it is the stage that is looked at
    void setNote(const QString& note);

signals:
    void chosen();  ///< to be looked at

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const QString m_title;
    QToolButton* m_eye;
    QLabel* m_label;
};

/// One applied filter: its entry widget, which becomes a child, beside a bar of buttons.
class EntryRow : public QWidget {
    Q_OBJECT

public:
    EntryRow(FxGuiImageFilter* entry, QWidget* parent);

    int objectId() const { return m_objectId; }
    FxGuiImageFilter* entry() const { return m_entry; }

    void setShown(bool shown);  ///< whether its stage is looked at
    void setObjections(const QStringList& texts);
    void showName();
    void setFolded(bool folded);

signals:
    void chosen();           ///< to be looked at, or no longer
    void moved(int places);  ///< by keys
    void dragged(int y);     ///< in coordinates of the parent
    void dropped();
    void renameRequested();
    void duplicateRequested();
    void menuRequested(const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    FxGuiImageFilter* m_entry;
    const int m_objectId;
    QToolButton* m_eye;
    QToolButton* m_fold;
    QToolButton* m_warning;
    bool m_isShown = false;
    bool m_isFolded = false;
};

}  // namespace editor
