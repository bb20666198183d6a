#include "host/editor/EditorDocument.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <exception>
#include <thread>

#include "host/kernel/KernelStore.h"
#include "host/media/MediaError.h"
#include "host/media/atomic_file.h"
#include "host/media/sample_range.h"

namespace editor {

namespace {

std::string pathBytes(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// A project without a file names its inputs from the root: the journal may be read by a program
/// that was started elsewhere.
std::string folderOfProject(const QString& path) {
    return path.isEmpty() ? std::string("/") : pathBytes(QFileInfo(path).absolutePath());
}

}  // namespace

std::shared_ptr<const media::MediaSource> openSource(const std::vector<std::string>& inputs,
                                                     const media::ReadOptions& reading) {
    std::shared_ptr<const media::MediaSource> source;
    std::exception_ptr failure;
    QEventLoop waiting;
    std::thread opening([&] {
        try {
            source = media::MediaSource::open(inputs, reading);
        } catch (...) {
            failure = std::current_exception();
        }
        QMetaObject::invokeMethod(&waiting, "quit", Qt::QueuedConnection);
    });
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    waiting.exec(QEventLoop::ExcludeUserInputEvents);
    QGuiApplication::restoreOverrideCursor();
    opening.join();
    if (failure) std::rethrow_exception(failure);
    return source;
}

EditorDocument::EditorDocument(EditorSession& session, QObject* parent)
    : QObject(parent), m_session(session) {
    connect(&session.undoStack(), &QUndoStack::cleanChanged, this, &EditorDocument::titleChanged);
}

void EditorDocument::newFromInputs(const std::vector<std::string>& inputs) {
    const auto source = openSource(inputs);
    newEmpty();
    m_project.inputs = inputs;
    setSource(source);
    emit titleChanged();
}

void EditorDocument::replaceInputs(const std::vector<std::string>& inputs) {
    const auto source = openSource(inputs, reading());
    m_project.inputs = inputs;
    m_isInputModified = true;
    setSource(source);
    emit titleChanged();
}

void EditorDocument::newEmpty() {
    KernelStore::instance().clear();
    m_project = document::Project();
    setSource(nullptr);
    setSaved(QString());
}

QStringList EditorDocument::openProject(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw media::MediaError(media::MediaErrorKind::MissingInput,
                                path.toStdString() + ": the project cannot be read (" +
                                    file.errorString().toStdString() +
                                    "); check its path and permissions");
    // One byte more than a project may have: it says itself that it is too large.
    const QByteArray bytes = file.read(document::kProjectLimits.bytes + 1);
    const QStringList notices = takeOver(bytes, folderOfProject(path));
    setSaved(path);
    return notices;
}

QStringList EditorDocument::recover(const QByteArray& bytes, const QString& path) {
    const QStringList notices = takeOver(bytes, folderOfProject(path));
    setSaved(path);
    m_isInputModified = true;
    emit titleChanged();
    return notices;
}

QStringList EditorDocument::takeOver(const QByteArray& bytes, const std::string& folder) {
    std::vector<std::string> lines;
    m_project = document::readProject(bytes, folder, lines);
    QStringList notices;
    for (const std::string& line : lines) notices << QString::fromStdString(line);
    if (!range().empty() && !media::sampleRangeFromText(range()))
        notices << tr("The range “%1” cannot be used; write LO-HI, auto or each")
                       .arg(QString::fromStdString(range()));
    std::shared_ptr<const media::MediaSource> source;
    try {
        if (!m_project.inputs.empty()) source = openSource(m_project.inputs, reading());
    } catch (const media::MediaError& error) {
        notices << QString::fromStdString(error.what());
    }
    setSource(source);
    return notices;
}

media::ReadOptions EditorDocument::reading() const {
    return {media::sampleRangeFromText(range()).value_or(media::SampleRange())};
}

QByteArray EditorDocument::projectBytes(const QString& path) const {
    return document::writeProject(m_project, folderOfProject(path));
}

void EditorDocument::saveProject(const QString& path) {
    const QByteArray bytes = projectBytes(path);
    media::writeFileAtomically(pathBytes(QFileInfo(path).absoluteFilePath()),
                               std::vector<unsigned char>(bytes.begin(), bytes.end()));
    m_path = path;
    m_isInputModified = false;
    m_session.undoStack().setClean();
    emit titleChanged();
}

QString EditorDocument::name() const {
    if (!m_path.isEmpty()) return QFileInfo(m_path).completeBaseName();
    if (m_project.inputs.empty()) return QString();
    const QFileInfo first(QFile::decodeName(m_project.inputs.front().c_str()));
    return first.fileName().isEmpty() ? first.dir().dirName() : first.fileName();
}

bool EditorDocument::isModified() const {
    return m_isInputModified || !m_session.undoStack().isClean();
}

void EditorDocument::setSource(std::shared_ptr<const media::MediaSource> source) {
    m_source = std::move(source);
    ++m_sourceId;
    KernelStore::instance().announceMediaLoaded();
    emit sourceChanged();
}

void EditorDocument::setSaved(const QString& path) {
    m_path = path;
    m_isInputModified = false;
    m_session.undoStack().clear();
    emit titleChanged();
}

}  // namespace editor
