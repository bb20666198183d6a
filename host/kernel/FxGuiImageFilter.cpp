#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"

#include <QCheckBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/EntryIcons.h"
#include "host/kernel/FxGuiImageFilterPrivate.h"
#include "host/kernel/KernelStore.h"

namespace {

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

void FxGuiImageFilter::Private::build() {
    auto* frame = new QFrame(q);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setBackgroundRole(QPalette::AlternateBase);  // a card that lifts off the window
    frame->setAutoFillBackground(true);
    auto* outer = new QVBoxLayout(q);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(frame);
    layout = new QVBoxLayout(frame);
    layout->setContentsMargins(6, 4, 6, 6);
    layout->setSpacing(4);

    enabled = new QCheckBox(manipulator->filterTitle().replace('&', "&&"), frame);
    enabled->setObjectName(QStringLiteral("theChbEnabled"));
    enabled->setToolTip(tr("Switches the filter on or off; its settings stay"));
    enabled->setIcon(manipulator->filterIcon());
    animate = makeButton(frame, "theTbAnimate", EntryGlyph::Keyframe,
                         tr("Animates the settings: every edit becomes a keyframe of its frame"));
    animate->setCheckable(true);
    up = makeButton(frame, "theTbUp", EntryGlyph::Up, tr("Applies this filter one place earlier"));
    down =
        makeButton(frame, "theTbDown", EntryGlyph::Down, tr("Applies this filter one place later"));
    remove = makeButton(frame, "theTbRemove", EntryGlyph::Remove, tr("Removes this filter"));

    auto* header = new QHBoxLayout;
    header->setSpacing(2);
    header->addWidget(enabled, 1);
    for (QToolButton* button : {animate, up, down, remove}) header->addWidget(button);
    layout->addLayout(header);
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
    if (page) layout->addWidget(page);
}

void FxGuiImageFilter::Private::showState() {
    const KernelStore& store = KernelStore::instance();
    const auto state = store.state(objectId);
    if (!state) return;
    const bool isOn =
        state->params.size() > kEnabledParam && state->params[kEnabledParam].base.toBool();
    enabled->setChecked(isOn);
    QFont font = enabled->font();
    font.setBold(isOn);  // which filters work is seen without looking for the marks
    enabled->setFont(font);
    animate->setChecked(state->animated);
    const int position = store.positionOf(objectId);
    up->setEnabled(position > 0);
    down->setEnabled(position + 1 < static_cast<int>(store.instances().size()));
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
