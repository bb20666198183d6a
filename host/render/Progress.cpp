#include "host/render/Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "host/media/file_names.h"
#include "host/render/json_event.h"

namespace render {

namespace {

std::string withOneDecimal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 99.95 ? "%.1f" : "%.0f", value);
    return text;
}

/// Frames a second, or seconds a frame where that is the larger number.
std::string speed(const Tally& tally) {
    const double rate = tally.rate();
    return rate > 0 && rate < 1 ? withOneDecimal(1 / rate) + " s/frame"
                                : withOneDecimal(rate) + " frames/s";
}

std::string duration(double seconds) {
    const long whole = std::lround(seconds);
    char text[64];
    if (whole < 60)
        std::snprintf(text, sizeof text, "%ld s", whole);
    else if (whole < 3600)
        std::snprintf(text, sizeof text, "%ld min %02ld s", whole / 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%ld h %02ld min", whole / 3600, whole / 60 % 60);
    return text;
}

std::string timeLeft(const Tally& tally) {
    if (tally.rate() <= 0) return "";
    return duration((tally.total - tally.ended()) / tally.rate()) + " left";
}

class BarProgress : public Progress {
public:
    using Progress::Progress;

    void reportFailure(const FrameOutcome& outcome) override {
        erase();
        Progress::reportFailure(outcome);
        draw();
    }

    void abandon() override { erase(); }

private:
    void showFrame(const FrameOutcome&) override { showTick(); }

    void showTick() override {
        const double secondsBetweenDrawings = 0.1;
        if (tally().seconds - m_lastDrawing < secondsBetweenDrawings &&
            tally().ended() < tally().total)
            return;
        m_lastDrawing = tally().seconds;
        draw();
    }

    void showEnd() override {
        erase();
        writeLine("fxrender: " + summaryText(tally()));
    }

    void draw() { put('\r' + barText(tally(), columns()) + kEraseToEnd); }
    void erase() { put(std::string("\r") + kEraseToEnd); }

    void put(const std::string& text) {
        std::fputs(text.c_str(), stream());
        std::fflush(stream());
    }

    int columns() const {
        const int usual = 80;
        struct winsize size = {};
        return ioctl(fileno(stream()), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                                  : usual;
    }

    static constexpr const char* kEraseToEnd = "\x1b[K";
    double m_lastDrawing = -1;  ///< the first is drawn at once
};

class PlainProgress : public Progress {
public:
    using Progress::Progress;

private:
    void showFrame(const FrameOutcome&) override { showTick(); }

    void showTick() override {
        const double secondsBetweenLines = 5;
        if (tally().seconds - m_lastLine < secondsBetweenLines || tally().ended() == tally().total)
            return;
        m_lastLine = tally().seconds;
        writeLine("fxrender: " + plainText(tally()));
    }

    void showEnd() override { writeLine("fxrender: " + summaryText(tally())); }

    double m_lastLine = 0;
};

class JsonProgress : public Progress {
public:
    using Progress::Progress;

    void reportFailure(const FrameOutcome&) override {}  // the frame's event carries it

private:
    void showFrame(const FrameOutcome& outcome) override {
        nlohmann::ordered_json event = {{"event", "frame"}, {"frame", outcome.frame}};
        const bool failed = outcome.status == FrameOutcome::Failed;
        event["status"] = failed ? "failed" : "done";
        event["seconds"] = outcome.seconds;
        if (failed) event["error"] = media::shown(outcome.error);
        writeTallied(event);
    }

    void showEnd() override { writeTallied({{"event", "end"}}); }

    void writeTallied(nlohmann::ordered_json event) {
        event["finished"] = tally().finished;
        event["failed"] = tally().failed;
        event["total"] = tally().total;
        event["elapsed"] = tally().seconds;
        writeEvent(event, stream());
    }
};

class NoProgress : public Progress {
public:
    using Progress::Progress;

private:
    void showFrame(const FrameOutcome&) override {}
    void showEnd() override {}
};

}  // namespace

std::string frameCountText(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

std::string barText(const Tally& tally, int columns) {
    std::string numbers = " " + std::to_string(tally.ended()) + "/" + std::to_string(tally.total);
    if (tally.failed > 0) numbers += "  " + std::to_string(tally.failed) + " failed";
    if (tally.ended() > 0) numbers += "  " + speed(tally) + "  " + timeLeft(tally);

    // One column stays free: writing into the last one makes some terminals wrap.
    const int widest = 40;
    const int width =
        std::min(widest, columns - 1 - static_cast<int>(numbers.size()) - 2 /* brackets */);
    if (width < 1) return numbers.substr(0, std::max(0, columns - 1));
    const int filled =
        tally.total > 0
            ? static_cast<int>(static_cast<std::int64_t>(width) * tally.ended() / tally.total)
            : width;
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]" + numbers;
}

std::string plainText(const Tally& tally) {
    std::string text = std::to_string(tally.ended()) + " of " +
                       frameCountText(static_cast<std::size_t>(tally.total));
    if (tally.failed > 0) text += ", " + std::to_string(tally.failed) + " failed";
    if (tally.ended() > 0) text += ", " + speed(tally) + ", " + timeLeft(tally);
    return text;
}

std::string summaryText(const Tally& tally) {
    std::string text = tally.finished == tally.total
                           ? frameCountText(static_cast<std::size_t>(tally.total)) + " done"
                           : std::to_string(tally.finished) + " of " +
                                 frameCountText(static_cast<std::size_t>(tally.total)) + " done";
    if (tally.failed > 0) text += ", " + std::to_string(tally.failed) + " failed";
    if (tally.ended() < tally.total)
        text += ", " + std::to_string(tally.total - tally.ended()) + " not begun";
    text += " in " +
            (tally.seconds < 60 ? withOneDecimal(tally.seconds) + " s" : duration(tally.seconds));
    if (tally.ended() > 1) text += " (" + speed(tally) + ")";
    return text;
}

std::unique_ptr<Progress> Progress::make(ProgressMode mode, int total, std::FILE* stream) {
    if (mode == ProgressMode::Auto)
        mode = isatty(fileno(stream)) ? ProgressMode::Bar : ProgressMode::Plain;
    switch (mode) {
        case ProgressMode::Bar:
            return std::make_unique<BarProgress>(total, stream);
        case ProgressMode::Plain:
            return std::make_unique<PlainProgress>(total, stream);
        case ProgressMode::Json:
            return std::make_unique<JsonProgress>(total, stream);
        case ProgressMode::Auto:
        case ProgressMode::None:
            break;
    }
    return std::make_unique<NoProgress>(total, stream);
}

Progress::Progress(int total, std::FILE* stream)
    : m_stream(stream), m_begin(std::chrono::steady_clock::now()) {
    m_tally.total = total;
}

void Progress::frameEnded(const FrameOutcome& outcome) {
    const bool failed = outcome.status == FrameOutcome::Failed;
    ++(failed ? m_tally.failed : m_tally.finished);
    readClock();
    showFrame(outcome);
}

void Progress::tick() {
    readClock();
    showTick();
}

void Progress::finish() {
    readClock();
    showEnd();
}

void Progress::reportFailure(const FrameOutcome& outcome) {
    writeLine("fxrender: " + media::shown(outcome.error));
}

void Progress::writeLine(const std::string& line) {
    std::fputs((line + '\n').c_str(), m_stream);
    std::fflush(m_stream);
}

void Progress::readClock() {
    m_tally.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

}  // namespace render
