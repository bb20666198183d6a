#include "host/editor/FileActions.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <algorithm>

#include "host/document/FilterChain.h"
#include "host/editor/Attempt.h"
#include "host/editor/CommandText.h"
#include "host/editor/EditorDocument.h"
#include "host/editor/EditorState.h"
#include "host/editor/ExportDialog.h"
#include "host/editor/Glyphs.h"
#include "host/editor/Journal.h"
#include "host/kernel/KernelStore.h"
#include "host/media/FrameTemplate.h"
#include "host/media/SamplePicture.h"

namespace editor {

namespace {

const char kProjectSuffix[] = ".fxp";

QString projectFilter() {
    return FileActions::tr("Projects (*.fxp)");
}

std::vector<std::string> asInputs(const QStringList& paths) {
    std::vector<std::string> inputs;
    for (const QString& path : paths) inputs.push_back(QFile::encodeName(path).toStdString());
    return inputs;
}

/// A pattern of frame numbers stands for files that are looked for when it is opened.
bool isGone(const QString& path) {
    return !QFileInfo::exists(path) &&
           !media::FrameTemplate::parse(QFile::encodeName(path).toStdString());
}

bool isProject(const QStringList& paths) {
    return paths.size() == 1 &&
           paths.first().endsWith(QLatin1String(kProjectSuffix), Qt::CaseInsensitive);
}

}  // namespace

FileActions::FileActions(EditorDocument& document, const EditorState& state, QWidget* window)
    : QObject(window), m_document(document), m_state(state), m_window(window) {}

EditorSession& FileActions::session() const {
    return m_document.session();
}

bool FileActions::open(const QStringList& paths) {
    if (paths.isEmpty() || !confirmDiscard()) return false;
    QStringList notices;
    const bool opened = attempt(m_window, tr("This cannot be opened"), [&] {
        if (isProject(paths))
            notices = m_document.openProject(QFileInfo(paths.first()).absoluteFilePath());
        else
            m_document.newFromInputs(asInputs(paths));
    });
    if (!opened) return false;
    remember(paths);
    showNotices(notices);
    return true;
}

void FileActions::openSample() {
    if (!confirmDiscard()) return;
    attempt(m_window, tr("The sample cannot be made"), [this] {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        const QString file = folder + tr("/sample.png");
        if (!QDir().mkpath(folder) || !media::samplePicture().save(file))
            throw std::runtime_error(
                tr("%1 cannot be written; check the permissions").arg(file).toStdString());
        m_document.newFromInputs(asInputs({file}));
    });
}

bool FileActions::confirmDiscard() {
    if (!m_document.isModified()) return true;
    const QString name = m_document.name().isEmpty() ? tr("the project") : m_document.name();
    const auto answer = QMessageBox::question(
        m_window, tr("Save changes?"), tr("Save the changes to %1?").arg(name),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    return answer == QMessageBox::Discard || (answer == QMessageBox::Save && save());
}

bool FileActions::save() {
    return m_document.path().isEmpty() ? askAndSave() : saveAs(m_document.path());
}

bool FileActions::saveAs(const QString& path) {
    if (!attempt(m_window, tr("The project cannot be saved"),
                 [&] { m_document.saveProject(path); }))
        return false;
    remember({path});
    emit said(tr("Saved %1").arg(path));
    return true;
}

bool FileActions::askAndSave() {
    QString proposal = m_document.path();
    if (proposal.isEmpty() && !m_document.inputs().empty()) {
        const QFileInfo input(QFile::decodeName(m_document.inputs().front().c_str()));
        proposal = input.dir().filePath(input.completeBaseName() + QLatin1String(kProjectSuffix));
    }
    // With the suffix in the dialog it is the dialog that asks before a file is replaced.
    QFileDialog dialog(m_window, tr("Save project"), QString(), projectFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QLatin1String(kProjectSuffix + 1));
    if (!proposal.isEmpty()) dialog.selectFile(proposal);
    return dialog.exec() == QDialog::Accepted && saveAs(dialog.selectedFiles().constFirst());
}

void FileActions::askForFiles() {
    open(QFileDialog::getOpenFileNames(m_window, tr("Open"), QString(),
                                       tr("Pictures, videos and projects (*)")));
}

void FileActions::askForFolder() {
    const QString folder =
        QFileDialog::getExistingDirectory(m_window, tr("Open a folder of pictures"));
    if (!folder.isEmpty()) open({folder});
}

void FileActions::askForProject() {
    const QString path =
        QFileDialog::getOpenFileName(m_window, tr("Open a project"), QString(), projectFilter());
    if (!path.isEmpty()) open({path});
}

void FileActions::askForOtherInput() {
    const QStringList paths =
        QFileDialog::getOpenFileNames(m_window, tr("Apply the same filters to other pictures"),
                                      QString(), tr("Pictures, videos (*)"));
    if (!paths.isEmpty())
        attempt(m_window, tr("This cannot be opened"),
                [&] { m_document.replaceInputs(asInputs(paths)); });
}

void FileActions::remember(const QStringList& paths) {
    QStringList absolute;
    for (const QString& path : paths) absolute << QFileInfo(path).absoluteFilePath();
    QStringList entries = recent();
    const QString entry = absolute.join(QLatin1Char('\n'));
    entries.removeAll(entry);
    entries.prepend(entry);
    const int most = 12;
    setRecent(entries.mid(0, most));
}

void FileActions::setRecent(const QStringList& entries) {
    QSettings().setValue(QStringLiteral("recent"), entries);
    emit recentChanged();
}

QStringList FileActions::recent() const {
    return QSettings().value(QStringLiteral("recent")).toStringList();
}

void FileActions::openRecent(const QString& entry) {
    const QStringList paths = entry.split(QLatin1Char('\n'));
    const auto gone = std::find_if(paths.begin(), paths.end(), isGone);
    if (gone == paths.end()) {
        open(paths);
        return;
    }
    QMessageBox box(QMessageBox::Question, tr("This cannot be opened"),
                    tr("%1 is no longer there.").arg(*gone), QMessageBox::Close, m_window);
    box.setInformativeText(tr("It may have been moved, or be on a disk that is not connected."));
    QPushButton* const forget =
        box.addButton(tr("&Take it off the list"), QMessageBox::DestructiveRole);
    forget->setObjectName(QStringLiteral("forgetRecent"));
    box.exec();
    if (box.clickedButton() != forget) return;
    QStringList entries = recent();
    entries.removeAll(entry);
    setRecent(entries);
}

void FileActions::forgetRecent() {
    setRecent({});
}

void FileActions::showNotices(const QStringList& notices) {
    if (notices.isEmpty()) return;
    QMessageBox box(QMessageBox::Information, tr("Opened with remarks"),
                    tr("Not everything in the project can be used here. Nothing of it is lost when "
                       "you save."),
                    QMessageBox::Ok, m_window);
    box.setInformativeText(notices.join(QLatin1Char('\n')));
    box.exec();
}

void FileActions::copyCommandLine() {
    const KernelStore& store = KernelStore::instance();
    const int stage = m_state.shownStage();
    QStringList filters = document::currentFilterTexts(session().catalog());
    const QString end = stage == kResultStage ? QString() : store.nameOf(stage);
    if (stage == kSourceStage)
        filters.clear();
    else if (stage != kResultStage)
        filters = filters.mid(0, store.positionOf(stage) + 1);
    if (filters.isEmpty()) {
        emit said(tr("What is shown has no filters: there is nothing to render"));
        return;
    }
    QApplication::clipboard()->setText(
        commandText(session().foreignPlugin(), m_document.inputs(), m_document.range(), filters));
    emit said(end.isEmpty() ? tr("The command is on the clipboard")
                            : tr("The command is on the clipboard, with the filters up to “%1”, "
                                 "which is shown")
                                  .arg(end));
}

void FileActions::showExport() {
    if (m_export && m_export->isRunning()) {
        m_export->raise();
        return;
    }
    delete m_export;
    if (KernelStore::instance().instances().empty() || !m_document.source()) {
        QMessageBox::information(m_window, tr("Export"),
                                 tr("There is nothing to render yet: open a picture and apply a "
                                    "filter."));
        return;
    }
    const bool isSequence = m_document.source()->frames().size() > 1;
    const QFileInfo input(QFile::decodeName(m_document.inputs().front().c_str()));
    const QString folder = input.absolutePath();
    const QString name =
        isSequence ? folder + QStringLiteral("/filtered/")
                   : QStringLiteral("%1/%2-filtered.png").arg(folder, input.completeBaseName());
    m_export = new ExportDialog(name, isSequence, session().foreignPlugin(), m_window);
    m_export->setProject(m_document.projectBytes(m_export->projectFile()));
    m_export->setAttribute(Qt::WA_DeleteOnClose);
    m_export->show();
}

void FileActions::offerRecovery(Journal& journal) {
    for (const Journal::Left& left : journal.findLeft()) {
        const QString name =
            left.path.isEmpty() ? tr("an unsaved project") : QFileInfo(left.path).fileName();
        QMessageBox box(QMessageBox::Question, tr("Recover"),
                        tr("The editor ended unexpectedly while %1 had unsaved changes (%2).")
                            .arg(name, QLocale().toString(left.when, QLocale::ShortFormat)),
                        QMessageBox::NoButton, m_window);
        const int side = 32;
        box.setIconPixmap(glyphIcon(Glyph::Warning).pixmap(side, side));
        box.setInformativeText(tr("Recovering overwrites no file: you decide whether to save."));
        QPushButton* recover = box.addButton(tr("&Recover"), QMessageBox::AcceptRole);
        QPushButton* remove = box.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
        box.addButton(tr("&Later"), QMessageBox::RejectRole);
        box.exec();
        if (box.clickedButton() == remove) Journal::discard(left);
        if (box.clickedButton() != recover) continue;
        QStringList notices;
        if (!attempt(m_window, tr("This cannot be recovered"),
                     [&] { notices = m_document.recover(left.project, left.path); }))
            continue;
        journal.writeNow();  // under this program's name before the old one goes
        Journal::discard(left);
        showNotices(notices);
        return;
    }
}

bool FileActions::confirmQuit() {
    if (m_export && m_export->isRunning() &&
        QMessageBox::question(m_window, tr("Export"),
                              tr("An export is running. Stop it? The frames written so far stay."),
                              QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes)
        return false;
    return confirmDiscard();
}

void FileActions::closeDocument() {
    if (confirmDiscard()) m_document.newEmpty();
}

}  // namespace editor
