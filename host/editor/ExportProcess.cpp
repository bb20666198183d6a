#include "host/editor/ExportProcess.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace editor {

QString ExportProcess::rendererFile() {
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("fxrender"));
}

ExportProcess::ExportProcess(QObject* parent) : QObject(parent) {
    m_process.setStandardOutputFile(QProcess::nullDevice());
    connect(&m_process, &QProcess::readyReadStandardError, this, &ExportProcess::readLines);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(tr("%1 cannot be started (%2); install it beside this program")
                    .arg(m_process.program(), m_process.errorString()));
    });
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                readLines();
                if (status == QProcess::CrashExit && !m_isCancelled)
                    end(tr("The renderer ended unexpectedly; the frames written before are whole"));
                else if (code != 0 && !m_isCancelled)
                    end(m_errors.isEmpty() ? tr("The renderer failed with code %1").arg(code)
                                           : m_errors.join(QLatin1Char('\n')));
                else
                    end(QString());
            });
}

ExportProcess::~ExportProcess() {
    disconnect(&m_process, nullptr, this, nullptr);
    if (!isRunning()) return;
    m_process.terminate();
    const int patience = 2000;  // milliseconds for the frame at work
    if (!m_process.waitForFinished(patience)) m_process.kill();
    m_process.waitForFinished();
}

void ExportProcess::start(const QString& project, const QString& output,
                          const QString& foreignPlugin) {
    m_pending.clear();
    m_errors.clear();
    m_notices.clear();
    m_isCancelled = m_hasEnded = false;
    QStringList arguments = {QStringLiteral("render"),     project,
                             QStringLiteral("-o"),         output,
                             QStringLiteral("--progress"), QStringLiteral("json")};
    if (!foreignPlugin.isEmpty()) arguments << QStringLiteral("--plugin") << foreignPlugin;
    m_process.start(rendererFile(), arguments);
}

void ExportProcess::cancel() {
    if (!isRunning()) return;
    m_isCancelled = true;
    m_process.terminate();
}

void ExportProcess::readLines() {
    m_pending += m_process.readAllStandardError();
    for (int end; (end = static_cast<int>(m_pending.indexOf('\n'))) >= 0;) {
        readLine(m_pending.left(end));
        m_pending.remove(0, end + 1);
    }
}

void ExportProcess::readLine(const QByteArray& line) {
    const QJsonObject event = QJsonDocument::fromJson(line).object();
    if (event.isEmpty()) {
        const QByteArray name = "fxrender: ";
        m_errors << QString::fromUtf8(line.startsWith(name) ? line.mid(name.size()) : line);
        return;
    }
    const QString message = event.value(QLatin1String("message")).toString();
    if (!message.isEmpty()) {
        const bool isError = event.value(QLatin1String("event")) == QLatin1String("error");
        (isError ? m_errors : m_notices) << message;
        return;
    }
    const int done = event.value(QLatin1String("finished")).toInt() +
                     event.value(QLatin1String("failed")).toInt();
    const int total = event.value(QLatin1String("total")).toInt();
    const double elapsed = event.value(QLatin1String("elapsed")).toDouble();
    emit progressed(done, total, done > 0 ? elapsed / done * (total - done) : 0);
}

void ExportProcess::end(const QString& error) {
    if (std::exchange(m_hasEnded, true)) return;
    emit finished(m_isCancelled, error, m_notices);
}

}  // namespace editor
