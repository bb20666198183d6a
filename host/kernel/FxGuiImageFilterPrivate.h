#pragma once

#include <QPointer>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"

class QCheckBox;
class QGridLayout;
class QToolButton;

struct FxGuiImageFilter::Private {
    FxGuiImageFilter* q;
    HkFilterManipulator* manipulator;
    int objectId;
    QGridLayout* layout = nullptr;  // header, then the page
    QCheckBox* enabled = nullptr;
    QToolButton* animate = nullptr;
    QToolButton* up = nullptr;
    QToolButton* down = nullptr;
    QToolButton* remove = nullptr;

    void build();
    void connectControls();
    void setPage(QWidget* page);  ///< adopts the page; null for none
    void showState();             ///< the header shows what the store holds of the instance
    void showPlace(bool isFirst, bool isLast);  ///< where the instance is in the rendering order
    void moveBy(int places);
};
