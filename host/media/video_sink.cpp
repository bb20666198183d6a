#include "host/media/video_sink.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <new>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"
#include "host/media/video_file.h"

namespace media {

namespace {

constexpr Ratio kUsualFrameRate = {25, 1};

VideoPlan constantRatePlan(std::size_t frameCount, const Ratio& frameRate) {
    VideoPlan plan;
    plan.timeBase = {frameRate.denominator, frameRate.numerator};
    plan.frameRate = frameRate;
    for (std::size_t i = 0; i < frameCount; ++i) plan.times.push_back(static_cast<std::int64_t>(i));
    plan.durations.assign(frameCount, 1);
    return plan;
}

/// The times of the source. Where only some frames are written the first is at 0, and each is shown
/// until the next.
VideoPlan sourceTimesPlan(const VideoTrack& track, const std::vector<std::int64_t>& frames) {
    const bool isWhole = frames.size() == track.timeStamps.size();
    VideoPlan plan;
    plan.timeBase = track.timeBase;
    plan.frameRate = track.frameRate;
    const auto timeOf = [&](std::int64_t frame) {
        return track.timeStamps[static_cast<std::size_t>(frame)];
    };
    const std::int64_t start = isWhole ? 0 : timeOf(frames.front());
    for (const std::int64_t frame : frames) {
        const std::int64_t time = timeOf(frame) - start;
        // Some files show two frames at one time, which no container takes.
        plan.times.push_back(plan.times.empty() ? time : std::max(time, plan.times.back() + 1));
    }
    for (std::size_t i = 0; i + 1 < plan.times.size(); ++i)
        plan.durations.push_back(plan.times[i + 1] - plan.times[i]);
    const auto last = static_cast<std::size_t>(frames.back());
    plan.durations.push_back(
        last + 1 < track.timeStamps.size()
            ? std::max<std::int64_t>(1, timeOf(frames.back() + 1) - timeOf(frames.back()))
            : track.lastDuration);
    return plan;
}

VideoPlan makePlan(const VideoTrack* track, const std::vector<std::int64_t>& frames,
                   const VideoOptions& options) {
    const bool isRateGiven = options.frameRate.numerator > 0;
    VideoPlan plan =
        track && !isRateGiven
            ? sourceTimesPlan(*track, frames)
            : constantRatePlan(frames.size(), isRateGiven ? options.frameRate : kUsualFrameRate);
    if (track) {
        plan.pixelAspect = track->pixelAspect;
        plan.matrix = track->matrix;
        plan.primaries = track->primaries;
        plan.transfer = track->transfer;
    }
    return plan;
}

class VideoSink : public MediaSink {
public:
    VideoSink(const std::string& path, const MediaSource& source,
              const std::vector<std::int64_t>& frames, const VideoOptions& options)
        : m_path(path), m_frames(frames), m_codec(codecFor(path, options)) {
        const VideoTrack* track = source.videoTrack();
        std::unique_ptr<CompanionTracks> companions;
        if (track && !track->path.empty()) companions = takeCompanions(*track, options);
        if (!track) noticeGaps();
        noticeOddSize(source);
        m_file =
            std::make_unique<VideoFile>(path, m_codec, options.quality,
                                        makePlan(track, frames, options), std::move(companions));
    }

    std::string path(std::int64_t frame) const override {
        indexOf(frame);
        return m_path;
    }

    std::vector<std::string> notices() const override { return m_notices; }

    void check(std::int64_t frame, const PictureInfo& picture) const override {
        indexOf(frame);
        if (!m_codec.holds(picture.channels))
            throw MediaError(MediaErrorKind::CannotCreate,
                             shown(m_path) + ": frame " + std::to_string(frame) +
                                 " has an alpha channel, which the codec " + m_codec.name +
                                 " cannot hold; use a .mkv file (ffv1), a .mov file (prores) or "
                                 "pictures");
        if (std::max(picture.width, picture.height) > m_codec.largestSide())
            throw MediaError(MediaErrorKind::CannotCreate,
                             shown(m_path) + ": frame " + std::to_string(frame) + " is of " +
                                 std::to_string(picture.width) + " x " +
                                 std::to_string(picture.height) + " pixels, the codec " +
                                 m_codec.name + " holds " + std::to_string(m_codec.largestSide()) +
                                 " a side at most; use an .apng file");
    }

    bool writesInOrder() const override { return true; }

    std::function<void()> encode(std::int64_t frame, const HkImage& image,
                                 const PictureProperties&) override {
        const std::size_t index = indexOf(frame);
        if (m_failure) std::rethrow_exception(m_failure);
        check(frame, {image.roiWidth, image.roiHeight, image.channels});
        if (m_file->hasBegun()) requireSameKind(frame, image);
        try {
            if (!m_file->hasBegun()) {
                m_file->begin(image.roiWidth, image.roiHeight, image.channels);
                m_firstChannels = image.channels;
            }
            convert(image);
            m_file->write(*m_picture, index);
        } catch (...) {
            m_failure = std::current_exception();
            throw;
        }
        return {};
    }

    void finish() override {
        if (m_failure) std::rethrow_exception(m_failure);
        if (m_file->hasBegun()) m_file->finish();
        m_file.reset();
    }

private:
    std::size_t indexOf(std::int64_t frame) const {
        const auto found = std::lower_bound(m_frames.begin(), m_frames.end(), frame);
        if (found == m_frames.end() || *found != frame)
            throw MediaError(MediaErrorKind::CannotCreate,
                             "frame " + std::to_string(frame) +
                                 ": the output was opened without this frame; open it again");
        return static_cast<std::size_t>(found - m_frames.begin());
    }

    std::unique_ptr<CompanionTracks> takeCompanions(const VideoTrack& track,
                                                    const VideoOptions& options) {
        auto companions =
            std::make_unique<CompanionTracks>(track.path, track.startSeconds, containerOf(m_path));
        const bool isWhole = m_frames.size() == track.timeStamps.size();
        const bool keepsTimes = options.frameRate.numerator == 0;
        const std::vector<std::string>& lost = companions->leftOut();
        if ((!isWhole || !keepsTimes) && companions->trackCount() > 0)
            m_notices.push_back(
                shown(m_path) + ": the sound is left out, as " +
                (isWhole ? "--fps changes the times of the frames" : "not all frames are written"));
        if (!lost.empty()) {
            std::string list;
            for (const std::string& what : lost) list += (list.empty() ? "" : ", ") + what;
            m_notices.push_back(shown(m_path) + ": left out of the input: " + list);
        }
        return isWhole && keepsTimes ? std::move(companions) : nullptr;
    }

    void noticeGaps() {
        const std::int64_t span = m_frames.back() - m_frames.front() + 1;
        const std::int64_t missing = span - static_cast<std::int64_t>(m_frames.size());
        if (missing > 0)
            m_notices.push_back(shown(m_path) + ": the frames have gaps in their numbers (" +
                                std::to_string(missing) +
                                " missing); in the video they follow each other without a pause");
    }

    void noticeOddSize(const MediaSource& source) {
        PictureInfo picture;
        try {
            picture = source.info(m_frames.front());
        } catch (const MediaError&) {
            return;  // said when the frame is read
        }
        if (m_codec.pixelFormat(picture.width, picture.height, picture.channels) ==
            AV_PIX_FMT_YUV444P)
            m_notices.push_back(shown(m_path) + ": " + std::to_string(picture.width) + " x " +
                                std::to_string(picture.height) +
                                " pixels, an odd number, are kept by colours of full resolution "
                                "(4:4:4), which some players do not show");
    }

    void requireSameKind(std::int64_t frame, const HkImage& image) const {
        const auto fail = [&](const std::string& rest) {
            throw MediaError(MediaErrorKind::CannotCreate,
                             shown(m_path) + ": frame " + std::to_string(frame) + rest);
        };
        if (image.roiWidth != m_file->width() || image.roiHeight != m_file->height())
            fail(" is of " + std::to_string(image.roiWidth) + " x " +
                 std::to_string(image.roiHeight) + " pixels, the video of " +
                 std::to_string(m_file->width()) + " x " + std::to_string(m_file->height()) +
                 "; scale the pictures to one size");
        const AVPixelFormat format =
            m_codec.pixelFormat(image.roiWidth, image.roiHeight, image.channels);
        if (format != m_file->layout().format)
            fail(" has " + std::to_string(image.channels) + " channels, the first one " +
                 std::to_string(m_firstChannels) + "; with the codec " + m_codec.name +
                 " all must have the same");
    }

    /// Fills the picture that is given to the encoder, in another one's place where the encoder
    /// still holds the last.
    void convert(const HkImage& image) {
        const PixelConverter::Layout layout = m_file->layout();
        if (!m_picture || av_frame_is_writable(m_picture.get()) == 0) {
            m_picture = newAvFrame(layout.format, image.roiWidth, image.roiHeight);
            m_picture->colorspace = layout.matrix;
            m_picture->color_range = layout.isFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        }
        m_converter.fromPicture(image, layout, *m_picture);
    }

    const std::string m_path;
    const std::vector<std::int64_t> m_frames;
    const VideoCodec& m_codec;
    std::vector<std::string> m_notices;
    std::unique_ptr<VideoFile> m_file;

    int m_firstChannels = 0;
    PixelConverter m_converter;
    AvOwned<AVFrame> m_picture;
    std::exception_ptr m_failure;  // what ended the video
};

}  // namespace

std::unique_ptr<MediaSink> openVideoSink(const std::string& path, const MediaSource& source,
                                         const std::vector<std::int64_t>& frames,
                                         const VideoOptions& options) {
    return std::make_unique<VideoSink>(path, source, frames, options);
}

}  // namespace media
