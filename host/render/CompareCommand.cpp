#include "host/render/CompareCommand.h"

#include <cmath>
#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>

#include "host/document/ContactSheet.h"
#include "host/document/PictureImage.h"
#include "host/imaging/PictureDifference.h"
#include "host/imaging/PictureViews.h"
#include "host/media/MediaSink.h"
#include "host/media/file_names.h"
#include "host/render/DisplaylessApplication.h"
#include "host/render/FileClaims.h"
#include "host/render/FrameList.h"
#include "host/render/sheet_output.h"

namespace render {

namespace {

struct Side {
    Side(const std::string& input, const CompareOptions& options)
        : source(media::MediaSource::open({input}, options.reading)),
          frames(chosenFrames(options.frames, *source)) {}
    std::unique_ptr<media::MediaSource> source;
    std::vector<std::int64_t> frames;
};

/// Two frames, and how they differ.
struct Pair {
    std::int64_t frame;  ///< of the first side
    std::string before, after;
    PictureDifference difference;
};

std::vector<std::string> channelNames(int channels) {
    switch (channels) {
        case 1:
            return {"grey"};
        case 2:
            return {"grey", "alpha"};
        case 3:
            return {"R", "G", "B"};
        default:
            return {"R", "G", "B", "alpha"};
    }
}

std::string sizeOf(const HkImage& picture) {
    std::string names;
    for (const std::string& name : channelNames(picture.channels))
        names += (names.empty() ? "" : ", ") + name;
    return std::to_string(picture.roiWidth) + " x " + std::to_string(picture.roiHeight) + " (" +
           names + ')';
}

std::string decibels(const PictureDifference& difference) {
    if (difference.isNone()) return "inf dB";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f dB", difference.psnr());
    return text;
}

/// "12.31 %"; never 0 for something, nor 100 for less than all.
std::string changedShare(const PictureDifference& difference) {
    const double share = 100.0 * static_cast<double>(difference.changedPixels) /
                         static_cast<double>(difference.pixels);
    const double least = 0.01;
    if (difference.changedPixels > 0 && share < least) return "<0.01 %";
    if (difference.changedPixels < difference.pixels && share > 100 - least) return ">99.99 %";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %%", share);
    return text;
}

std::string largestText(const PictureDifference& difference) {
    const std::vector<std::string> names = channelNames(difference.channels);
    std::string text;
    for (std::size_t c = 0; c < names.size(); ++c)
        text += (c ? " " : "") + names[c] + ' ' + std::to_string(difference.largest[c]);
    return text;
}

void printHead() {
    std::printf("%6s %10s %9s %10s  %-20s %s\n", "frame", "PSNR", "changed", "pixels",
                "largest difference", "files");
}

void printRow(const Pair& pair) {
    std::printf("%6lld %10s %9s %10lld  %-20s %s : %s\n", static_cast<long long>(pair.frame),
                decibels(pair.difference).c_str(), changedShare(pair.difference).c_str(),
                static_cast<long long>(pair.difference.changedPixels),
                largestText(pair.difference).c_str(), media::shown(pair.before).c_str(),
                media::shown(pair.after).c_str());
}

nlohmann::ordered_json jsonOf(const Pair& pair) {
    const PictureDifference& difference = pair.difference;
    nlohmann::ordered_json largest;
    const std::vector<std::string> names = channelNames(difference.channels);
    for (std::size_t c = 0; c < names.size(); ++c) largest[names[c]] = difference.largest[c];
    nlohmann::ordered_json json = {{"frame", pair.frame},
                                   {"before", media::shown(pair.before)},
                                   {"after", media::shown(pair.after)},
                                   {"equal", difference.isNone()}};
    if (!difference.isNone()) json["psnr"] = difference.psnr();  // JSON has no infinity
    json["pixels"] = difference.pixels;
    json["changedPixels"] = difference.changedPixels;
    json["largestDifference"] = largest;
    return json;
}

/// A power of two at which differences of four times the root mean square are not yet white: larger
/// ones are rare. Without them the difference of most pictures would be all but black.
int suitableGain(const PictureDifference& difference) {
    const double white = 255;
    const double common = 4 * white * std::pow(10, -difference.psnr() / 20);
    const int mostGain = 128;
    int gain = 1;
    while (!difference.isNone() && gain < mostGain && common * gain * 2 <= white) gain *= 2;
    return gain;
}

document::ContactSheet sheetOf(const Pair& pair, const HkImage& before, const HkImage& after,
                               const HkImage& difference, int gain) {
    document::ContactSheet sheet;
    const QSize size(before.roiWidth, before.roiHeight);
    const document::SheetPlan plan = document::planSheet(3, size, 3);
    sheet.columns = plan.columns;
    sheet.box = plan.box;
    sheet.heading =
        pair.difference.isNone()
            ? QStringLiteral("no difference")
            : QString::fromStdString("PSNR " + decibels(pair.difference) + ", " +
                                     changedShare(pair.difference) + " of the pixels changed");
    sheet.text = document::scaleText(size, plan.box);
    const QString amplified = gain == 1
                                  ? QStringLiteral("difference")
                                  : QStringLiteral("difference × %1, at most white").arg(gain);
    const auto name = [](const std::string& path) {
        return QString::fromStdString(media::shown(media::fileNameOf(path)));
    };
    sheet.cells = {{document::imageOf(before), QStringLiteral("before"), name(pair.before)},
                   {document::imageOf(after), QStringLiteral("after"), name(pair.after)},
                   {document::imageOf(difference), amplified,
                    QString::fromStdString("largest: " + largestText(pair.difference))}};
    return sheet;
}

/// Compares frame after frame.
class Comparer {
public:
    Comparer(const CompareOptions& options, const Side& before, const Side& after)
        : m_options(options), m_before(before), m_after(after) {
        if (options.output.empty()) return;
        m_sink = media::MediaSink::open(options.output, *before.source, before.frames);
        FileClaims(*after.source).claim(*m_sink, before.frames, "a picture of differences");
        m_toolkit.emplace();
    }

    Pair compare(std::size_t index) {
        Pair pair;
        pair.frame = m_before.frames[index];
        pair.before = m_before.source->path(pair.frame);
        pair.after = m_after.source->path(m_after.frames[index]);
        const auto before = m_before.source->read(pair.frame);
        const auto after = m_after.source->read(m_after.frames[index]);
        const auto difference = differenceOf(*before, *after);
        if (!difference)
            throw CommandError(InvalidData, pair.before + " is " + sizeOf(*before) + " and " +
                                                pair.after + " is " + sizeOf(*after) +
                                                "; only pictures of one size with the same "
                                                "channels can be compared");
        pair.difference = *difference;
        if (m_sink) show(pair, *before, *after);
        return pair;
    }

    void finish() {
        if (m_sink) m_sink->finish();
    }

private:
    void show(const Pair& pair, const HkImage& before, const HkImage& after) {
        const int gain = m_options.gain > 0 ? m_options.gain : suitableGain(pair.difference);
        const auto difference = differencePicture(before, after, gain);
        if (!difference) throw std::bad_alloc();
        writeSheet(*m_sink, pair.frame, sheetOf(pair, before, after, *difference, gain));
    }

    const CompareOptions& m_options;
    const Side& m_before;
    const Side& m_after;
    std::unique_ptr<media::MediaSink> m_sink;
    std::optional<DisplaylessApplication> m_toolkit;
};

}  // namespace

ExitCode runCompare(const CompareOptions& options) {
    const Side before(options.before, options), after(options.after, options);
    if (before.frames.size() != after.frames.size())
        throw CommandError(InvalidData, options.before + " has " +
                                            std::to_string(before.frames.size()) + " frames and " +
                                            options.after + " has " +
                                            std::to_string(after.frames.size()) +
                                            "; choose as many of each with --frames");
    Comparer comparer(options, before, after);
    ExitCode code = Done;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < before.frames.size(); ++i) {
        const Pair pair = comparer.compare(i);
        if (!pair.difference.isNone()) code = PicturesDiffer;
        if (options.json) {
            list.push_back(jsonOf(pair));
            continue;
        }
        if (i == 0) printHead();
        printRow(pair);
    }
    comparer.finish();
    if (options.json) std::printf("%s\n", nlohmann::ordered_json{{"frames", list}}.dump(2).c_str());
    return code;
}

}  // namespace render
