#include "host/document/PageRange.h"

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

/// An instance that exists only to be looked at.
class Specimen {
public:
    explicit Specimen(int typeId)
        : m_typeId(typeId),
          m_manipulator(KernelStore::instance().manipulator(typeId)),
          m_objectId(KernelStore::instance().add(typeId)) {}

    ~Specimen() {
        if (m_objectId >= 0) KernelStore::instance().remove(m_objectId);
    }

    Specimen(const Specimen&) = delete;
    Specimen& operator=(const Specimen&) = delete;

    bool hasPage() const {
        if (!m_manipulator || m_objectId < 0) return false;
        const FxGuiImageFilter* entry = m_manipulator->getFilterGui(m_objectId);
        return entry && entry->controlPage;
    }

    /// What comes back when the page has shown `value` and is committed.
    double throughPage(int paramIndex, double value) {
        KernelStore::instance().setBaseValue(m_objectId, paramIndex, value);
        m_manipulator->updateGuiFromKernel(
            m_objectId, HkFXKernelData::getInstance()->getObject(m_typeId, m_objectId));
        m_manipulator->commitGuiChanges(m_objectId);
        return KernelStore::instance().state(m_objectId)->params[paramIndex].base.toDouble();
    }

private:
    int m_typeId;
    HkFilterManipulator* m_manipulator;
    int m_objectId;
};

std::optional<ParameterRange> rangeOf(Specimen& specimen, int paramIndex) {
    // Beyond every sensible control, and yet far from overflowing a page that scales by a thousand.
    const double farOut = 1e6;
    const ParameterRange ends = {specimen.throughPage(paramIndex, -farOut),
                                 specimen.throughPage(paramIndex, farOut)};
    if (ends.lowest == -farOut || ends.highest == farOut) return std::nullopt;
    if (ends.lowest < ends.highest) return ends;

    // A row of buttons does not clamp: it shows the values it has a button for and no other.
    const int fewestChoice = -16, mostChoice = 64;
    std::optional<ParameterRange> choices;
    for (int value = fewestChoice; value <= mostChoice; ++value) {
        if (specimen.throughPage(paramIndex, value) != value) continue;
        if (!choices) choices = ParameterRange{double(value), double(value)};
        choices->highest = value;
    }
    return choices;
}

}  // namespace

std::vector<std::optional<ParameterRange>> pageRanges(int typeId) {
    const HkKernelObjectDataDescr* descr = HkFXKernelData::getInstance()->getDataDescriptor(typeId);
    if (!descr) return {};
    std::vector<std::optional<ParameterRange>> ranges(descr->paramCount());
    Specimen specimen(typeId);
    if (!specimen.hasPage()) return ranges;
    for (int index = 0; index < descr->paramCount(); ++index) {
        const QMetaType::Type type = descr->param(index).type;
        if (type == QMetaType::Int || type == QMetaType::Double)
            ranges[index] = rangeOf(specimen, index);
    }
    return ranges;
}

}  // namespace document
