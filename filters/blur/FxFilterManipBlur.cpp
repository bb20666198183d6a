#include "filters/blur/FxFilterManipBlur.h"

#include "filters/blur/BlurParameters.h"
#include "filters/blur/FxGuiBlur.h"
#include "filters/blur/FxImageFilterBlur.h"

using namespace BlurParameters;

namespace {

const FilterFacts kFacts = {
    TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipBlur", "Blur + Enhance"),
    QT_TRANSLATE_NOOP("FxFilterManipBlur", "Blur"),
    ":/Icon_Blur.svg",
    EditMerging::Merged,
    // Defaults are written in the order in which the page writes an edit.
    {{Blur, "Blur", QMetaType::Int, ParamDescr::Interpolated, 1},
     {Enhance, "Enhance", QMetaType::Bool, ParamDescr::Stepped, false}},
};

}  // namespace

FxFilterManipBlur::FxFilterManipBlur(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipBlur::createPage(QWidget* parent) {
    return new FxGuiBlur(parent);
}

HkImageFilter* FxFilterManipBlur::createImageFilter(int objectId) {
    return new FxImageFilterBlur(objectId);
}
