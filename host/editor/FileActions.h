#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

namespace editor {

class EditorDocument;
class EditorSession;
class EditorState;
class ExportDialog;
class Journal;

/// What is done to the document as a whole: opening, saving, recovering, exporting. Dialogs belong
/// to the window.
class FileActions : public QObject {
    Q_OBJECT

public:
    FileActions(EditorDocument& document, const EditorState& state, QWidget* window);

    /// Opens a project, or pictures as a new one, after asking about unsaved changes. False, and a
    /// message shown, when it cannot be.
    bool open(const QStringList& paths);
    void askForFiles();
    void askForFolder();
    void askForProject();
    void openSample();
    void askForOtherInput();  ///< under the same filters

    /// What was opened or saved lately, the latest first; each is the paths of one opening, a line
    /// each.
    QStringList recent() const;
    /// Asks whether to forget it when a part of it is no longer there.
    void openRecent(const QString& entry);
    void forgetRecent();

    bool save();
    bool saveAs(const QString& path);
    bool askAndSave();
    /// False when the user wants to keep on with a document that has unsaved changes.
    bool confirmDiscard();
    void closeDocument();
    /// False when the user wants to keep on with that, or with an export that runs.
    bool confirmQuit();

    /// Offers what a crash left behind. Nothing of it is lost before the user has decided.
    void offerRecovery(Journal& journal);

    void showExport();
    /// That makes the picture that is shown: of the filters up to the shown one.
    void copyCommandLine();

signals:
    void recentChanged();
    void said(const QString& message);  ///< what was done

private:
    EditorSession& session() const;
    void remember(const QStringList& paths);
    void setRecent(const QStringList& entries);
    void showNotices(const QStringList& notices);

    EditorDocument& m_document;
    const EditorState& m_state;
    QWidget* m_window;
    QPointer<ExportDialog> m_export;
};

}  // namespace editor
