#pragma once

#include <QToolBox>
#include <QUndoStack>
#include <QVariant>
#include <QWidget>
#include <memory>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "framework/contract/ImageProcessor/HkImage.h"
#include "tests/kit/pixels.h"

/// The root object of the built library, reached through its entry point.
HkFilterManipulatorPluginInterface& plugin();

std::unique_ptr<HkFilterManipulator> makeManipulator(const char* key);

/// A host with one filter of the built library, applied once, and the entry that shows it. What is
/// not there is thrown as an error.
class FilterHost {
public:
    explicit FilterHost(const char* key);

    QWidget& page() { return *entry().controlPage; }
    FxGuiImageFilter& entry() { return *manipulator->getFilterGui(objectId); }

    /// A control of the page: a slider by its object name, a button by its label.
    QWidget& control(const char* name);
    /// What a user does to a control: a slider goes to `position`, a button is clicked.
    void edit(const char* name, int position);
    /// The same without any signal that tells of it.
    void editUnnoticed(const char* name, int position);
    /// Where a slider stands, or 0 and 1 for a button.
    int position(const char* name);

    QVariant value(int parameter, qint64 frame = 0) const;  ///< in force at `frame`
    void set(int parameter, const QVariant& value);         ///< as a document does: no undo step

    /// Renders with a fresh filter object; see below.
    bool process(std::unique_ptr<HkImage>& image, qint64 frame = 0);

    QToolBox toolBox;
    QUndoStack undo;
    std::unique_ptr<HkFilterManipulator> manipulator;
    int typeId;
    int objectId;
};

/// A picture of many colours with black blocks: objects and background for every filter.
std::unique_ptr<HkImage> testImage(int width, int height, int channels);

/// Renders one frame: `image` gives way to what the filter makes of it. True when that is another
/// object.
bool process(HkImageFilter& filter, std::unique_ptr<HkImage>& image, qint64 frame = 0);
