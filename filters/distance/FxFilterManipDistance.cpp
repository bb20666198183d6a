#include "filters/distance/FxFilterManipDistance.h"

#include "filters/distance/DistanceParameters.h"
#include "filters/distance/FxGuiDistance.h"
#include "filters/distance/FxImageFilterDistance.h"

using namespace DistanceParameters;

namespace {

const FilterFacts kFacts = {
    TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipDistance", "Object separator"),
    QT_TRANSLATE_NOOP("FxFilterManipDistance", "Object separation"),
    ":/Icon_Distance.svg",
    EditMerging::Merged,
    // The default is not the form's initial slider position: the first refresh of a page shows it.
    {{Type, "Type", QMetaType::Int, ParamDescr::Stepped, int(FilledAreas)},
     {Det, "Det", QMetaType::Int, ParamDescr::Interpolated, 10}},
};

}  // namespace

FxFilterManipDistance::FxFilterManipDistance(QObject* parent)
    : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipDistance::createPage(QWidget* parent) {
    return new FxGuiDistance(parent);
}

HkImageFilter* FxFilterManipDistance::createImageFilter(int objectId) {
    return new FxImageFilterDistance(objectId);
}
