#include "host/media/animated_source.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <numeric>

#include "host/media/FramesOfFile.h"
#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/picture_reader.h"

namespace media {

namespace {

/// Units of a second that hold all delays exactly; of very odd ones, microseconds.
int unitsOf(const std::vector<Ratio>& delays) {
    constexpr std::int64_t kFinest = 1000000;
    std::int64_t units = 1000;
    for (const Ratio& delay : delays) {
        units = std::lcm(units, std::int64_t{delay.denominator});
        if (units > kFinest) return static_cast<int>(kFinest);
    }
    return static_cast<int>(units);
}

class AnimatedFrames : public FramesOfFile {
public:
    AnimatedFrames(const std::string& path, std::unique_ptr<PictureAnimation> animation)
        : FramesOfFile(path),
          m_animation(std::move(animation)),
          m_properties(m_animation->properties()) {
        m_info = m_animation->info();
        takeTimes(m_animation->delays());
        setFrameCount(m_track.timeStamps.size());
    }

    std::unique_ptr<HkImage> read(std::int64_t frame, PictureProperties* properties,
                                  std::unique_ptr<HkImage> recycled) const override {
        requireFrame(frame);
        if (properties) *properties = m_properties;
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_animation->read(static_cast<std::size_t>(frame), std::move(recycled));
    }
    bool readsInOrder() const override { return true; }

private:
    void takeTimes(const std::vector<Ratio>& delays) {
        const int units = unitsOf(delays);
        double seconds = 0;
        std::int64_t time = 0;
        for (const Ratio& delay : delays) {
            m_track.timeStamps.push_back(time);
            seconds += static_cast<double>(delay.numerator) / delay.denominator;
            time = std::max<std::int64_t>(time + 1, std::llround(seconds * units));
        }
        m_track.timeBase = {1, units};
        // As of a video that is made of pictures.
        constexpr int kUnspecified = 2;
        constexpr int kBt709 = 1;
        m_track.matrix = kUnspecified;
        m_track.primaries = m_track.transfer = kBt709;
        m_track.lastDuration = time - m_track.timeStamps.back();
        const double rate = static_cast<double>(delays.size()) * units / static_cast<double>(time);
        m_track.frameRate = {static_cast<int>(std::lround(rate * 1000)), 1000};
    }

    const std::unique_ptr<PictureAnimation> m_animation;
    const PictureProperties m_properties;
    mutable std::mutex m_mutex;  // one decoder serves all threads
};

}  // namespace

std::unique_ptr<MediaSource> openAnimated(const std::string& path, const ReadOptions& options) {
    std::unique_ptr<PictureAnimation> animation = PictureAnimation::open(path);
    if (!animation) return nullptr;
    if (options.range.kind != SampleRange::Type)
        throw MediaError(MediaErrorKind::InvalidData,
                         shown(path) +
                             ": --range is for pictures that stand alone, this is an animation; "
                             "leave it out");
    return std::make_unique<AnimatedFrames>(path, std::move(animation));
}

}  // namespace media
