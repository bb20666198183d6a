#include "filters/chansep/FxFilterManipSep.h"

#include "filters/chansep/ChannelSepParameters.h"
#include "filters/chansep/FxGuiChannelSep.h"
#include "filters/chansep/FxImageFilterSep.h"

using namespace ChannelSepParameters;

namespace {

const FilterFacts kFacts = {
    TypeId,
    QT_TRANSLATE_NOOP("FxFilterManipSep", "Channel separation"),
    QT_TRANSLATE_NOOP("FxFilterManipSep", "Channel selection"),
    ":/Icon_ChanSep.svg",
    EditMerging::Separate,  // each choice of a channel is a step of its own; there is nothing to
                            // drag
    {
        {Channel, "Channel", QMetaType::Int, ParamDescr::Stepped, int(Lightness)},
        {Invert, "Invert", QMetaType::Bool, ParamDescr::Stepped, false},
    },
};

}  // namespace

FxFilterManipSep::FxFilterManipSep(QObject* parent) : FxFilterManipulator(kFacts, parent) {}

FxControlPage* FxFilterManipSep::createPage(QWidget* parent) {
    return new FxGuiChannelSep(parent);
}

HkImageFilter* FxFilterManipSep::createImageFilter(int objectId) {
    return new FxImageFilterSep(objectId);
}
