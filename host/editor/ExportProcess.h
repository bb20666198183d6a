#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QStringList>

namespace editor {

/// Runs fxrender in a process of its own and follows what it reports. What it has written stays
/// when it is cancelled: whole frames only.
class ExportProcess : public QObject {
    Q_OBJECT

public:
    explicit ExportProcess(QObject* parent = nullptr);
    ~ExportProcess()
        override;  ///< ends the process, after the frame it works on if it does in time

    /// Renders the project file to the output.
    void start(const QString& project, const QString& output);
    void cancel();
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

    /// The renderer that belongs to this program.
    static QString rendererFile();

signals:
    void progressed(int done, int total, double secondsLeft);
    /// No message when all went well.
    void finished(bool cancelled, const QString& message);

private:
    void readLines();
    void readLine(const QByteArray& line);
    void end(const QString& message);

    QProcess m_process;
    QByteArray m_pending;
    QStringList m_messages;
    bool m_isCancelled = false;
    bool m_hasEnded = true;
};

}  // namespace editor
