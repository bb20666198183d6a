#include "host/render/demo/Demonstrations.h"

#include <map>

namespace render {

namespace {

const char kLightness[] = "Channel separation:Channel=5";
/// Bright objects on black become white on black.
const char kTwoLevels[] = "Adaptive threshold:Size=101,Min=0";

/// Bright discs that touch.
const QRect kDiscs(0, 8, 400, 300);

/// Blobs with small holes and specks around them.
const QRect kSpecks(8, 326, 200, 150);

}  // namespace

QRect sampleDetail() {
    return QRect(250, 326, 200, 150);
}

std::vector<Demonstration> demonstrationsOf(const QString& key) {
    static const std::map<QString, std::vector<Demonstration>> known = {
        {"Channel separation",
         {{{"Channel separation:Channel=1"}, "red", {}},
          {{"Channel separation:Channel=4"}, "hue", {}}}},
        {"Blur and enhance",
         {{{"Blur and enhance:Blur=6"}, "blur", {}},
          {{"Blur and enhance:Enhance=true"}, "enhance, detail", sampleDetail()}}},
        {"Adaptive threshold",
         {{{kLightness, "Adaptive threshold:Size=31,Min=12"}, "text", {}},
          {{kLightness, kTwoLevels}, "bright on dark", {}}}},
        {"Dilate_Erode",
         {{{"Dilate_Erode:Dilate=-3"}, "dilate", {}}, {{"Dilate_Erode:Dilate=3"}, "erode", {}}}},
        {"Open_Close",
         {{{kLightness, kTwoLevels, "Open_Close:Dilate=2"}, "open, detail", kSpecks},
          {{kLightness, kTwoLevels, "Open_Close:Dilate=-2"}, "close, detail", kSpecks}}},
        {"Degauss",
         {{{"Degauss:Threshold=4,Method=0"}, "FFT, detail", sampleDetail()},
          {{"Degauss:Threshold=6,Method=1"}, "Lucy-Richardson, detail", sampleDetail()}}},
        {"Object separator",
         {{{kLightness, kTwoLevels, "Open_Close:Dilate=3", "Object separator:Det=10"},
           "filled, detail",
           kDiscs},
          {{kLightness, kTwoLevels, "Open_Close:Dilate=3", "Object separator:Type=1,Det=10"},
           "borders, detail",
           kDiscs}}},
    };
    const auto found = known.find(key);
    if (found != known.end()) return found->second;
    return {{{key}, "default settings", {}}};
}

}  // namespace render
