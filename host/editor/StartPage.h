#pragma once

#include <QStringList>
#include <QWidget>

class QVBoxLayout;

namespace editor {

/// What one sees when nothing is open: something to do.
class StartPage : public QWidget {
    Q_OBJECT

public:
    explicit StartPage(QWidget* parent = nullptr);

    /// Newest first, each one path or several joined by line ends, as the recent files are kept.
    void setRecent(const QStringList& entries);

signals:
    void openFilesRequested();
    void openFolderRequested();
    void openProjectRequested();
    void sampleRequested();
    void recentRequested(const QString& entry);

private:
    QVBoxLayout* m_recent;
    QWidget* m_recentTitle;
};

/// How an entry of the recent files reads: the name, then the folder.
QString recentTitle(const QString& entry);

}  // namespace editor
