#include "framework/contract/FxKernelApi/CmdChangeObject.h"

#include <QStringList>
#include <algorithm>
#include <iterator>
#include <vector>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/kernel/UndoGesture.h"

namespace {

// Any number will do that no other command of the host uses.
const int kChangeObjectCommandId = 1;

struct Change {
    int index;
    QVariant oldValue;  // in force before the first redo
    QVariant newValue;
};

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
    std::optional<qint64> frame;      // of the keys written; none: base values
    std::vector<Change> changes;      // by rising index
    std::vector<ParamEdit> edits;     // makes the changes; empty before the first redo
    std::vector<ParamEdit> takeBack;  // restores what was there before the first redo
    bool prepared = false;

    void prepare();
    QString text() const;
    bool changesSameAs(const Private& other) const;
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
    const bool keyed = state->animated && values.frameNumber() != HkParamKeyframeVector::NoFrame;
    for (int i = 0; i < descr->paramCount(); ++i) {
        if (!values.at(i).isAssigned()) continue;
        const ParamDescr& param = descr->param(i);
        const auto value = convertParamValue(values.at(i).getValue(), param.type);
        if (!value) continue;
        ParamEdit edit{i, std::nullopt, ParamKey{*value, false}};
        QVariant inForce = state->params[i].base;
        if (keyed && param.kind != ParamDescr::Constant) {
            edit.frame = frame = values.frameNumber();
            edit.key->held = isHeldAt(state->params[i].keys, *frame);
            inForce = valueInForce(*state, *descr, i, *frame);
        }
        if (inForce == *value) continue;
        changes.push_back({i, inForce, *value});
        edits.push_back(edit);
    }
}

QString CmdChangeObject::Private::text() const {
    const HkKernelObjectDataDescr* descr =
        HkFXKernelData::getInstance()->getDataDescriptor(id.typeId);
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(id.typeId);
    if (!descr || !manipulator) return QString();
    QStringList parts;
    for (const Change& change : changes)
        parts << QString::fromUtf8("%1 %2 → %3")
                     .arg(descr->param(change.index).name, shownText(change.oldValue),
                          shownText(change.newValue));
    QString text =
        manipulator->filterTitle() + QLatin1String(": ") + parts.join(QLatin1String(", "));
    if (frame) text += QString::fromLatin1(" (frame %1)").arg(*frame);
    return text;
}

bool CmdChangeObject::Private::changesSameAs(const Private& other) const {
    const auto sameParameter = [](const Change& a, const Change& b) { return a.index == b.index; };
    return id == other.id && frame == other.frame &&
           std::equal(changes.begin(), changes.end(), other.changes.begin(), other.changes.end(),
                      sameParameter);
}

CmdChangeObject::CmdChangeObject(int typeId, int objectId, const HkParamKeyframeVector& values,
                                 bool merge)
    : d(new Private{{typeId, objectId}, values, merge, currentGesture(), {}, {}, {}, {}}) {}

CmdChangeObject::~CmdChangeObject() {
    delete d;
}

void CmdChangeObject::redo() {
    if (!d->prepared) {
        d->prepare();
        setText(d->text());
        setObsolete(d->changes.empty());
    }
    if (d->edits.empty()) return;
    const auto takeBack = KernelStore::instance().apply(d->id.objectId, d->edits);
    if (takeBack && d->takeBack.empty()) d->takeBack = *takeBack;
}

void CmdChangeObject::undo() {
    if (!d->takeBack.empty()) KernelStore::instance().apply(d->id.objectId, d->takeBack);
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
    if (d->gesture != first->d->gesture || !d->changesSameAs(*first->d)) return false;

    bool isChange = false;
    for (std::size_t i = 0; i < d->changes.size(); ++i) {
        first->d->changes[i].newValue = d->changes[i].newValue;
        isChange |= first->d->changes[i].oldValue != d->changes[i].newValue;
    }
    first->d->edits = d->edits;
    if (isChange) {
        first->setText(first->d->text());
    } else {
        first->undo();  // the values are back already; keys that were not there before must go too
        first->setObsolete(true);
    }
    return true;
}
