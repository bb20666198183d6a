#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"

#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QToolButton>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/EntryIcons.h"
#include "host/kernel/FxGuiImageFilterPrivate.h"
#include "host/kernel/KernelStore.h"

namespace {

// The rows and columns of an entry; between them and around them is empty space.
enum { kContentColumn = 1, kHeaderRow = 1, kPageRow = 3, kGridSize = 5 };

QToolButton* makeButton(QWidget* parent, const char* name, EntryGlyph glyph,
                        const QString& toolTip) {
    auto* button = new QToolButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setIcon(entryIcon(glyph));
    button->setAutoRaise(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    return button;
}

}  // namespace

FxGuiImageFilter::FxGuiImageFilter(HkFilterManipulator* manipulator, int objectId, QWidget* parent)
    : QWidget(parent), d(new Private{this, manipulator, objectId}) {
    d->build();
    d->connectControls();
    d->showState();
}

FxGuiImageFilter::~FxGuiImageFilter() {
    delete d;
}

int FxGuiImageFilter::objectId() const {
    return d->objectId;
}

HkFilterManipulator* FxGuiImageFilter::manipulator() const {
    return d->manipulator;
}

void FxGuiImageFilter::slotGuiControlsChanged() {
    d->manipulator->commitGuiChanges(d->objectId);
}

/// Everything is a child of the entry itself, as the page is: the card behind it is no parent but a
/// neighbour that fills the same cells and the margins around them.
void FxGuiImageFilter::Private::build() {
    const int margin = 6, spacing = 4;
    auto* card = new QFrame(q);
    card->setFrameShape(QFrame::StyledPanel);
    card->setBackgroundRole(QPalette::AlternateBase);  // lifts off the window
    card->setAutoFillBackground(true);
    layout = new QGridLayout(q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(card, 0, 0, kGridSize, kGridSize);
    for (const int edge : {0, kGridSize - 1}) {
        layout->setRowMinimumHeight(edge, margin);
        layout->setColumnMinimumWidth(edge, margin);
    }
    layout->setRowMinimumHeight(kHeaderRow + 1, spacing);
    layout->setRowStretch(kPageRow, 1);
    layout->setColumnStretch(kContentColumn, 1);

    enabled = new QCheckBox(q);
    enabled->setObjectName(QStringLiteral("theChbEnabled"));
    enabled->setToolTip(tr("Switches the filter on or off; its settings stay"));
    enabled->setIcon(manipulator->filterIcon());
    animate = makeButton(q, "theTbAnimate", EntryGlyph::Keyframe,
                         tr("Animates the settings: every edit becomes a keyframe of its frame"));
    animate->setCheckable(true);
    up = makeButton(q, "theTbUp", EntryGlyph::Up, tr("Applies this filter one place earlier"));
    down = makeButton(q, "theTbDown", EntryGlyph::Down, tr("Applies this filter one place later"));
    remove = makeButton(q, "theTbRemove", EntryGlyph::Remove, tr("Removes this filter"));

    auto* header = new QHBoxLayout;
    header->setSpacing(2);
    header->addWidget(enabled, 1);
    for (QToolButton* button : {animate, up, down, remove}) header->addWidget(button);
    layout->addLayout(header, kHeaderRow, kContentColumn);
}

void FxGuiImageFilter::Private::connectControls() {
    // clicked, not toggled: only the user's hand is an edit, showState() is none.
    QObject::connect(enabled, &QCheckBox::clicked, q,
                     [this](bool on) { manipulator->enableFilter(objectId, on); });
    QObject::connect(animate, &QToolButton::clicked, q, [this](bool on) {
        manipulator->changeFilterAnimationState(objectId, on, true);
    });
    QObject::connect(up, &QToolButton::clicked, q, [this] { moveBy(-1); });
    QObject::connect(down, &QToolButton::clicked, q, [this] { moveBy(1); });
    QObject::connect(remove, &QToolButton::clicked, q, [this] { manipulator->removeFilter(q); });
}

void FxGuiImageFilter::Private::setPage(QWidget* page) {
    q->controlPage = page;
    if (page) layout->addWidget(page, kPageRow, kContentColumn);
}

void FxGuiImageFilter::Private::showState() {
    const KernelStore& store = KernelStore::instance();
    const auto state = store.state(objectId);
    if (!state) return;
    const bool isOn =
        state->params.size() > kEnabledParam && state->params[kEnabledParam].base.toBool();
    enabled->setChecked(isOn);
    enabled->setText(store.nameOf(objectId).replace('&', "&&"));
    QFont font = enabled->font();
    font.setBold(isOn);  // which filters work is seen without looking for the marks
    enabled->setFont(font);
    animate->setChecked(state->animated);
}

void FxGuiImageFilter::Private::showPlace(bool isFirst, bool isLast) {
    up->setEnabled(!isFirst);
    down->setEnabled(!isLast);
}

void FxGuiImageFilter::Private::moveBy(int places) {
    const KernelStore& store = KernelStore::instance();
    const std::vector<InstanceId> order = store.instances();
    // Moving down by one means to stand before the one after the next.
    const int next = store.positionOf(objectId) + (places > 0 ? places + 1 : places);
    if (next < 0 || next > static_cast<int>(order.size())) return;
    FxGuiImageFilter* before = nullptr;
    if (next < static_cast<int>(order.size())) {
        const InstanceId id = order[static_cast<std::size_t>(next)];
        before = store.manipulator(id.typeId)->getFilterGui(id.objectId);
    }
    manipulator->moveFilter(q, before);
}
