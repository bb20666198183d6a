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

    /// Renders the project file to the output, with the filters of another plug-in than the
    /// renderer's own if one is named.
    void start(const QString& project, const QString& output, const QString& foreignPlugin);
    void cancel();
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

    /// The renderer that belongs to this program.
    static QString rendererFile();

signals:
    void progressed(int done, int total, double secondsLeft);
    /// No error when all went well, or it was cancelled. What the renderer had to say besides, a
    /// line each, are notices.
    void finished(bool cancelled, const QString& error, const QStringList& notices);

private:
    void readLines();
    void readLine(const QByteArray& line);
    void end(const QString& error);

    QProcess m_process;
    QByteArray m_pending;
    QStringList m_errors;
    QStringList m_notices;
    bool m_isCancelled = false;
    bool m_hasEnded = true;
};

}  // namespace editor
