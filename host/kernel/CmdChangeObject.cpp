#include "framework/contract/FxKernelApi/CmdChangeObject.h"

#include <QCoreApplication>
#include <QStringList>
#include <iterator>
#include <map>
#include <vector>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/kernel/UndoGesture.h"

namespace {

// Any number will do that no other command of the host uses.
const int kChangeObjectCommandId = 1;

struct Change {
    QVariant oldValue;   // in force before the first redo
    ParamEdit edit;      // makes the change
    ParamEdit takeBack;  // restores what was there before the first redo

    const QVariant& newValue() const { return edit.key->value; }
};

using Changes = std::map<int, Change>;  // by parameter

QString shownText(const QVariant& value) {
    return value.userType() == QMetaType::Double ? QString::number(value.toDouble())
                                                 : value.toString();
}

/// A key that splits a held stretch of an Interpolated parameter leaves the second part held, and a
/// key that is there stays what it is: only the value at this frame is edited, not the way it runs
/// on.
bool isHeldAt(const ParamTrack& keys, qint64 frame) {
    const auto next = keys.upper_bound(frame);
    return next != keys.begin() && std::prev(next)->second.held;
}

}  // namespace

struct CmdChangeObject::Private {
    InstanceId id;
    HkParamKeyframeVector values;
    bool merge;
    quint64 gesture;
    std::optional<qint64> frame;  // of an animated instance; none: one value for all frames
    Changes changes;
    bool prepared = false;

    void prepare();
    void apply(ParamEdit Change::*edit) const;
    void mergeLater(const Change& later);
    QString text() const;
};

/// Works out what the command changes, from the state it finds at its first redo.
void CmdChangeObject::Private::prepare() {
    prepared = true;
    const KernelStore& store = KernelStore::instance();
    const HkKernelObjectDataDescr* descr =
        HkFXKernelData::getInstance()->getDataDescriptor(id.typeId);
    const auto state = store.state(id.objectId);
    if (!state || !descr || !HkFXKernelData::getInstance()->getObject(id.typeId, id.objectId) ||
        values.size() != descr->paramCount())
        return;
    if (state->animated && values.frameNumber() != HkParamKeyframeVector::NoFrame)
        frame = values.frameNumber();
    InstanceState changed = *state;
    for (int i = 0; i < descr->paramCount(); ++i) {
        if (!values.at(i).isAssigned()) continue;
        const ParamDescr& param = descr->param(i);
        const auto value = convertParamValue(values.at(i).getValue(), param.type);
        if (!value) continue;
        ParamEdit edit{i, std::nullopt, ParamKey{*value, false}};
        QVariant inForce = state->params[i].base;
        if (frame && param.kind != ParamDescr::Constant) {
            edit.frame = frame;
            edit.key->held = isHeldAt(state->params[i].keys, *frame);
            inForce = valueInForce(*state, *descr, i, *frame);
        }
        if (inForce == *value) continue;
        changes[i] = {inForce, edit, applyEdit(changed, edit)};
    }
}

void CmdChangeObject::Private::apply(ParamEdit Change::*edit) const {
    std::vector<ParamEdit> edits;
    for (const auto& [index, change] : changes) edits.push_back(change.*edit);
    if (!edits.empty()) KernelStore::instance().apply(id.objectId, edits);
}

/// A value that is back where it was is no change; a key that was not there before goes again.
void CmdChangeObject::Private::mergeLater(const Change& later) {
    const auto [mine, isNew] = changes.emplace(later.edit.index, later);
    if (isNew) return;
    mine->second.edit = later.edit;
    if (mine->second.oldValue != later.newValue()) return;
    KernelStore::instance().apply(id.objectId, {mine->second.takeBack});
    changes.erase(mine);
}

QString CmdChangeObject::Private::text() const {
    const HkKernelObjectDataDescr* descr =
        HkFXKernelData::getInstance()->getDataDescriptor(id.typeId);
    if (!descr) return QString();
    QStringList parts;
    bool writesKeys = false;
    for (const auto& [index, change] : changes) {
        parts << QString::fromUtf8("%1 %2 → %3")
                     .arg(descr->param(index).name, shownText(change.oldValue),
                          shownText(change.newValue()));
        writesKeys |= change.edit.frame.has_value();
    }
    QString text = KernelStore::instance().nameOf(id.objectId) + QLatin1String(": ") +
                   parts.join(QLatin1String(", "));
    if (writesKeys)
        text += QCoreApplication::translate("FilterCommands", " (frame %1)").arg(*frame);
    return text;
}

CmdChangeObject::CmdChangeObject(int typeId, int objectId, const HkParamKeyframeVector& values,
                                 bool merge)
    : d(new Private{{typeId, objectId}, values, merge, currentGesture(), {}, {}}) {}

CmdChangeObject::~CmdChangeObject() {
    delete d;
}

void CmdChangeObject::redo() {
    if (!d->prepared) {
        d->prepare();
        setText(d->text());
        setObsolete(d->changes.empty());
    }
    d->apply(&Change::edit);
}

void CmdChangeObject::undo() {
    d->apply(&Change::takeBack);
    endGesture();
}

int CmdChangeObject::id() const {
    return d->merge ? kChangeObjectCommandId : -1;
}

bool CmdChangeObject::mergeWith(const QUndoCommand* other) {
    return HkFXKernelCommand::mergeWith(other);
}

bool CmdChangeObject::mergeMeWith(QUndoCommand* earlier) {
    auto* first = dynamic_cast<CmdChangeObject*>(earlier);
    if (!first || !d->merge || !first->d->merge || d->changes.empty()) return false;
    if (d->gesture != first->d->gesture || !(d->id == first->d->id) || d->frame != first->d->frame)
        return false;
    for (const auto& [index, change] : d->changes) first->d->mergeLater(change);
    first->setText(first->d->text());
    first->setObsolete(first->d->changes.empty());
    return true;
}
