#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

class FxGuiImageFilter;
class HkCvEditor;  ///< the host's curve editor; plug-ins only pass it on
class HkFXKernelData;
class HkImageFilter;
class HkKernelObjectData;
class HkKernelObjectDataDescr;
class HkParamKeyframeVector;
class QDomElement;
class QToolBox;
class QUndoStack;

/// Base of the manipulators, of which the host keeps one per filter type. All of it runs on the GUI
/// thread.
///
/// The virtual operations below stand in the order of the host's table of functions.
class FXKERNELAPI_EXPORT HkFilterManipulator : public QObject {
    Q_OBJECT

public:
    explicit HkFilterManipulator(QObject* parent);
    ~HkFilterManipulator() override;

    /// Adds this filter's page (icon, title, description, a button that applies the filter) to the
    /// tool box. A host without windows passes null. Overrides call the base first, then register
    /// type and descriptor.
    virtual void initManipulator(QToolBox* toolBox);
    virtual void setUndoStack(QUndoStack* stack);
    virtual void setCvEditor(HkCvEditor* editor);
    virtual QString filterTitle() = 0;
    virtual QIcon filterIcon() = 0;
    virtual QString filterDescription() = 0;
    virtual QString filterDetailedDescription() = 0;

    /// The entry widget of an instance; null for an unknown instance and in a host without windows.
    virtual FxGuiImageFilter* getFilterGui(int objectId);

    /// Turns the state of the instance's control page into one undoable command.
    virtual void commitGuiChanges(int objectId) = 0;

    virtual void removeFilter(FxGuiImageFilter* entry);  ///< undoable
    /// Moves entry's instance before that of `before`, to the end for null. Undoable.
    virtual void moveFilter(FxGuiImageFilter* entry, FxGuiImageFilter* before);
    virtual void enableFilter(int objectId, bool enabled);  ///< undoable

    /// Switches keyframing on (the values in force become keys of the current frame) or off (the
    /// values in force at the current frame stay). Undoable when asked; otherwise done at once, as
    /// a document that is being read does it.
    virtual void changeFilterAnimationState(int objectId, bool animated, bool undoable);

    /// Makes an instance from the element that saveDataObject wrote, at the end of the order,
    /// without an undo step. Null, and nothing made, when the element is of another filter type or
    /// cannot be read.
    virtual HkKernelObjectData* constructDataObject(const QDomElement& element);

    virtual HkImageFilter* createImageFilter(int objectId) = 0;  ///< the caller owns it
    virtual QWidget* createFilterGui(
        QWidget* parent) = 0;  ///< the page, a child of the entry widget `parent`
    virtual bool fillDefaultValues(const HkKernelObjectDataDescr* descr,
                                   HkParamKeyframeVector& values, int reserved) = 0;
    virtual void updateGuiFromKernel(int objectId, const HkKernelObjectData* object) = 0;

    /// Applies the filter: makes an instance with the filter's defaults at the end of the order.
    /// Undoable. Returns its object id, or -1 when the type is not registered.
    int addFilter();

    /// The instance with its values and keys, as an element for a document.
    QDomElement saveDataObject(int objectId, class QDomDocument& document) const;

public slots:
    void slotMediaLoadedInKernel();  ///< new media: the pages show the values at the current frame

protected:
    bool registered = false;           ///< the type and its descriptor are known to the kernel
    QUndoStack* undoStack = nullptr;   ///< where every edit is pushed
    QObject* mediaNotifier = nullptr;  ///< emits signalMediaLoaded()
    HkFXKernelData* kernelData = nullptr;
    int filterType = 0;  ///< written by the subclass constructor
    bool editInProgress =
        false;  ///< the change about to be announced comes from this manipulator's own page

private:
    friend class KernelStore;
    struct Private;
    Private* d;
};
