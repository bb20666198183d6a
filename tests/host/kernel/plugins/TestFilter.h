#pragma once

#include <QSlider>
#include <QWidget>
#include <vector>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "framework/contract/FxKernelApi/HkKernelObjectDataDescr.h"

/// The control page of the test filter.
class TestPage : public QWidget {
public:
    explicit TestPage(QWidget* parent);

    QSlider* size;
};

/// A small filter with parameters of every type and kind, and a page for one of them. It follows
/// the common steps of a manipulator by itself, so that the host is tested without the plug-in's
/// code.
class TestManipulator : public HkFilterManipulator {
public:
    enum Parameter { Enabled, Smooth, Size, Gain, Label, ParameterCount };
    static const int kTypeId = 9001;

    explicit TestManipulator(int typeId = kTypeId, const QString& title = "Test & try");

    void initManipulator(QToolBox* toolBox) override;
    QString filterTitle() override { return m_title; }
    QIcon filterIcon() override;
    QString filterDescription() override { return "Does nothing, with a page of its own"; }
    QString filterDetailedDescription() override { return "Exists so that the host can be tested"; }
    void commitGuiChanges(int objectId) override;
    HkImageFilter* createImageFilter(int objectId) override;
    QWidget* createFilterGui(QWidget* parent) override;
    bool fillDefaultValues(const HkKernelObjectDataDescr* descr, HkParamKeyframeVector& values,
                           int reserved) override;
    void updateGuiFromKernel(int objectId, const HkKernelObjectData* object) override;

    TestPage* page(int objectId);
    bool isRegistered() const { return registered; }

    int refreshes = 0;                        ///< calls of updateGuiFromKernel
    int largestSize = 13;                     ///< of the pages made from now on
    const QUndoStack* stackAtInit = nullptr;  ///< what setUndoStack had given by initManipulator

protected:
    QString m_title;
};

/// The value in force of an instance of the test filter.
QVariant valueAt(int objectId, TestManipulator::Parameter parameter, qint64 frame = 0);

/// The ids of all instances, in rendering order.
std::vector<int> renderingOrder();
