#include "host/editor/Journal.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QUuid>
#include <utility>

#include "host/editor/EditorDocument.h"
#include "host/kernel/KernelNotifier.h"
#include "host/media/MediaError.h"
#include "host/media/atomic_file.h"

namespace editor {

namespace {

// The first line names the project's file, the rest is the project.
const char kSuffix[] = ".journal";

QString lockOf(const QString& file) {
    return file + QStringLiteral(".lock");
}

QString newFile() {
    QDir().mkpath(Journal::folder());
    return QDir(Journal::folder())
        .filePath(QUuid::createUuid().toString(QUuid::WithoutBraces) + QLatin1String(kSuffix));
}

}  // namespace

QString Journal::folder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/journals");
}

Journal::Journal(EditorDocument& document, QObject* parent)
    : QObject(parent), m_document(document), m_file(newFile()), m_lock(lockOf(m_file)) {
    m_lock.setStaleLockTime(0);  // only the end of its process makes it one that was left
    m_lock.tryLock();
    m_timer.setSingleShot(true);
    m_timer.setInterval(kDelayMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &Journal::write);
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::objectChanged, this, &Journal::schedule);
    connect(store, &KernelNotifier::orderChanged, this, &Journal::schedule);
    connect(&document, &EditorDocument::titleChanged, this, &Journal::schedule);
    m_thread = std::thread([this] { run(); });
}

Journal::~Journal() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
    QFile::remove(m_file);
}

/// Not restarted by further edits: a drag of a minute is not a minute lost.
void Journal::schedule() {
    if (!m_timer.isActive()) m_timer.start();
}

void Journal::write() {
    std::vector<unsigned char> bytes;
    if (m_document.isModified()) {
        const QByteArray text = QFile::encodeName(m_document.path()).toPercentEncoding("/") + '\n' +
                                m_document.projectBytes(m_document.path());
        bytes.assign(text.begin(), text.end());
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_next = std::move(bytes);
    }
    m_changed.notify_all();
}

void Journal::writeNow() {
    write();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_next && !m_isWriting; });
}

void Journal::run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_next || m_isEnding; });
        if (m_isEnding) return;
        const std::vector<unsigned char> bytes = std::move(*m_next);
        m_next.reset();
        m_isWriting = true;
        lock.unlock();
        try {
            if (bytes.empty())
                QFile::remove(m_file);
            else
                media::writeFileAtomically(QFile::encodeName(m_file).toStdString(), bytes);
        } catch (const media::MediaError& error) {
            emit failed(QString::fromUtf8(error.what()));
        }
        lock.lock();
        m_isWriting = false;
        m_changed.notify_all();
    }
}

std::vector<Journal::Left> Journal::findLeft() const {
    std::vector<Left> found;
    const QDir folderOfJournals(folder());
    for (const QFileInfo& info : folderOfJournals.entryInfoList(
             {QLatin1Char('*') + QLatin1String(kSuffix)}, QDir::Files, QDir::Time)) {
        if (info.absoluteFilePath() == QFileInfo(m_file).absoluteFilePath()) continue;
        QLockFile lock(lockOf(info.absoluteFilePath()));
        lock.setStaleLockTime(0);
        if (!lock.tryLock()) continue;  // its program is running
        QFile file(info.absoluteFilePath());
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QByteArray path = QByteArray::fromPercentEncoding(file.readLine().trimmed());
        found.push_back({info.absoluteFilePath(), QFile::decodeName(path), file.readAll(),
                         info.lastModified()});
    }
    return found;
}

void Journal::discard(const Left& left) {
    QFile::remove(left.file);
}

}  // namespace editor
