#include "tests/filters/Recorded.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace {

struct Block {
    char name;
    int step;
};

bool g_recording = false;
const HkImage* g_watched = nullptr;
std::string g_failing;
std::string g_calls;
std::map<const void*, Block> g_blocks;
char g_nextName = 'A';

}  // namespace

namespace recorded {

void start(const HkImage* watched) {
    g_calls.clear();
    g_failing.clear();
    g_watched = watched;
    g_recording = true;
    g_nextName = 'A';
    g_blocks.clear();
}

void watch(const HkImage* watched) {
    g_watched = watched;
}

void failAt(const char* name) {
    g_failing = name;
}

std::string stop() {
    g_recording = false;
    g_watched = nullptr;  // it may be gone before the next start
    return g_calls;
}

bool isFailing(const std::string& name) {
    return g_recording && g_failing == name;
}

void note(const std::string& text) {
    if (g_recording) g_calls += (g_calls.empty() ? "" : " ") + text;
}

std::string call(const std::string& name, std::initializer_list<Argument> arguments) {
    std::string text = name + "(";
    for (const Argument& argument : arguments)
        text += (&argument == arguments.begin() ? "" : ",") + argument.text;
    return text + ")";
}

Argument::Argument(const HkImage* image)
    : text(!image               ? "null"
           : image == g_watched ? "in"
                                : "new") {}

Argument::Argument(const unsigned char* pixels) {
    const auto block = g_blocks.find(pixels);
    if (block != g_blocks.end())
        text = block->second.name;
    else
        text = !pixels ? "null" : g_watched && pixels == g_watched->data ? "in" : "new";
}

Argument::Argument(const float* plane) : Argument(reinterpret_cast<const unsigned char*>(plane)) {}

void* nextSymbol(const char* symbol) {
    void* const found = dlsym(RTLD_NEXT, symbol);
    if (!found) std::fprintf(stderr, "no library defines %s\n", symbol);
    return found;
}

void* newBlock(std::size_t size, int step) {
    void* block = std::calloc(1, size);
    if (g_recording) g_blocks[block] = {g_nextName++, step};
    return block;
}

void freeBlock(void* block) {
    if (g_recording) g_blocks.erase(block);
    std::free(block);
}

int stepOf(const void* block) {
    const auto found = g_blocks.find(block);
    return found == g_blocks.end() ? 0 : found->second.step;
}

}  // namespace recorded
