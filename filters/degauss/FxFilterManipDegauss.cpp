#include "filters/degauss/FxFilterManipDegauss.h"

#include "filters/degauss/DegaussParameters.h"
#include "filters/degauss/FxGuiDegauss.h"
#include "filters/degauss/FxImageFilterDegauss.h"

using namespace DegaussParameters;

namespace {

const FilterFacts kFacts = {
    TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipDegauss", "Deconvolution"),
    QT_TRANSLATE_NOOP("FxFilterManipDegauss", "Sharpening"),
    ":/Icon_Degauss.svg",
    EditMerging::Merged,
    {{Threshold, "Threshold", QMetaType::Int, ParamDescr::Interpolated, 2},
     {Method, "Method", QMetaType::Int, ParamDescr::Stepped, int(LucyRichardson)}},
};

}  // namespace

FxFilterManipDegauss::FxFilterManipDegauss(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipDegauss::createPage(QWidget* parent) {
    return new FxGuiDegauss(parent);
}

HkImageFilter* FxFilterManipDegauss::createImageFilter(int objectId) {
    return new FxImageFilterDegauss(objectId);
}
