#pragma once

#include <QObject>
#include <QStringList>
#include <memory>
#include <string>
#include <vector>

#include "host/document/Project.h"
#include "host/editor/EditorSession.h"
#include "host/media/MediaSource.h"

namespace editor {

/// The open project: what it reads, where it is saved, whether it is. Its filters are in the kernel
/// store, its steps on the session's undo stack. GUI thread; everything that reads or writes throws
/// what host/media and host/document throw, and leaves the document as it was then.
class EditorDocument : public QObject {
    Q_OBJECT

public:
    explicit EditorDocument(EditorSession& session, QObject* parent = nullptr);

    /// A new project without filters that reads these inputs, as MediaSource::open() takes them.
    void newFromInputs(const std::vector<std::string>& inputs);
    /// Other inputs for the same filters.
    void replaceInputs(const std::vector<std::string>& inputs);
    void newEmpty();

    /// Returns what the file holds that cannot be used here, a line each. An input that is missing
    /// is such a line too: the project opens without it.
    QStringList openProject(const QString& path);
    void saveProject(const QString& path);

    /// The project as a file beside `path`.
    QByteArray projectBytes(const QString& path) const;
    /// Takes over what a crash left: bytes as projectBytes() made them for `path`, which may be
    /// empty. The document counts as changed.
    QStringList recover(const QByteArray& bytes, const QString& path);

    QString path() const { return m_path; }  ///< empty until saved
    QString name() const;                    ///< for a title
    bool isModified() const;
    bool isEmpty() const { return !m_source && m_session.undoStack().count() == 0; }

    std::shared_ptr<const media::MediaSource> source() const { return m_source; }
    quint64 sourceId() const { return m_sourceId; }
    const std::vector<std::string>& inputs() const { return m_project.inputs; }
    /// Which values of the inputs become 0 and 255, as --range says it; empty for the usual.
    const std::string& range() const { return m_project.range; }

    EditorSession& session() { return m_session; }

signals:
    void sourceChanged();
    void titleChanged();  ///< name or whether modified

private:
    QStringList takeOver(const QByteArray& bytes, const std::string& folder);
    media::ReadOptions reading() const;
    void setSource(std::shared_ptr<const media::MediaSource> source);
    void setSaved(const QString& path);

    EditorSession& m_session;
    document::Project m_project;
    QString m_path;
    std::shared_ptr<const media::MediaSource> m_source;
    quint64 m_sourceId = 0;
    bool m_isInputModified = false;  ///< what the undo stack does not know of
};

/// What opening a video or a large folder takes is done beside the window, which stays alive.
std::shared_ptr<const media::MediaSource> openSource(const std::vector<std::string>& inputs,
                                                     const media::ReadOptions& reading = {});

}  // namespace editor
