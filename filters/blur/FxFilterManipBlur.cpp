#include "filters/blur/FxFilterManipBlur.h"

#include "filters/blur/BlurParameters.h"
#include "filters/blur/FxGuiBlur.h"
#include "filters/blur/FxImageFilterBlur.h"

namespace {

const FilterFacts kFacts = {
    BlurTypeId,
    QT_TRANSLATE_NOOP("FxFilterManipBlur", "Blur + Enhance"),
    QT_TRANSLATE_NOOP("FxFilterManipBlur", "Blur"),
    ":/Icon_Blur.svg",
    EditMerging::Merged,
    ParameterTable({{"Enhance", QMetaType::Bool, ParamDescr::Stepped, false},
                    {"Blur", QMetaType::Int, ParamDescr::Interpolated, 1}},
                   // Defaults are written in the order in which the page writes an edit.
                   {EnabledParameter, BlurSizeParameter, EnhanceParameter}),
};

}  // namespace

FxFilterManipBlur::FxFilterManipBlur(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipBlur::createPage(QWidget* parent) {
    return new FxGuiBlur(parent);
}

HkImageFilter* FxFilterManipBlur::createImageFilter(int objectId) {
    return new FxImageFilterBlur(objectId);
}
