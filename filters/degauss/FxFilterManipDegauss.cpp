#include "filters/degauss/FxFilterManipDegauss.h"

#include "filters/degauss/DegaussParameters.h"
#include "filters/degauss/FxGuiDegauss.h"
#include "filters/degauss/FxImageFilterDegauss.h"

namespace {

const FilterFacts kFacts = {
    DegaussTypeId,
    QT_TRANSLATE_NOOP("FxFilterManipDegauss", "Deconvolution"),
    QT_TRANSLATE_NOOP("FxFilterManipDegauss", "Sharpening"),
    ":/Icon_Degauss.svg",
    EditMerging::Merged,
    {{"Threshold", QMetaType::Int, ParamDescr::Interpolated, 2},
     {"Method", QMetaType::Int, ParamDescr::Stepped, int(LucyRichardsonMethod)}},
};

}  // namespace

FxFilterManipDegauss::FxFilterManipDegauss(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipDegauss::createPage(QWidget* parent) {
    return new FxGuiDegauss(parent);
}

HkImageFilter* FxFilterManipDegauss::createImageFilter(int objectId) {
    return new FxImageFilterDegauss(objectId);
}
