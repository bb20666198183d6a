#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "host/render/FrameRunner.h"

namespace render {

enum class ProgressMode {
    Auto,   ///< Bar on a terminal, else Plain
    Bar,    ///< one line that is drawn again and again
    Plain,  ///< now and then a line
    Json,   ///< one JSON object a line, for programs
    None
};

/// How far a run has come.
struct Tally {
    int total = 0;
    int finished = 0;
    int failed = 0;
    double seconds = 0;  ///< since the run began

    int ended() const { return finished + failed; }
    double rate() const { return seconds > 0 ? ended() / seconds : 0; }  ///< frames a second
};

/// "1 frame", "48 frames"
std::string frameCountText(std::size_t count);

/// "[######......] 12/48  5.1 frames/s  7 s left", fitted to `columns` characters.
std::string barText(const Tally& tally, int columns);

/// "12 of 48 frames, 5.1 frames/s, 7 s left"
std::string plainText(const Tally& tally);

/// "48 frames done in 9.4 s (5.1 frames/s)", with what failed and what was not begun.
std::string summaryText(const Tally& tally);

/// Shows how far a run has come, on a stream of its own (standard error). One thread only.
class Progress {
public:
    static std::unique_ptr<Progress> make(ProgressMode mode, int total, std::FILE* stream);

    Progress(int total, std::FILE* stream);
    virtual ~Progress() = default;

    void frameEnded(const FrameOutcome& outcome);
    void tick();

    /// Shows the summary.
    void finish();
    /// Ends without a summary: what follows is the error that ended the run.
    virtual void abandon() {}

    /// Writes the error of a frame that ended, where the mode does not show it anyway.
    virtual void reportFailure(const FrameOutcome& outcome);

protected:
    virtual void showFrame(const FrameOutcome& outcome) = 0;
    virtual void showTick() {}
    virtual void showEnd() = 0;

    void writeLine(const std::string& line);
    const Tally& tally() const { return m_tally; }
    std::FILE* stream() const { return m_stream; }

private:
    void readClock();

    Tally m_tally;
    std::FILE* m_stream;
    std::chrono::steady_clock::time_point m_begin;
};

}  // namespace render
