#include "host/render/CountPlot.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "host/media/file_names.h"

namespace render {

namespace {

// Places in units of the drawing: pixels, where it is shown at its own size.
const double kWidth = 860, kHeight = 420;
const double kMargin = 24, kRight = 832, kTop = 84, kBottom = 354;

const double kDigit = 9;  ///< the width of one, with room to spare

/// Always with a point, whatever the language; no more digits than can be seen.
std::string number(double value, int decimals) {
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return std::string(text, end.ptr);
}

std::string place(double value) {
    return number(value, 1);
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '&'   ? std::string("&amp;")
                  : c == '<' ? std::string("&lt;")
                  : c == '>' ? std::string("&gt;")
                             : std::string(1, c);
    return result;
}

/// The least of 1, 2, 5, 10, 20, 50 ... that makes at most so many steps.
std::int64_t roundStep(std::int64_t length, int mostSteps) {
    std::int64_t step = 1;
    for (int i = 0; length > step * mostSteps; ++i) step = i % 3 == 1 ? step / 2 * 5 : step * 2;
    return step;
}

std::int64_t roundedUp(std::int64_t value, std::int64_t step) {
    const std::int64_t rest = (value % step + step) % step;
    return rest == 0 ? value : value + step - rest;
}

/// Whole numbers along one side of the drawing.
class Axis {
public:
    Axis(std::int64_t first, std::int64_t last, double begin, double end)
        : m_first(static_cast<double>(first)),
          m_last(static_cast<double>(last)),
          m_begin(begin),
          m_end(end) {}

    /// A single number is in the middle.
    double at(std::int64_t value) const {
        if (m_last <= m_first) return (m_begin + m_end) / 2;
        return m_begin +
               (static_cast<double>(value) - m_first) / (m_last - m_first) * (m_end - m_begin);
    }

private:
    double m_first, m_last, m_begin, m_end;
};

class Plot {
public:
    Plot(std::string title, const std::vector<PlotPoint>& points)
        : m_title(std::move(title)),
          m_points(points),
          m_most(largest(points)),
          m_step(roundStep(m_most, 6)),
          m_left(kMargin + 36 + kDigit * static_cast<double>(std::to_string(m_most).size())),
          m_frames(points.front().frame, points.back().frame, m_left + 14, kRight - 14),
          m_counts(0, std::max<std::int64_t>(1, roundedUp(m_most, m_step)), kBottom, kTop) {}

    std::string svg() {
        m_text = "<svg class=\"object-counts\" xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                 number(kWidth, 0) + "\" height=\"" + number(kHeight, 0) + "\" viewBox=\"0 0 " +
                 number(kWidth, 0) + ' ' + number(kHeight, 0) +
                 "\" font-family=\"'DejaVu Sans', Verdana, sans-serif\" font-size=\"13\" "
                 "fill=\"#444a52\">\n"
                 "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
        write(kMargin, 34, "fill=\"#202226\" font-size=\"18\" font-weight=\"bold\"", heading());
        write(kMargin, 58, "", summary());
        drawCountAxis();
        drawFrameAxis();
        drawLine();
        return m_text + "</svg>\n";
    }

private:
    static std::int64_t largest(const std::vector<PlotPoint>& points) {
        int most = 0;
        for (const PlotPoint& point : points) most = std::max(most, point.objects);
        return most;
    }

    void write(double x, double y, const std::string& attributes, const std::string& text) {
        m_text += "<text x=\"" + place(x) + "\" y=\"" + place(y) + '"' +
                  (attributes.empty() ? "" : ' ' + attributes) + '>' + escaped(text) + "</text>\n";
    }

    void line(double x1, double y1, double x2, double y2, const std::string& colour) {
        m_text += "<line x1=\"" + place(x1) + "\" y1=\"" + place(y1) + "\" x2=\"" + place(x2) +
                  "\" y2=\"" + place(y2) + "\" stroke=\"" + colour + "\"/>\n";
    }

    /// As much of the title as there is room for; both ends of a name tell the most.
    std::string heading() const {
        const std::size_t most = 60;
        if (m_title.size() <= most) return "Objects in " + m_title;
        const auto isInside = [this](std::size_t i) {  // a character of several bytes
            return (static_cast<unsigned char>(m_title[i]) & 0xC0) == 0x80;
        };
        std::size_t head = most / 2, tail = m_title.size() - most / 2;
        while (isInside(head)) --head;
        while (isInside(tail)) ++tail;
        return "Objects in " + m_title.substr(0, head) + "…" + m_title.substr(tail);
    }

    std::string summary() const {
        std::int64_t sum = 0;
        int counted = 0, fewest = 0, most = 0;
        for (const PlotPoint& point : m_points) {
            if (point.objects < 0) continue;
            fewest = counted == 0 ? point.objects : std::min(fewest, point.objects);
            most = std::max(most, point.objects);
            sum += point.objects;
            ++counted;
        }
        const std::size_t frames = m_points.size();
        const std::size_t lacking = frames - static_cast<std::size_t>(counted);
        std::string text = frames == 1 ? "frame " + std::to_string(m_points.front().frame)
                                       : std::to_string(frames) + " frames";
        if (counted == 1 && frames == 1)
            text += ": " + std::to_string(sum) + (sum == 1 ? " object" : " objects");
        else if (counted > 0 && fewest == most)
            text += most == 0   ? ", no objects"
                    : most == 1 ? ", 1 object in each"
                                : ", " + std::to_string(most) + " objects in each";
        else if (counted > 0)
            text += ", " + std::to_string(fewest) + " to " + std::to_string(most) +
                    " objects, mean " + number(static_cast<double>(sum) / counted, 1);
        if (lacking > 0) text += ", " + std::to_string(lacking) + " without a number";
        return text;
    }

    void drawCountAxis() {
        const std::int64_t end = std::max<std::int64_t>(1, roundedUp(m_most, m_step));
        for (std::int64_t value = 0; value <= end; value += m_step) {
            const double y = m_counts.at(value);
            line(m_left, y, kRight, y, value == 0 ? "#444a52" : "#dfe2e6");
            write(m_left - 10, y + 4.5, "text-anchor=\"end\"", std::to_string(value));
        }
        const std::string middle = place((kTop + kBottom) / 2);
        write(kMargin, (kTop + kBottom) / 2,
              "text-anchor=\"middle\" transform=\"rotate(-90 " + place(kMargin) + ' ' + middle +
                  ")\" dominant-baseline=\"hanging\"",
              "number of objects");
    }

    void drawFrameAxis() {
        const std::int64_t first = m_points.front().frame, last = m_points.back().frame;
        const std::int64_t step = roundStep(last - first, 10);
        for (std::int64_t frame = roundedUp(first, step); frame <= last; frame += step) {
            const double x = m_frames.at(frame);
            line(x, kBottom, x, kBottom + 5, "#444a52");
            write(x, kBottom + 21, "text-anchor=\"middle\"", std::to_string(frame));
        }
        write((m_left + kRight) / 2, kBottom + 46, "text-anchor=\"middle\"", "frame number");
    }

    void drawLine() {
        std::string path, dots;
        bool isOn = false;
        const std::size_t mostDots = 120;  // more would run into one another
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const PlotPoint& point = m_points[i];
            const bool wasOn = isOn;
            isOn = point.objects >= 0;
            if (!isOn) continue;
            const std::string x = place(m_frames.at(point.frame)),
                              y = place(m_counts.at(point.objects));
            path += (wasOn ? " L" : path.empty() ? "M" : " M") + x + ' ' + y;
            const bool isAlone =
                !wasOn && (i + 1 == m_points.size() || m_points[i + 1].objects < 0);
            if (isAlone || m_points.size() <= mostDots)
                dots += "<circle cx=\"" + x + "\" cy=\"" + y + "\" r=\"3\"><title>frame " +
                        std::to_string(point.frame) + ": " + std::to_string(point.objects) +
                        "</title></circle>\n";
        }
        m_text += "<path d=\"" + path +
                  "\" fill=\"none\" stroke=\"#1f6fb4\" stroke-width=\"1.8\" "
                  "stroke-linejoin=\"round\"/>\n<g fill=\"#1f6fb4\">\n" +
                  dots + "</g>\n";
    }

    const std::string m_title;
    const std::vector<PlotPoint>& m_points;
    const std::int64_t m_most, m_step;
    const double m_left;  ///< of the line of the numbers of objects
    const Axis m_frames, m_counts;
    std::string m_text;
};

}  // namespace

const char* const kCountPlotBeginning = "<svgclass=\"object-counts\"";

std::string plotTitle(const std::vector<std::string>& inputs) {
    std::string first = inputs.front();
    while (first.size() > 1 && first.back() == '/') first.pop_back();
    const std::string name = media::shown(media::fileNameOf(first));
    if (inputs.size() == 1) return name;
    return name + " and " + std::to_string(inputs.size() - 1) + " more";
}

std::string countPlot(const std::string& title, const std::vector<PlotPoint>& points) {
    return Plot(title, points).svg();
}

void writeCountPlot(const ResultFile& file, const std::vector<std::string>& inputs,
                    const std::vector<PlotPoint>& points, const Messages& messages) {
    if (points.empty())
        messages.note("--plot: there is no frame to draw, so " + file.path() + " is not written");
    else
        file.write(countPlot(plotTitle(inputs), points));
}

}  // namespace render
