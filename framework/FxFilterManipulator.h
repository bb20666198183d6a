#pragma once

#include <QCursor>
#include <QIcon>

#include "framework/ParameterTable.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"

class FxControlPage;

/// Whether edits of one gesture may become one undo step.
enum class EditMerging { Separate, Merged };

/// What distinguishes one filter's manipulator from another's. Texts are translated in the context
/// of its class.
struct FilterFacts {
    int typeId;
    const char* title;
    const char* description;
    const char* iconResource;
    EditMerging merging;
    ParameterTable parameters;
};

/// What every manipulator does: registration, defaults, edits into undo commands, keyframes onto
/// the page.
///
/// Without Q_OBJECT on purpose: each filter's meta-object follows the host's base class directly.
class FxFilterManipulator : public HkFilterManipulator {
public:
    void initManipulator(QToolBox* toolBox) final;
    QString filterTitle() final;
    QIcon filterIcon() final;
    QString filterDescription() final;
    QString filterDetailedDescription() final;
    void commitGuiChanges(int objectId) final;
    QWidget* createFilterGui(QWidget* parent) final;
    bool fillDefaultValues(const HkKernelObjectDataDescr* descr, HkParamKeyframeVector& values,
                           int reserved) final;
    void updateGuiFromKernel(int objectId, const HkKernelObjectData* object) final;

protected:
    /// facts must outlive the manipulator.
    FxFilterManipulator(const FilterFacts& facts, QObject* parent);

    virtual FxControlPage* createPage(QWidget* parent) = 0;

private:
    QString translated(const char* text) const;
    FxControlPage* pageOf(int objectId);

    const FilterFacts& m_facts;
    QCursor m_cursor;
    QIcon m_icon;
};
