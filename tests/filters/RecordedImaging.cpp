#include "tests/filters/RecordedImaging.h"

#include <dlfcn.h>

#include <cstdio>
#include <sstream>
#include <type_traits>
#include <vector>

#include "framework/contract/ImageProcessor/HkImageProcessor.h"

namespace {

bool g_recording = false;
bool g_fetched = false;
const HkImage* g_watched = nullptr;
std::string g_failing;
std::string g_calls;

struct Argument {
    std::string text;
    Argument(const HkImage* image) : text(!image ? "null" : image == g_watched ? "in" : "new") {}
    Argument(const unsigned char* pixels) : text(pixels ? "pixels" : "null") {}
    Argument(const float* plane) : text(plane ? "plane" : "null") {}
    template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
    Argument(Number number) {
        std::ostringstream out;
        out << number;
        text = out.str();
    }
};

std::string call(const std::string& name, const std::vector<Argument>& arguments) {
    std::string text = name + "(";
    for (const Argument& argument : arguments)
        text += (&argument == arguments.data() ? "" : ",") + argument.text;
    return text + ")";
}

void note(const std::string& text) {
    if (g_recording) g_calls += (g_calls.empty() ? "" : " ") + text;
}

/// The library's own definition of the function that this file defines in front of it.
template <class Result, class... Arguments>
Result library(const char* symbol, Arguments... arguments) {
    static void* const handle = dlopen(FX_IMAGING_FILE, RTLD_NOW);
    const auto found = reinterpret_cast<Result (*)(Arguments...)>(dlsym(handle, symbol));
    if (!found) std::fprintf(stderr, "%s has no %s\n", FX_IMAGING_FILE, symbol);
    return found(arguments...);
}

/// An operation of the processor, under its name and as the compiler spells it.
template <class... Arguments>
int operation(HkImageProcessor* self, const std::string& name, const char* signature,
              Arguments... arguments) {
    note(call(name, {Argument(arguments)...}) + (g_fetched ? "" : "?"));
    g_fetched = false;
    if (g_recording && g_failing == name) return 1;
    const std::string symbol =
        "_ZN16HkImageProcessor" + std::to_string(name.size()) + name + signature;
    return library<int>(symbol.c_str(), self, arguments...);
}

}  // namespace

void recorded::start(const HkImage* watched) {
    g_calls.clear();
    g_failing.clear();
    g_watched = watched;
    g_recording = true;
    g_fetched = false;
}

void recorded::failAt(const char* name) {
    g_failing = name;
}

std::string recorded::stop() {
    g_recording = false;
    return g_calls;
}

HkImageProcessor* HkImageProcessor::getInstance(void (*callback)(const QString&)) {
    g_fetched = !callback;
    return library<HkImageProcessor*>("_ZN16HkImageProcessor11getInstanceEPFvRK7QStringE",
                                      callback);
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
    library<void>("_ZN7HkImageC1Ev", this);
}
HkImage::HkImage(int w, int h, int channelCount, unsigned char* given, unsigned int rowAlignment) {
    note(call("HkImage", {w, h, channelCount, given, rowAlignment}));
    library<void>("_ZN7HkImageC1EiiiPhj", this, w, h, channelCount, given, rowAlignment);
}
HkImage::~HkImage() {
    note("~" + Argument(this).text);
    library<void>("_ZN7HkImageD1Ev", this);
}
bool HkImage::getBufferCopy32f(float* dst, float lo, float hi) {
    note(call("getBufferCopy32f", {this, dst, lo, hi}));
    return library<bool>("_ZN7HkImage16getBufferCopy32fEPfff", this, dst, lo, hi);
}
void HkImage::setImage32f(int w, int h, int channelCount, float* src, float lo, float hi) {
    note(call("setImage32f", {this, w, h, channelCount, src, lo, hi}));
    library<void>("_ZN7HkImage11setImage32fEiiiPfff", this, w, h, channelCount, src, lo, hi);
}
