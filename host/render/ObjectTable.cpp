#include "host/render/ObjectTable.h"

#include <algorithm>
#include <charconv>

#include "host/render/csv_field.h"

namespace render {

namespace {

/// Always with a point: printf takes the user's language into account, spreadsheets the file's.
std::string number(double value) {
    const int decimals = 2;
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return std::string(text, end.ptr);
}

std::string measurements(const std::vector<Area>& objects) {
    if (objects.empty()) return ",,";
    std::int64_t sum = 0;
    int smallest = objects.front().pixels;
    int largest = smallest;
    for (const Area& object : objects) {
        sum += object.pixels;
        smallest = std::min(smallest, object.pixels);
        largest = std::max(largest, object.pixels);
    }
    return number(static_cast<double>(sum) / static_cast<double>(objects.size())) + ',' +
           std::to_string(smallest) + ',' + std::to_string(largest);
}

}  // namespace

const char* const kObjectTableBeginning = "frame,object,area,";

void ObjectTable::add(std::int64_t frame, std::string input, std::vector<Area> objects,
                      int leftOut) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_frames[frame] = {std::move(input), std::move(objects), leftOut};
}

int ObjectTable::objectsOf(std::int64_t frame) const {
    const auto found = m_frames.find(frame);
    return found == m_frames.end() ? -1 : static_cast<int>(found->second.objects.size());
}

std::string ObjectTable::frames() const {
    std::string text = "frame,objects,mean_area,smallest_area,largest_area,left_out,input\n";
    for (const auto& [number, frame] : m_frames)
        text += std::to_string(number) + ',' + std::to_string(frame.objects.size()) + ',' +
                measurements(frame.objects) + ',' + std::to_string(frame.leftOut) + ',' +
                csvField(frame.input) + '\n';
    return text;
}

std::string ObjectTable::objects() const {
    std::string text =
        std::string(kObjectTableBeginning) + "centroid_x,centroid_y,left,top,width,height\n";
    for (const auto& [frameNumber, frame] : m_frames) {
        std::size_t label = 0;
        for (const Area& object : frame.objects)
            text += std::to_string(frameNumber) + ',' + std::to_string(++label) + ',' +
                    std::to_string(object.pixels) + ',' + number(object.centroidX) + ',' +
                    number(object.centroidY) + ',' + std::to_string(object.left) + ',' +
                    std::to_string(object.top) + ',' + std::to_string(object.width) + ',' +
                    std::to_string(object.height) + '\n';
    }
    return text;
}

}  // namespace render
