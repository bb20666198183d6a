#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/render/ExitCode.h"

namespace render {

/// What became of one frame.
struct FrameOutcome {
    enum Status { NotStarted, UpToDate, Finished, Failed };

    std::int64_t frame = 0;
    Status status = NotStarted;
    double seconds = 0;
    ExitCode code = Done;  ///< why it failed
    std::string error;     ///< one line, empty unless it failed
};

/// What is left of a frame when the processor has done its part and only the disk is waited for.
using FrameRest = std::function<void()>;

/// Does the work of one frame; throws media::MediaError or another std::exception when it fails.
/// Made of a function of the frame's number that returns nothing, or a FrameRest that may be empty.
class FrameWork {
public:
    template <typename Function>
    FrameWork(Function function)
        : m_function([function = std::move(function)](std::int64_t frame) mutable -> FrameRest {
              if constexpr (std::is_void_v<decltype(function(frame))>) {
                  function(frame);
                  return {};
              } else {
                  return function(frame);
              }
          }) {}

    FrameRest operator()(std::int64_t frame) const { return m_function(frame); }

private:
    std::function<FrameRest(std::int64_t)> m_function;
};

struct RunRules {
    bool keepGoing = false;            ///< a failed frame does not end the run
    std::function<bool()> shouldStop;  ///< asked before every frame, on any thread; may be empty
};

/// Runs the frames on one thread per worker, each thread calling its own worker only, frames begun
/// in the order given, and returns the outcomes in the order of `frames`. The rests of
/// frames run on threads of their own, so that a worker goes on to its next frame meanwhile; no
/// more of them wait at a time than two for each worker. What has begun is always finished.
/// `onOutcome` is called on the calling thread as frames end, in the order in which they do, and
/// `onTick` a few times a second while nothing ends; both may be empty. Because all frames before a
/// failed one have begun, the first failure among the outcomes does not depend on the number of
/// workers.
std::vector<FrameOutcome> runFrames(const std::vector<std::int64_t>& frames,
                                    const std::vector<FrameWork>& workers, const RunRules& rules,
                                    const std::function<void(const FrameOutcome&)>& onOutcome,
                                    const std::function<void()>& onTick);

}  // namespace render
