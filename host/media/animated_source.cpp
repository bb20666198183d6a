#include "host/media/animated_source.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <numeric>

#include "host/media/FrameTemplate.h"
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

class AnimatedFrames : public MediaSource {
public:
    AnimatedFrames(std::string path, std::unique_ptr<PictureAnimation> animation)
        : m_path(std::move(path)),
          m_animation(std::move(animation)),
          m_info(m_animation->info()),
          m_properties(m_animation->properties()) {
        takeTimes(m_animation->delays());
        m_frames.resize(m_track.timeStamps.size());
        std::iota(m_frames.begin(), m_frames.end(), 0);
    }

    const std::vector<std::int64_t>& frames() const override { return m_frames; }
    std::string path(std::int64_t frame) const override {
        indexOf(frame);
        return m_path;
    }
    std::string frameName(std::int64_t frame) const override {
        indexOf(frame);
        return stemOf(fileNameOf(m_path)) + '_' + FrameTemplate::parse("####")->fileName(frame);
    }
    PictureInfo info(std::int64_t frame) const override {
        indexOf(frame);
        return m_info;
    }
    std::unique_ptr<HkImage> read(std::int64_t frame, PictureProperties* properties,
                                  std::unique_ptr<HkImage> recycled) const override {
        const std::size_t index = indexOf(frame);
        if (properties) *properties = m_properties;
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_animation->read(index, std::move(recycled));
    }
    bool readsInOrder() const override { return true; }
    const VideoTrack* videoTrack() const override { return &m_track; }

private:
    std::size_t indexOf(std::int64_t frame) const {
        if (frame < 0 || frame > m_frames.back())
            throw MediaError(MediaErrorKind::MissingInput,
                             "frame " + std::to_string(frame) +
                                 ": the input has no such frame; its frames are 0 to " +
                                 std::to_string(m_frames.back()));
        return static_cast<std::size_t>(frame);
    }

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

    const std::string m_path;
    const std::unique_ptr<PictureAnimation> m_animation;
    const PictureInfo m_info;
    const PictureProperties m_properties;
    std::vector<std::int64_t> m_frames;
    VideoTrack m_track;
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
