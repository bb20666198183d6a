// The imaging library's operations.

#include <string>

#include "framework/contract/ImageProcessor/HkImageProcessor.h"
#include "tests/filters/Recorded.h"

using recorded::Argument;
using recorded::call;
using recorded::handOn;
using recorded::note;

namespace {

thread_local bool t_fetched = false;

/// An operation of the processor, under its name and as the compiler spells it.
template <class... Arguments>
int operation(HkImageProcessor* self, const std::string& name, const char* signature,
              Arguments... arguments) {
    note(call(name, {Argument(arguments)...}) + (t_fetched ? "" : "?"));
    t_fetched = false;
    if (recorded::isFailing(name)) return 1;
    const std::string symbol =
        "_ZN16HkImageProcessor" + std::to_string(name.size()) + name + signature;
    return handOn<int>(symbol.c_str(), self, arguments...);
}

}  // namespace

HkImageProcessor* HkImageProcessor::getInstance(void (*callback)(const QString&)) {
    t_fetched = !callback;
    return handOn<HkImageProcessor*>("_ZN16HkImageProcessor11getInstanceEPFvRK7QStringE", callback);
}

int HkImageProcessor::copyChannel(HkImage* src, int srcChannel, HkImage* dst, int dstChannel) {
    return operation(this, "copyChannel", "EP7HkImageiS1_i", src, srcChannel, dst, dstChannel);
}
int HkImageProcessor::RGBtoYUV(HkImage* src, HkImage* dst) {
    return operation(this, "RGBtoYUV", "EP7HkImageS1_", src, dst);
}
int HkImageProcessor::YUVtoRGB(HkImage* src, HkImage* dst) {
    return operation(this, "YUVtoRGB", "EP7HkImageS1_", src, dst);
}
int HkImageProcessor::RGBtoHLS(HkImage* src, HkImage* dst) {
    return operation(this, "RGBtoHLS", "EP7HkImageS1_", src, dst);
}
int HkImageProcessor::RGBtoGrayscale(HkImage* src, HkImage* dst) {
    return operation(this, "RGBtoGrayscale", "EP7HkImageS1_", src, dst);
}
int HkImageProcessor::invert(HkImage* src, HkImage* dst) {
    return operation(this, "invert", "EP7HkImageS1_", src, dst);
}
int HkImageProcessor::blur(HkImage* src, unsigned int size, HkImage* dst) {
    return operation(this, "blur", "EP7HkImagejS1_", src, size, dst);
}
int HkImageProcessor::maxFilter(HkImage* src, unsigned int size, HkImage* dst) {
    return operation(this, "maxFilter", "EP7HkImagejS1_", src, size, dst);
}
int HkImageProcessor::open(HkImage* src, unsigned int size, HkImage* dst) {
    return operation(this, "open", "EP7HkImagejS1_", src, size, dst);
}
int HkImageProcessor::close(HkImage* src, unsigned int size, HkImage* dst) {
    return operation(this, "close", "EP7HkImagejS1_", src, size, dst);
}
int HkImageProcessor::dilate_erode(HkImage* src, int amount, HkImage* dst) {
    return operation(this, "dilate_erode", "EP7HkImageiS1_", src, amount, dst);
}
int HkImageProcessor::adaptTreshold(HkImage* src, HkImage* dst, int size, double min) {
    return operation(this, "adaptTreshold", "EP7HkImageS1_id", src, dst, size, min);
}

HkImage::HkImage() {
    note("HkImage()");
    handOn<void>("_ZN7HkImageC1Ev", this);
}
HkImage::HkImage(int w, int h, int channelCount, unsigned char* given, unsigned int rowAlignment) {
    note(call("HkImage", {w, h, channelCount, given, rowAlignment}));
    handOn<void>("_ZN7HkImageC1EiiiPhj", this, w, h, channelCount, given, rowAlignment);
}
HkImage::~HkImage() {
    note("~" + Argument(this).text);
    handOn<void>("_ZN7HkImageD1Ev", this);
}
bool HkImage::getBufferCopy32f(float* dst, float lo, float hi) {
    note(call("getBufferCopy32f", {this, dst, lo, hi}));
    return handOn<bool>("_ZN7HkImage16getBufferCopy32fEPfff", this, dst, lo, hi);
}
void HkImage::setImage32f(int w, int h, int channelCount, float* src, float lo, float hi) {
    note(call("setImage32f", {this, w, h, channelCount, src, lo, hi}));
    handOn<void>("_ZN7HkImage11setImage32fEiiiPfff", this, w, h, channelCount, src, lo, hi);
}
