#include "filters/adaptthresh/FxFilterManipAdaptTresh.h"

#include "filters/adaptthresh/AdaptTreshParameters.h"
#include "filters/adaptthresh/FxGuiAdaptTreshold.h"
#include "filters/adaptthresh/FxImageFilterAdaptTresh.h"

using namespace AdaptTreshParameters;

namespace {

const FilterFacts kFacts = {
    TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipAdaptTresh", "Adaptive Thresholding"),
    QT_TRANSLATE_NOOP("FxFilterManipAdaptTresh", "Adapt. threshold"),
    ":/Icon_AdaptThresh.svg",
    EditMerging::Merged,
    // The default size is below the page's smallest, 11, on purpose: a fresh filter keeps fine
    // detail, and the first touch of the slider moves it into the page's range.
    {{Size, "Size", QMetaType::Int, ParamDescr::Interpolated, 5},
     {Min, "Min", QMetaType::Double, ParamDescr::Interpolated, 12.8}},
};

}  // namespace

FxFilterManipAdaptTresh::FxFilterManipAdaptTresh(QObject* parent)
    : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipAdaptTresh::createPage(QWidget* parent) {
    return new FxGuiAdaptTreshold(parent);
}

HkImageFilter* FxFilterManipAdaptTresh::createImageFilter(int objectId) {
    return new FxImageFilterAdaptTresh(objectId);
}
