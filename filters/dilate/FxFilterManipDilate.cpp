#include "filters/dilate/FxFilterManipDilate.h"

#include "filters/dilate/DilateParameters.h"
#include "filters/dilate/FxGuiDilate.h"
#include "filters/dilate/FxImageFilterDilate.h"

namespace {

const FilterFacts kFacts = {
    DilateParameters::TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipDilate", "Dilation and Erosion"),
    QT_TRANSLATE_NOOP("FxFilterManipDilate", "Dilate/Erode"),
    ":/Icon_Dilate.svg",
    EditMerging::Merged,
    SignedMorphologyParameters::table(),
};

}  // namespace

FxFilterManipDilate::FxFilterManipDilate(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipDilate::createPage(QWidget* parent) {
    return new FxGuiDilate(parent);
}

HkImageFilter* FxFilterManipDilate::createImageFilter(int objectId) {
    return new FxImageFilterDilate(objectId);
}
