#include "filters/open/FxFilterManipOpen.h"

#include "filters/open/FxGuiOpen.h"
#include "filters/open/FxImageFilterOpen.h"
#include "filters/open/OpenParameters.h"

namespace {

const FilterFacts kFacts = {
    OpenParameters::TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipOpen", "Opening and Closing"),
    QT_TRANSLATE_NOOP("FxFilterManipOpen", "Open/Close"),
    ":/Icon_Open.svg",
    EditMerging::Merged,
    SignedMorphologyParameters::table(),
};

}  // namespace

FxFilterManipOpen::FxFilterManipOpen(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipOpen::createPage(QWidget* parent) {
    return new FxGuiOpen(parent);
}

HkImageFilter* FxFilterManipOpen::createImageFilter(int objectId) {
    return new FxImageFilterOpen(objectId);
}
