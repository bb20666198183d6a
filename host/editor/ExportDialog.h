#pragma once

#include <QDialog>
#include <QTemporaryFile>

#include "host/editor/ExportProcess.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

namespace editor {

/// Where the rendered frames go, and how far they are. The window stays usable meanwhile; what is
/// edited then does not change the export.
class ExportDialog : public QDialog {
    Q_OBJECT

public:
    /// `foreignPlugin` as EditorSession says it.
    ExportDialog(const QString& proposal, bool isSequence, const QString& foreignPlugin,
                 QWidget* parent = nullptr);

    /// What is rendered, whatever is edited meanwhile: a project as a file of this name.
    QString projectFile() const { return m_project.fileName(); }
    void setProject(const QByteArray& bytes);

    void setOutput(const QString& output);
    void start();
    bool isRunning() const { return m_process.isRunning(); }

protected:
    void reject() override;  ///< asks the renderer to stop first

private:
    void browse();
    void showProgress(int done, int total, double secondsLeft);
    void showEnd(bool cancelled, const QString& error, const QStringList& notices);

    QTemporaryFile m_project;
    const bool m_isSequence;
    const QString m_foreignPlugin;
    ExportProcess m_process;
    QLineEdit* m_output;
    QPushButton* m_browse;
    QPushButton* m_start;
    QPushButton* m_close;
    QProgressBar* m_bar;
    QLabel* m_status;
};

}  // namespace editor
