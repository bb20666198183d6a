#pragma once

#include <vector>

#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"
#include "host/kernel/KernelStore.h"

/// One filter of a chain that is to be; object id -1 asks for a new instance.
struct ChainItem {
    InstanceId id;
    InstanceState state;
};
inline bool operator==(const ChainItem& a, const ChainItem& b) {
    return a.id == b.id && a.state == b.state;
}

/// The instances that the store holds now, in their order.
FXKERNELAPI_EXPORT std::vector<ChainItem> currentChain();

/// Makes the store hold exactly this chain, in one step: instances named in it keep their object
/// ids, whether they are in the store or were removed from it, new ones get theirs at the first
/// redo and keep them. Drops itself from the stack when its first redo finds nothing to change.
class FXKERNELAPI_EXPORT CmdSetChain : public HkFXKernelCommand {
public:
    CmdSetChain(const QString& text, std::vector<ChainItem> chain);
    void undo() override;
    void redo() override;

private:
    std::vector<ChainItem> m_before;
    std::vector<ChainItem> m_after;
    bool m_isFirst = true;
};
