#include "host/editor/StartPage.h"

#include <QCommandLinkButton>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "host/editor/Glyphs.h"

namespace editor {

QString recentTitle(const QString& entry) {
    const QStringList paths = entry.split(QLatin1Char('\n'));
    const QFileInfo first(paths.first());
    QString folder = first.absolutePath();
    if (folder.startsWith(QDir::homePath()))
        folder = QLatin1Char('~') + folder.mid(QDir::homePath().size());
    QString name = first.fileName();
    if (paths.size() > 1) name = StartPage::tr("%1 and %2 more").arg(name).arg(paths.size() - 1);
    return name + QStringLiteral("   —   ") + folder;
}

StartPage::StartPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("startPage"));
    auto* column = new QWidget(this);
    column->setMaximumWidth(520);
    auto* layout = new QVBoxLayout(column);
    layout->setSpacing(4);

    auto* title = new QLabel(tr("What would you like to work on?"), column);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.7);
    title->setFont(large);
    auto* hint =
        new QLabel(tr("Open something, or drop files and folders on this window."), column);
    hint->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(title);
    layout->addWidget(hint);
    layout->addSpacing(12);

    const auto addChoice = [&](Glyph glyph, const char* name, const QString& text,
                               const QString& description, auto signal) {
        auto* button = new QCommandLinkButton(text, description, column);
        button->setObjectName(QLatin1String(name));
        button->setIcon(glyphIcon(glyph));
        button->setIconSize({24, 24});
        connect(button, &QPushButton::clicked, this, signal);
        layout->addWidget(button);
    };
    addChoice(Glyph::Open, "openFiles", tr("Open pictures or a video"),
              tr("One picture, several, or a video"), &StartPage::openFilesRequested);
    addChoice(Glyph::Folder, "openFolder", tr("Open a folder"),
              tr("All its pictures as frames, in the order of their names"),
              &StartPage::openFolderRequested);
    addChoice(Glyph::Project, "openProject", tr("Open a project"),
              tr("Pictures with the filters that were saved for them"),
              &StartPage::openProjectRequested);
    addChoice(Glyph::Image, "openSample", tr("Try the sample picture"),
              tr("It has something to do for every filter"), &StartPage::sampleRequested);

    layout->addSpacing(12);
    auto* recentTitle = new QLabel(tr("Recent"), column);
    recentTitle->setForegroundRole(QPalette::PlaceholderText);
    m_recentTitle = recentTitle;
    layout->addWidget(recentTitle);
    m_recent = new QVBoxLayout;
    m_recent->setSpacing(0);
    layout->addLayout(m_recent);

    auto* outer = new QGridLayout(this);
    outer->setRowStretch(0, 2);
    outer->addWidget(column, 1, 1);
    outer->setRowStretch(2, 3);
    outer->setColumnStretch(0, 1);
    outer->setColumnStretch(1, 4);
    outer->setColumnStretch(2, 1);
    setRecent({});
}

void StartPage::setRecent(const QStringList& entries) {
    while (QLayoutItem* item = m_recent->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const int most = 6;
    for (const QString& entry : entries.mid(0, most)) {
        auto* button = new QPushButton(recentTitle(entry).replace('&', "&&"), this);
        button->setFlat(true);
        button->setCursor(Qt::PointingHandCursor);
        button->setStyleSheet(QStringLiteral("text-align: left; padding: 3px 8px;"));
        button->setToolTip(entry);
        connect(button, &QPushButton::clicked, this, [=] { emit recentRequested(entry); });
        m_recent->addWidget(button);
    }
    m_recentTitle->setVisible(!entries.isEmpty());
}

}  // namespace editor
