#include "host/kernel/KernelStore.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/HkKernelObjectDataPrivate.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/ParamValue.h"

namespace {

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

template <typename Container>
auto placeIn(Container& order, int position) {
    const bool inside = position >= 0 && static_cast<std::size_t>(position) < order.size();
    return inside ? order.begin() + position : order.end();
}

void announceOrder() {
    emit KernelNotifier::instance()->orderChanged();
}

}  // namespace

struct KernelStore::Private {
    struct Deleter {
        void operator()(HkKernelObjectData* object) const { delete object; }
    };
    using ObjectPtr = std::unique_ptr<HkKernelObjectData, Deleter>;

    struct Type {
        int id = 0;
        HkFilterManipulator* manipulator = nullptr;
        std::shared_ptr<const HkKernelObjectDataDescr> descr;
        QString key;
    };

    struct Removed {
        quint64 epoch;  // leases of this or a later epoch began after the removal
        ObjectPtr object;
    };

    mutable std::shared_mutex lock;  // guards everything below
    std::vector<Type> types;
    std::vector<ObjectPtr> order;
    std::vector<ObjectPtr> trials;  // outside the order
    std::unordered_map<int, HkKernelObjectData*> byId;
    int lastId = 0;
    quint64 epoch = 0;
    std::multiset<quint64> leases;
    std::vector<Removed> removed;

    Type* type(int typeId) {
        const auto found = std::find_if(types.begin(), types.end(),
                                        [typeId](const Type& type) { return type.id == typeId; });
        return found == types.end() ? nullptr : &*found;
    }
    HkKernelObjectData* object(int objectId) const {
        const auto found = byId.find(objectId);
        return found == byId.end() ? nullptr : found->second;
    }
    /// A new object, or null when the type is not registered or the state does not fit it.
    ObjectPtr make(InstanceId id, const InstanceState& state) {
        const Type* known = type(id.typeId);
        if (!known || !known->descr || object(id.objectId) || !stateFits(state, *known->descr))
            return nullptr;
        ObjectPtr made(new HkKernelObjectData(id.typeId, id.objectId));
        made->d->descr = known->descr;
        made->d->state = state;
        made->animated = state.animated;
        return made;
    }
    /// Takes an object out of `from`, under the lock. What comes back is to be freed outside it.
    ObjectPtr takeOut(std::vector<ObjectPtr>& from, std::vector<ObjectPtr>::iterator place) {
        ObjectPtr object = std::move(*place);
        from.erase(place);
        byId.erase(object->d->objectId);
        ++epoch;
        if (!leases.empty()) removed.push_back({epoch, std::move(object)});
        return object;
    }
};

KernelStore& KernelStore::instance() {
    // Never destroyed: manipulators that outlive main() may still take their leave of it.
    static KernelStore* const store = new KernelStore;
    return *store;
}

KernelStore::KernelStore() : d(std::make_unique<Private>()) {}

KernelStore::~KernelStore() = default;

// --- Filter types ---

std::vector<int> KernelStore::types() const {
    std::vector<int> ids;
    for (const Private::Type& type : d->types)
        if (type.descr) ids.push_back(type.id);
    return ids;
}

HkFilterManipulator* KernelStore::manipulator(int typeId) const {
    const Private::Type* type = d->type(typeId);
    return type ? type->manipulator : nullptr;
}

QString KernelStore::filterKey(int typeId) const {
    const Private::Type* type = d->type(typeId);
    return type ? type->key : QString();
}

int KernelStore::typeOfKey(const QString& key) const {
    for (const Private::Type& type : d->types)
        if (!key.isEmpty() && type.key == key) return type.id;
    return 0;
}

void KernelStore::setFilterKey(int typeId, const QString& key) {
    if (Private::Type* type = d->type(typeId)) type->key = key;
}

int KernelStore::filterTypeOf(const HkFilterManipulator& manipulator) {
    return manipulator.filterType;
}

bool KernelStore::isRegistered(const HkFilterManipulator& manipulator) {
    return manipulator.registered;
}

QUndoStack* KernelStore::undoStackOf(const HkFilterManipulator& manipulator) {
    return manipulator.undoStack;
}

bool KernelStore::registerType(HkFilterManipulator* manipulator, int typeId) {
    if (!manipulator || typeId < 1 || d->type(typeId)) return false;
    const WriteLock guard(d->lock);
    d->types.push_back({typeId, manipulator, nullptr, QString()});
    return true;
}

bool KernelStore::registerDescriptor(std::unique_ptr<HkKernelObjectDataDescr> descr, int typeId) {
    Private::Type* type = d->type(typeId);
    if (!descr || descr->typeId() != typeId || !type || type->descr) return false;
    for (const ParamDescr& param : descr->m_params)
        if (param.type == QMetaType::UnknownType) return false;

    HkParamKeyframeVector defaults = descr->createKeyframeVector();
    if (!type->manipulator->fillDefaultValues(descr.get(), defaults, 0)) return false;
    if (defaults.size() != descr->paramCount()) return false;
    for (int i = 0; i < descr->paramCount(); ++i) {
        ParamDescr& param = descr->m_params[i];
        if (const auto value = convertParamValue(defaults.at(i).getValue(), param.type))
            param.defaultValue = *value;
        else
            return false;
    }
    const WriteLock guard(d->lock);
    type->descr = std::move(descr);
    return true;
}

const HkKernelObjectDataDescr* KernelStore::descriptor(int typeId) const {
    const ReadLock guard(d->lock);
    const Private::Type* type = d->type(typeId);
    return type ? type->descr.get() : nullptr;
}

void KernelStore::forgetManipulator(const HkFilterManipulator* manipulator) {
    // Without memory: it runs in destructors.
    const auto isItsOwn = [manipulator](const Private::Type& type) {
        return type.manipulator == manipulator;
    };
    while (true) {
        const auto type = std::find_if(d->types.begin(), d->types.end(), isItsOwn);
        if (type == d->types.end()) return;
        const int typeId = type->id;
        {
            const WriteLock guard(d->lock);
            d->types.erase(type);
        }
        removeWhere([typeId](const InstanceId& id) { return id.typeId == typeId; });
    }
}

// --- Instances ---

std::vector<InstanceId> KernelStore::instances() const {
    const ReadLock guard(d->lock);
    std::vector<InstanceId> ids;
    ids.reserve(d->order.size());
    for (const Private::ObjectPtr& object : d->order)
        ids.push_back({object->d->typeId, object->d->objectId});
    return ids;
}

int KernelStore::positionOf(int objectId) const {
    for (std::size_t i = 0; i < d->order.size(); ++i)
        if (d->order[i]->d->objectId == objectId) return static_cast<int>(i);
    return -1;
}

std::optional<InstanceState> KernelStore::state(int objectId) const {
    const HkKernelObjectData* object = d->object(objectId);
    if (!object) return std::nullopt;
    return object->d->state;
}

QString KernelStore::nameOf(int objectId) const {
    const HkKernelObjectData* object = d->object(objectId);
    if (!object) return QString();
    if (!object->d->state.name.isEmpty()) return object->d->state.name;
    HkFilterManipulator* filter = manipulator(object->d->typeId);
    return filter ? filter->filterTitle() : QString();
}

int KernelStore::add(int typeId, int position) {
    const HkKernelObjectDataDescr* descr = descriptor(typeId);
    return descr ? add(typeId, defaultState(*descr), position) : -1;
}

int KernelStore::add(int typeId, const InstanceState& state, int position) {
    if (d->lastId == std::numeric_limits<int>::max()) return -1;
    const InstanceId id{typeId, d->lastId + 1};
    if (!insert(id, state, position)) return -1;
    return id.objectId;
}

bool KernelStore::restore(InstanceId id, const InstanceState& state, int position) {
    return id.objectId >= 1 && id.objectId <= d->lastId && insert(id, state, position);
}

bool KernelStore::insert(InstanceId id, const InstanceState& state, int position) {
    Private::ObjectPtr object = d->make(id, state);
    if (!object) return false;
    {
        const WriteLock guard(d->lock);
        d->byId.emplace(id.objectId, object.get());
        d->order.insert(placeIn(d->order, position), std::move(object));
        d->lastId = std::max(d->lastId, id.objectId);
    }
    emit KernelNotifier::instance()->objectAdded(id.typeId, id.objectId);
    announceOrder();
    return true;
}

bool KernelStore::remove(int objectId) {
    const int position = positionOf(objectId);
    if (position < 0) return false;
    const int typeId = d->order[position]->d->typeId;
    Private::ObjectPtr object;  // freed after the lock is given back, unless a lease keeps it
    {
        const WriteLock guard(d->lock);
        object = d->takeOut(d->order, d->order.begin() + position);
    }
    emit KernelNotifier::instance()->objectRemoved(typeId, objectId);
    announceOrder();
    return true;
}

bool KernelStore::move(int objectId, int position) {
    const int from = positionOf(objectId);
    if (from < 0) return false;
    {
        const WriteLock guard(d->lock);
        Private::ObjectPtr object = std::move(d->order[from]);
        d->order.erase(d->order.begin() + from);
        d->order.insert(placeIn(d->order, position), std::move(object));
    }
    announceOrder();
    return true;
}

void KernelStore::clear() {
    removeWhere([](const InstanceId&) { return true; });
}

template <typename Condition>
void KernelStore::removeWhere(Condition holds) {
    for (std::size_t i = 0; i < d->order.size();) {
        const InstanceId id{d->order[i]->d->typeId, d->order[i]->d->objectId};
        if (holds(id))
            remove(id.objectId);
        else
            ++i;
    }
}

int KernelStore::addTrial(int typeId, const InstanceState& state) {
    if (d->lastId == std::numeric_limits<int>::max()) return -1;
    Private::ObjectPtr object = d->make({typeId, d->lastId + 1}, state);
    if (!object) return -1;
    const WriteLock guard(d->lock);
    d->byId.emplace(++d->lastId, object.get());
    d->trials.push_back(std::move(object));
    return d->lastId;
}

bool KernelStore::removeTrial(int objectId) {
    const auto found = std::find_if(
        d->trials.begin(), d->trials.end(),
        [objectId](const Private::ObjectPtr& trial) { return trial->d->objectId == objectId; });
    if (found == d->trials.end()) return false;
    Private::ObjectPtr object;  // freed after the lock is given back, unless a lease keeps it
    const WriteLock guard(d->lock);
    object = d->takeOut(d->trials, found);
    return true;
}

HkKernelObjectData* KernelStore::find(int typeId, int objectId) const {
    const ReadLock guard(d->lock);
    HkKernelObjectData* object = d->object(objectId);
    return object && object->d->typeId == typeId ? object : nullptr;
}

// --- Values ---

HkParamKeyframeVector KernelStore::valuesAt(const HkKernelObjectData& object, qint64 frame) const {
    const ReadLock guard(d->lock);
    const HkKernelObjectDataDescr& descr = *object.d->descr;
    HkParamKeyframeVector values;
    values.reserve(descr.paramCount());
    for (int i = 0; i < descr.paramCount(); ++i)
        values.append(HkParamKeyframe(valueInForce(object.d->state, descr, i, frame)));
    values.setFrameNumber(frame);
    return values;
}

std::optional<std::vector<ParamEdit>> KernelStore::apply(int objectId,
                                                         std::vector<ParamEdit> edits) {
    HkKernelObjectData* object = d->object(objectId);
    if (!object) return std::nullopt;
    for (ParamEdit& edit : edits)
        if (!normaliseEdit(edit, *object->d->descr)) return std::nullopt;
    std::vector<ParamEdit> inverse;
    {
        const WriteLock guard(d->lock);
        for (const ParamEdit& edit : edits) inverse.push_back(applyEdit(object->d->state, edit));
    }
    std::reverse(inverse.begin(), inverse.end());
    emit KernelNotifier::instance()->objectChanged(object->d->typeId, objectId);
    return inverse;
}

bool KernelStore::setBaseValue(int objectId, int paramIndex, const QVariant& value) {
    return apply(objectId, {{paramIndex, std::nullopt, ParamKey{value, false}}}).has_value();
}

bool KernelStore::setKey(int objectId, int paramIndex, qint64 frame, const QVariant& value,
                         bool held) {
    return apply(objectId, {{paramIndex, frame, ParamKey{value, held}}}).has_value();
}

bool KernelStore::eraseKey(int objectId, int paramIndex, qint64 frame) {
    return apply(objectId, {{paramIndex, frame, std::nullopt}}).has_value();
}

bool KernelStore::setAnimated(int objectId, bool animated) {
    std::optional<InstanceState> changed = state(objectId);
    if (!changed) return false;
    changed->animated = animated;
    return setState(objectId, *changed);
}

bool KernelStore::setState(int objectId, const InstanceState& state) {
    HkKernelObjectData* object = d->object(objectId);
    if (!object || !stateFits(state, *object->d->descr)) return false;
    InstanceState copy = state;  // copied and freed outside the lock, so that readers wait briefly
    {
        const WriteLock guard(d->lock);
        std::swap(object->d->state, copy);
        object->animated = object->d->state.animated;
    }
    emit KernelNotifier::instance()->objectChanged(object->d->typeId, objectId);
    return true;
}

void KernelStore::setCurrentFrame(quint32 frame) {
    HkFXKernelData::getInstance()->currentFrame = frame;
    emit KernelNotifier::instance()->currentFrameChanged(frame);
}

void KernelStore::announceMediaLoaded() {
    emit KernelNotifier::instance()->signalMediaLoaded();
}

// --- Leases ---

quint64 KernelStore::beginLease() {
    const WriteLock guard(d->lock);
    d->leases.insert(d->epoch);
    return d->epoch;
}

void KernelStore::endLease(quint64 lease) {
    std::vector<Private::Removed> unused;  // freed after the lock is given back
    const WriteLock guard(d->lock);
    d->leases.erase(d->leases.find(lease));
    const auto firstUnused = std::stable_partition(
        d->removed.begin(), d->removed.end(), [this](const Private::Removed& removed) {
            return !d->leases.empty() && *d->leases.begin() < removed.epoch;
        });
    std::move(firstUnused, d->removed.end(), std::back_inserter(unused));
    d->removed.erase(firstUnused, d->removed.end());
}

int KernelStore::liveObjectCount() const {
    const ReadLock guard(d->lock);
    return static_cast<int>(d->order.size() + d->trials.size() + d->removed.size());
}
