#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QLockFile>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace editor {

class EditorDocument;

/// What a crash must not take: the document as it is after each step, in a file of its own in the
/// program's data folder. It is written beside the window at most kDelay after a step, whole or not
/// at all, and removed when the document is saved or closed. A lock tells the journals of programs
/// that run from those that were left.
class Journal : public QObject {
    Q_OBJECT

public:
    static constexpr int kDelayMilliseconds = 1000;

    explicit Journal(EditorDocument& document, QObject* parent = nullptr);
    ~Journal() override;  ///< the end that was meant: removes the file

    /// A document that was left by a program that is gone.
    struct Left {
        QString file;
        QString path;  ///< of the project; empty when it was never saved
        QByteArray project;
        QDateTime when;
    };
    std::vector<Left> findLeft() const;
    static void discard(const Left& left);

    static QString folder();
    QString file() const { return m_file; }
    void writeNow();  ///< waits until it is written

signals:
    void failed(const QString& reason);  ///< to write; the next step tries again

private:
    void schedule();
    void write();
    void run();

    EditorDocument& m_document;
    QString m_file;
    QLockFile m_lock;
    QTimer m_timer;

    // Shared with the thread that writes.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<std::vector<unsigned char>> m_next;  // empty bytes: remove the file
    bool m_isWriting = false;
    bool m_isEnding = false;
    std::thread m_thread;
};

}  // namespace editor
