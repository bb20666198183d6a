#include "host/kernel/CmdSetChain.h"

#include <algorithm>
#include <utility>

namespace {

bool holds(const std::vector<ChainItem>& chain, int objectId) {
    return std::any_of(chain.begin(), chain.end(),
                       [=](const ChainItem& item) { return item.id.objectId == objectId; });
}

/// Gives new items their object ids.
void bringAbout(std::vector<ChainItem>& chain) {
    KernelStore& store = KernelStore::instance();
    for (const InstanceId& id : store.instances())
        if (!holds(chain, id.objectId)) store.remove(id.objectId);
    int position = 0;
    for (ChainItem& item : chain) {
        const int objectId = item.id.objectId;
        if (objectId < 0) {
            item.id.objectId = store.add(item.id.typeId, item.state, position);
        } else if (const auto state = store.state(objectId)) {
            if (!(*state == item.state)) store.setState(objectId, item.state);
            if (store.positionOf(objectId) != position) store.move(objectId, position);
        } else {
            store.restore(item.id, item.state, position);
        }
        ++position;
    }
}

}  // namespace

std::vector<ChainItem> currentChain() {
    const KernelStore& store = KernelStore::instance();
    std::vector<ChainItem> chain;
    for (const InstanceId& id : store.instances()) chain.push_back({id, *store.state(id.objectId)});
    return chain;
}

CmdSetChain::CmdSetChain(const QString& text, std::vector<ChainItem> chain)
    : m_after(std::move(chain)) {
    setText(text);
}

void CmdSetChain::redo() {
    if (std::exchange(m_isFirst, false)) {
        m_before = currentChain();
        setObsolete(m_before == m_after);
    }
    bringAbout(m_after);
}

void CmdSetChain::undo() {
    bringAbout(m_before);
}
