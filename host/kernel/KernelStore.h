#pragma once

#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/kernel/InstanceState.h"

class QUndoStack;

/// Names one applied filter instance. Object ids are unique over all types.
struct InstanceId {
    int typeId = 0;
    int objectId = 0;
};
inline bool operator==(InstanceId a, InstanceId b) {
    return a.typeId == b.typeId && a.objectId == b.objectId;
}

/// The host's door to HkFXKernelData: filter types, and the applied instances in the order in which
/// a host renders them. Plug-ins never see it.
///
/// instances() may be called from any thread; all else belongs to the GUI thread. Every change is
/// atomic for readers and is announced by KernelNotifier. Operations on an instance that does not
/// exist return false or nothing and change nothing. Changes made here leave no undo step: the
/// commands make them.
class FXKERNELAPI_EXPORT KernelStore {
public:
    static KernelStore& instance();

    // --- Filter types ---

    /// The types with manipulator and descriptor, in order of registration.
    std::vector<int> types() const;
    HkFilterManipulator* manipulator(int typeId) const;  ///< null when none is registered
    /// The key under which a plug-in offers the type; empty, or 0, when there is none.
    QString filterKey(int typeId) const;
    int typeOfKey(const QString& key) const;
    void setFilterKey(int typeId, const QString& key);

    static int filterTypeOf(const HkFilterManipulator& manipulator);
    static bool isRegistered(const HkFilterManipulator& manipulator);  ///< its registration flag
    static QUndoStack* undoStackOf(const HkFilterManipulator& manipulator);  ///< null for none

    // --- Instances ---

    /// The applied instances in rendering order.
    std::vector<InstanceId> instances() const;
    int positionOf(int objectId) const;  ///< -1 when there is no such instance
    std::optional<InstanceState> state(int objectId) const;
    /// What the user calls the instance, else its filter's title; empty when there is none.
    QString nameOf(int objectId) const;

    /// Makes an instance with the type's defaults, or with `state`, before the one at `position`;
    /// at the end for a position outside the order. Returns its object id, which is never given
    /// again; -1 when the type is not registered or the state does not fit its descriptor.
    int add(int typeId, int position = -1);
    int add(int typeId, const InstanceState& state, int position = -1);

    /// Brings a removed instance back under its own id. False also for an id that was never given
    /// or is in use.
    bool restore(InstanceId id, const InstanceState& state, int position);
    bool remove(int objectId);
    bool move(int objectId, int position);  ///< to `position` in the new order, the end if outside
    void clear();                           ///< removes all instances

    /// An instance outside the order, to try values with: a filter renders it, getObject() finds
    /// it, but instances() does not list it, nothing is announced and no document keeps it. Returns
    /// its object id, or -1 as add() does. Whoever makes one removes it.
    int addTrial(int typeId, const InstanceState& state);
    bool removeTrial(int objectId);

    // --- Values ---

    bool setBaseValue(int objectId, int paramIndex, const QVariant& value);
    /// `held` matters for Interpolated parameters only. False for a Constant parameter.
    bool setKey(int objectId, int paramIndex, qint64 frame, const QVariant& value,
                bool held = false);
    bool eraseKey(int objectId, int paramIndex, qint64 frame);
    bool setAnimated(int objectId, bool animated);
    bool setState(int objectId, const InstanceState& state);

    /// Applies all edits, or none when one of them does not fit the descriptor. Returns the edits
    /// that take them back, in the order in which to apply them; nothing when nothing was applied.
    std::optional<std::vector<ParamEdit>> apply(int objectId, std::vector<ParamEdit> edits);

    /// Sets HkFXKernelData::currentFrame; pages then show the values in force there.
    void setCurrentFrame(quint32 frame);
    /// Announces that other media were opened.
    void announceMediaLoaded();

    /// Instances in memory, those removed but still leased included.
    int liveObjectCount() const;

private:
    friend class HkFXKernelData;
    friend class HkFilterManipulator;
    friend class HkKernelObjectData;
    friend class RenderLease;

    KernelStore();
    ~KernelStore();
    KernelStore(const KernelStore&) = delete;
    KernelStore& operator=(const KernelStore&) = delete;

    template <typename Condition>
    void removeWhere(Condition holds);  ///< instances, by their id; takes no memory
    bool insert(InstanceId id, const InstanceState& state, int position);
    HkKernelObjectData* find(int typeId, int objectId) const;
    HkParamKeyframeVector valuesAt(const HkKernelObjectData& object, qint64 frame) const;
    bool registerType(HkFilterManipulator* manipulator, int typeId);
    bool registerDescriptor(std::unique_ptr<HkKernelObjectDataDescr> descr, int typeId);
    const HkKernelObjectDataDescr* descriptor(int typeId) const;
    void forgetManipulator(const HkFilterManipulator* manipulator);
    quint64 beginLease();
    void endLease(quint64 lease);

    struct Private;
    std::unique_ptr<Private> d;
};

/// Keeps every instance that is in the store when the lease begins valid until it ends. A renderer
/// holds one per frame while filters work on it; any thread.
class FXKERNELAPI_EXPORT RenderLease {
public:
    RenderLease() : m_lease(KernelStore::instance().beginLease()) {}
    ~RenderLease() { KernelStore::instance().endLease(m_lease); }
    RenderLease(const RenderLease&) = delete;
    RenderLease& operator=(const RenderLease&) = delete;

private:
    quint64 m_lease;
};
