#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>

namespace render {

/// Writes one object as one line, at once. Whether anybody reads it is not our concern.
inline void writeEvent(const nlohmann::ordered_json& event, std::FILE* stream) {
    const std::string line = event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::fputs((line + '\n').c_str(), stream);
    std::fflush(stream);
}

}  // namespace render
