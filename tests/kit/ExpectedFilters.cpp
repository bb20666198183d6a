#include "tests/kit/ExpectedFilters.h"

namespace {

const QMetaType::Type kBool = QMetaType::Bool;
const QMetaType::Type kInt = QMetaType::Int;
const QMetaType::Type kDouble = QMetaType::Double;
const ParamDescr::KeyframeType kLinear = ParamDescr::KeyframeType(0);
const ParamDescr::KeyframeType kHeld = ParamDescr::KeyframeType(1);
const ParamDescr::KeyframeType kConstant = ParamDescr::KeyframeType(2);
const ExpectedParameter kEnabled = {"Enabled", kInt, kConstant, 1};
const int kClick = 1;
const bool kMerged = true, kSeparate = false;

}  // namespace

const std::vector<ExpectedFilter>& expectedFilters() {
    // clang-format off
    static const std::vector<ExpectedFilter> filters = {
        {"Channel separation", 2002, "FxFilterManipSep", "Channel separation", "Channel selection",
         ":/Icon_ChanSep.svg", kSeparate,
         {kEnabled, {"Channel", kInt, kHeld, 5}, {"Invert", kBool, kHeld, false}}, {0, 1, 2},
         {{"R", kClick, 1, 1}, {"G", kClick, 1, 2}, {"B", kClick, 1, 3},
          {"H", kClick, 1, 4}, {"S", kClick, 1, 6},
          {"Invert", kClick, 2, true}}},
        {"Blur and enhance", 2003, "FxFilterManipBlur", "Blur + Enhance", "Blur",
         ":/Icon_Blur.svg", kMerged,
         {kEnabled, {"Enhance", kBool, kHeld, false}, {"Blur", kInt, kLinear, 1}}, {0, 2, 1},
         {{"theSlBlur", 2, 2, 2}, {"theSlBlur", 13, 2, 13}, {"Enhance", kClick, 1, true}}},
        {"Adaptive threshold", 2005, "FxFilterManipAdaptTresh", "Adaptive Thresholding",
         "Adapt. threshold", ":/Icon_AdaptThresh.svg", kMerged,
         {kEnabled, {"Size", kInt, kLinear, 5}, {"Min", kDouble, kLinear, 12.8}}, {0, 1, 2},
         {{"theSlSize", 6, 1, 13}, {"theSlSize", 50, 1, 101}, {"theSlMin", 255, 2, 25.5}}},
        {"Dilate_Erode", 2007, "FxFilterManipDilate", "Dilation and Erosion", "Dilate/Erode",
         ":/Icon_Dilate.svg", kMerged,
         {kEnabled, {"Dilate", kInt, kLinear, 0}}, {0, 1},
         {{"theSlDilate", -4, 1, -4}, {"theSlDilate", 13, 1, 13}}},
        {"Open_Close", 2006, "FxFilterManipOpen", "Opening and Closing", "Open/Close",
         ":/Icon_Open.svg", kMerged,
         {kEnabled, {"Dilate", kInt, kLinear, 0}}, {0, 1},
         {{"theSlOpen", 5, 1, 5}, {"theSlOpen", -13, 1, -13}}},
        {"Degauss", 2010, "FxFilterManipDegauss", "Deconvolution", "Sharpening",
         ":/Icon_Degauss.svg", kMerged,
         {kEnabled, {"Threshold", kInt, kLinear, 2}, {"Method", kInt, kHeld, 1}}, {0, 1, 2},
         {{"theSlThresh", 3, 1, 3}, {"theSlThresh", 15, 1, 15}, {"FFT", kClick, 2, 0}}},
        {"Object separator", 2011, "FxFilterManipDistance", "Object separator", "Object separation",
         ":/Icon_Distance.svg", kMerged,
         {kEnabled, {"Type", kInt, kHeld, 0}, {"Det", kInt, kLinear, 10}}, {0, 1, 2},
         {{"theSlDetails", 31, 2, 31}, {"theSlDetails", 100, 2, 100}, {"Borders only", kClick, 1, 1}}},
    };
    // clang-format on
    return filters;
}
