#include "framework/contract/FxKernelApi/HkFilterManipulator.h"

#include <QDomDocument>
#include <QHash>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QToolBox>
#include <QUndoStack>
#include <QVBoxLayout>
#include <memory>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "host/kernel/FilterCommands.h"
#include "host/kernel/FilterElement.h"
#include "host/kernel/FxGuiImageFilterPrivate.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"

struct HkFilterManipulator::Private {
    explicit Private(HkFilterManipulator* manipulator) : q(manipulator) {}

    HkFilterManipulator* q;
    HkCvEditor* cvEditor = nullptr;
    QPointer<QWidget> toolPage;  // owned by the tool box
    bool hasWindows = false;
    QHash<int, QPointer<FxGuiImageFilter>> entries;  // by object id; a window may own them

    bool isMine(int typeId) const;
    InstanceId instance(int objectId) const { return {q->filterType, objectId}; }
    HkKernelObjectData* object(int objectId) const;
    void run(std::unique_ptr<QUndoCommand> command);
    void addToolPage(QToolBox* toolBox);
    FxGuiImageFilter* makeEntry(int objectId);
    void dropEntry(int objectId);
    void showObject(int objectId);
    void showAll();
    void showOrder();
    void connectTo(KernelNotifier* notifier);
};

bool HkFilterManipulator::Private::isMine(int typeId) const {
    return KernelStore::instance().manipulator(typeId) == q;
}

HkKernelObjectData* HkFilterManipulator::Private::object(int objectId) const {
    return q->kernelData->getObject(q->filterType, objectId);
}

void HkFilterManipulator::Private::run(std::unique_ptr<QUndoCommand> command) {
    if (q->undoStack)
        q->undoStack->push(command.release());
    else
        command->redo();
}

void HkFilterManipulator::Private::addToolPage(QToolBox* toolBox) {
    delete toolPage;
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    auto* description = new QLabel(q->filterDescription(), page);
    description->setObjectName(QStringLiteral("theLblDescription"));
    description->setWordWrap(true);
    description->setToolTip(q->filterDetailedDescription());
    auto* add = new QPushButton(HkFilterManipulator::tr("Add"), page);
    add->setObjectName(QStringLiteral("thePbAdd"));
    add->setToolTip(HkFilterManipulator::tr("Applies this filter after the others"));
    connect(add, &QPushButton::clicked, q, [this] { q->addFilter(); });
    layout->addWidget(description);
    layout->addWidget(add, 0, Qt::AlignLeft);
    layout->addStretch();
    toolBox->addItem(page, q->filterIcon(), q->filterTitle());
    toolPage = page;
}

/// The page asks for its entry while it is filled: the entry is known before the page is made.
FxGuiImageFilter* HkFilterManipulator::Private::makeEntry(int objectId) {
    auto* entry = new FxGuiImageFilter(q, objectId);
    entries.insert(objectId, entry);
    entry->d->setPage(q->createFilterGui(entry));
    showObject(objectId);
    showOrder();
    return entry;
}

/// The entry goes when control returns to the event loop: its own remove button may have asked.
void HkFilterManipulator::Private::dropEntry(int objectId) {
    if (FxGuiImageFilter* entry = entries.take(objectId)) {
        entry->hide();
        entry->deleteLater();
    }
}

void HkFilterManipulator::Private::showObject(int objectId) {
    FxGuiImageFilter* entry = entries.value(objectId);
    const HkKernelObjectData* shown = object(objectId);
    if (!entry || !shown) return;
    entry->d->showState();
    if (entry->controlPage && !q->editInProgress) q->updateGuiFromKernel(objectId, shown);
}

void HkFilterManipulator::Private::showAll() {
    for (const int objectId : entries.keys()) showObject(objectId);
}

void HkFilterManipulator::Private::showOrder() {
    if (entries.isEmpty()) return;
    const std::vector<InstanceId> order = KernelStore::instance().instances();
    for (std::size_t i = 0; i < order.size(); ++i)
        if (FxGuiImageFilter* entry = entries.value(order[i].objectId))
            entry->d->showPlace(i == 0, i + 1 == order.size());
}

void HkFilterManipulator::Private::connectTo(KernelNotifier* notifier) {
    connect(notifier, &KernelNotifier::objectRemoved, q, [this](int typeId, int objectId) {
        if (isMine(typeId)) dropEntry(objectId);
    });
    connect(notifier, &KernelNotifier::objectChanged, q, [this](int typeId, int objectId) {
        if (isMine(typeId)) showObject(objectId);
    });
    connect(notifier, &KernelNotifier::currentFrameChanged, q, [this] { showAll(); });
    connect(notifier, &KernelNotifier::orderChanged, q, [this] { showOrder(); });
}

HkFilterManipulator::HkFilterManipulator(QObject* parent)
    : QObject(parent),
      mediaNotifier(KernelNotifier::instance()),
      kernelData(HkFXKernelData::getInstance()),
      d(new Private(this)) {
    d->connectTo(KernelNotifier::instance());
}

HkFilterManipulator::~HkFilterManipulator() {
    // What happens from here on must not reach the subclass, which is gone.
    disconnect(KernelNotifier::instance(), nullptr, this, nullptr);
    for (const QPointer<FxGuiImageFilter>& entry : d->entries) delete entry;
    delete d->toolPage;
    KernelStore::instance().forgetManipulator(this);
    delete d;
}

void HkFilterManipulator::initManipulator(QToolBox* toolBox) {
    d->hasWindows = toolBox != nullptr;
    if (toolBox) d->addToolPage(toolBox);
}

void HkFilterManipulator::setUndoStack(QUndoStack* stack) {
    undoStack = stack;
}

void HkFilterManipulator::setCvEditor(HkCvEditor* editor) {
    d->cvEditor = editor;
}

FxGuiImageFilter* HkFilterManipulator::getFilterGui(int objectId) {
    if (!d->hasWindows || !d->object(objectId)) return nullptr;
    FxGuiImageFilter* entry = d->entries.value(objectId);
    return entry ? entry : d->makeEntry(objectId);
}

int HkFilterManipulator::addFilter() {
    if (!registered || !d->isMine(filterType)) return -1;
    const std::size_t countBefore = KernelStore::instance().instances().size();
    d->run(std::make_unique<CmdAddFilter>(filterType));
    const std::vector<InstanceId> instances = KernelStore::instance().instances();
    return instances.size() > countBefore ? instances.back().objectId : -1;
}

void HkFilterManipulator::removeFilter(FxGuiImageFilter* entry) {
    if (!entry || !entry->manipulator()->d->object(entry->objectId())) return;
    d->run(std::make_unique<CmdRemoveFilter>(entry->manipulator()->d->instance(entry->objectId())));
}

void HkFilterManipulator::moveFilter(FxGuiImageFilter* entry, FxGuiImageFilter* before) {
    if (!entry || entry == before) return;
    const KernelStore& store = KernelStore::instance();
    const int from = store.positionOf(entry->objectId());
    int to =
        before ? store.positionOf(before->objectId()) : static_cast<int>(store.instances().size());
    if (from < 0 || to < 0) return;
    if (to > from) --to;  // it leaves its own place first
    if (to == from) return;
    d->run(
        std::make_unique<CmdMoveFilter>(entry->manipulator()->d->instance(entry->objectId()), to));
}

void HkFilterManipulator::enableFilter(int objectId, bool enabled) {
    const HkKernelObjectDataDescr* descr = kernelData->getDataDescriptor(filterType);
    if (!descr || descr->paramCount() <= kEnabledParam || !d->object(objectId)) return;
    const auto value = convertParamValue(enabled, descr->param(kEnabledParam).type);
    if (!value) return;
    InstanceState state = *KernelStore::instance().state(objectId);
    state.params[kEnabledParam].base = *value;
    d->run(std::make_unique<CmdSetFilterState>(d->instance(objectId), state,
                                               enabled ? tr("switch on") : tr("switch off")));
}

void HkFilterManipulator::changeFilterAnimationState(int objectId, bool animated, bool undoable) {
    const HkKernelObjectDataDescr* descr = kernelData->getDataDescriptor(filterType);
    if (!descr || !d->object(objectId)) return;
    const InstanceState before = *KernelStore::instance().state(objectId);
    if (before.animated == animated) return;
    const InstanceState after = withAnimation(before, *descr, animated, kernelData->currentFrame);
    if (undoable)
        d->run(std::make_unique<CmdSetFilterState>(
            d->instance(objectId), after, animated ? tr("animate") : tr("stop animating")));
    else
        KernelStore::instance().setState(objectId, after);
}

HkKernelObjectData* HkFilterManipulator::constructDataObject(const QDomElement& element) {
    const HkKernelObjectDataDescr* descr = kernelData->getDataDescriptor(filterType);
    if (!descr || !d->isMine(filterType)) return nullptr;
    const auto state = readFilterElement(element, *descr);
    if (!state) return nullptr;
    return d->object(KernelStore::instance().add(filterType, *state));
}

QDomElement HkFilterManipulator::saveDataObject(int objectId, QDomDocument& document) const {
    const HkKernelObjectDataDescr* descr = kernelData->getDataDescriptor(filterType);
    if (!descr || !d->object(objectId)) return QDomElement();
    const KernelStore& store = KernelStore::instance();
    return writeFilterElement(document, filterType, store.filterKey(filterType),
                              *store.state(objectId), *descr);
}

void HkFilterManipulator::slotMediaLoadedInKernel() {
    d->showAll();
}
