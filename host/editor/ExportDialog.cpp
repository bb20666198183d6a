#include "host/editor/ExportDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace editor {

namespace {

QString durationText(double seconds) {
    const int whole = static_cast<int>(std::lround(seconds));
    if (whole < 60) return ExportDialog::tr("%1 s left").arg(whole);
    if (whole < 3600)
        return ExportDialog::tr("%1 min %2 s left")
            .arg(whole / 60)
            .arg(whole % 60, 2, 10, QChar('0'));
    return ExportDialog::tr("%1 h %2 min left").arg(whole / 3600).arg(whole / 60 % 60);
}

}  // namespace

ExportDialog::ExportDialog(const QString& proposal, bool isSequence, const QString& foreignPlugin,
                           QWidget* parent)
    : QDialog(parent),
      m_project(QDir::temp().filePath(QStringLiteral("fxeditor-XXXXXX.fxp"))),
      m_isSequence(isSequence),
      m_foreignPlugin(foreignPlugin) {
    m_project.open();  // has a name from here on
    setObjectName(QStringLiteral("exportDialog"));
    setWindowTitle(tr("Export"));
    m_output = new QLineEdit(proposal, this);
    m_output->setObjectName(QStringLiteral("exportOutput"));
    auto* label = new QLabel(tr("&Write to"), this);
    label->setBuddy(m_output);
    m_browse = new QPushButton(tr("&Browse…"), this);
    m_browse->setAutoDefault(false);
    auto* hint = new QLabel(
        isSequence ? tr("A folder, a numbered sequence such as out_####.png, or a video such as "
                        "out.mp4. Files of the input are never overwritten.")
                   : tr("The suffix decides the format: .png, .tif, .jpg and others. The input is "
                        "never overwritten."),
        this);
    hint->setWordWrap(true);
    hint->setForegroundRole(QPalette::PlaceholderText);
    m_bar = new QProgressBar(this);
    m_bar->setTextVisible(false);
    m_bar->setRange(0, 1);
    m_bar->setValue(0);
    m_status = new QLabel(tr("Ready"), this);
    m_status->setWordWrap(true);
    m_status->setTextFormat(Qt::PlainText);
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_status->setObjectName(QStringLiteral("exportStatus"));
    m_status->setMinimumHeight(m_status->fontMetrics().height() * 2);
    m_status->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* buttons = new QDialogButtonBox(this);
    m_start = buttons->addButton(tr("&Export"), QDialogButtonBox::ActionRole);
    m_start->setObjectName(QStringLiteral("exportStart"));
    m_start->setDefault(true);
    m_close = buttons->addButton(QDialogButtonBox::Close);

    auto* grid = new QGridLayout(this);
    grid->setVerticalSpacing(10);
    grid->addWidget(label, 0, 0);
    grid->addWidget(m_output, 0, 1);
    grid->addWidget(m_browse, 0, 2);
    grid->addWidget(hint, 1, 1, 1, 2);
    grid->addWidget(m_bar, 2, 0, 1, 3);
    grid->addWidget(m_status, 3, 0, 1, 3);
    grid->addWidget(buttons, 4, 0, 1, 3);
    setMinimumWidth(520);

    connect(m_browse, &QPushButton::clicked, this, &ExportDialog::browse);
    connect(m_start, &QPushButton::clicked, this, &ExportDialog::start);
    connect(m_close, &QPushButton::clicked, this, &ExportDialog::reject);
    connect(m_output, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_start->setEnabled(!text.trimmed().isEmpty()); });
    connect(&m_process, &ExportProcess::progressed, this, &ExportDialog::showProgress);
    connect(&m_process, &ExportProcess::finished, this, &ExportDialog::showEnd);
}

void ExportDialog::setProject(const QByteArray& bytes) {
    if (m_project.write(bytes) == bytes.size() && m_project.flush()) return;
    m_start->setEnabled(false);
    m_status->setText(tr("The filters cannot be handed to the renderer: %1; make room in %2")
                          .arg(m_project.errorString(), QDir::tempPath()));
}

void ExportDialog::setOutput(const QString& output) {
    m_output->setText(output);
}

void ExportDialog::start() {
    m_start->setEnabled(false);
    m_output->setEnabled(false);
    m_browse->setEnabled(false);
    m_close->setText(tr("&Cancel"));
    m_bar->setRange(0, 0);
    m_status->setText(tr("Starting the renderer…"));
    m_process.start(projectFile(), m_output->text(), m_foreignPlugin);
}

void ExportDialog::reject() {
    if (!isRunning()) {
        QDialog::reject();
        return;
    }
    m_status->setText(tr("Stopping after the frames at work…"));
    m_process.cancel();
}

void ExportDialog::browse() {
    const QString chosen =
        m_isSequence
            ? QFileDialog::getExistingDirectory(this, tr("Write frames to"), m_output->text())
            : QFileDialog::getSaveFileName(this, tr("Write to"), m_output->text());
    if (!chosen.isEmpty()) m_output->setText(chosen);
}

void ExportDialog::showProgress(int done, int total, double secondsLeft) {
    m_bar->setRange(0, total);
    m_bar->setValue(done);
    QString text = tr("%1 of %2 frames").arg(done).arg(total);
    if (done > 0 && done < total) text += QStringLiteral("   ·   ") + durationText(secondsLeft);
    m_status->setText(text);
}

void ExportDialog::showEnd(bool cancelled, const QString& error, const QStringList& notices) {
    if (m_bar->maximum() == 0) m_bar->setRange(0, 1);
    m_start->setEnabled(true);
    m_output->setEnabled(true);
    m_browse->setEnabled(true);
    m_close->setText(tr("&Close"));
    const QString ending = cancelled         ? tr("Cancelled. The frames written so far are whole.")
                           : error.isEmpty() ? tr("Done: %1").arg(m_output->text())
                                             : error;
    m_status->setText((QStringList(ending) + notices).join(QLatin1Char('\n')));
    resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
}

}  // namespace editor
