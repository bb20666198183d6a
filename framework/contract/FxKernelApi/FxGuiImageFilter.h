#pragma once

#include <QWidget>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

class HkFilterManipulator;

/// The entry widget of one applied filter instance: title, enable, animate, remove and move
/// controls around the filter's control page.
class FXKERNELAPI_EXPORT FxGuiImageFilter : public QWidget {
    Q_OBJECT

public:
    FxGuiImageFilter(HkFilterManipulator* manipulator, int objectId, QWidget* parent = nullptr);
    ~FxGuiImageFilter() override;

    int objectId() const;
    HkFilterManipulator* manipulator() const;

    QWidget* controlPage =
        nullptr;  ///< a Qt child of this entry; null while the filter has no page

public slots:
    void slotGuiControlsChanged();  ///< a control of the page was edited: hands it to the
                                    ///< manipulator's commitGuiChanges

private:
    friend class HkFilterManipulator;
    struct Private;
    Private* d;
};
