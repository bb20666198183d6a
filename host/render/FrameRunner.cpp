#include "host/render/FrameRunner.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "host/media/MediaError.h"

namespace render {

namespace {

using Clock = std::chrono::steady_clock;

FrameOutcome runFrame(const FrameWork& work, std::int64_t frame) {
    FrameOutcome outcome;
    outcome.frame = frame;
    const auto begin = Clock::now();
    try {
        work(frame);
        outcome.status = FrameOutcome::Finished;
    } catch (const media::MediaError& error) {
        outcome.code = static_cast<ExitCode>(error.exitCode());
        outcome.error = error.what();
    } catch (const CommandError& error) {
        outcome.code = error.code();
        outcome.error = error.what();
    } catch (const std::bad_alloc&) {
        outcome.code = TryAgainLater;
        outcome.error = "frame " + std::to_string(frame) +
                        ": not enough memory; close other programs or use fewer --jobs";
    } catch (const std::exception& error) {
        outcome.code = InvalidData;
        outcome.error = "frame " + std::to_string(frame) + ": " + error.what();
    }
    if (outcome.status != FrameOutcome::Finished) outcome.status = FrameOutcome::Failed;
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return outcome;
}

/// What the threads share: the frames still to do, and the outcomes.
class Run {
public:
    Run(const std::vector<std::int64_t>& frames, const RunRules& rules)
        : m_outcomes(frames.size()), m_rules(rules) {
        for (std::size_t i = 0; i < frames.size(); ++i) m_outcomes[i].frame = frames[i];
    }

    void workOn(const FrameWork& work) {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (m_next < m_outcomes.size() && !m_ending) {
            if (m_rules.shouldStop && m_rules.shouldStop()) break;
            const std::size_t index = m_next++;
            const std::int64_t frame = m_outcomes[index].frame;
            lock.unlock();
            const FrameOutcome outcome = runFrame(work, frame);
            lock.lock();
            m_outcomes[index] = outcome;
            m_ended.push_back(index);
            if (outcome.status == FrameOutcome::Failed && !m_rules.keepGoing) m_ending = true;
            m_changed.notify_one();
        }
        ++m_workersGone;
        m_changed.notify_one();
    }

    void watch(std::size_t workerCount, const std::function<void(const FrameOutcome&)>& onOutcome,
               const std::function<void()>& onTick) {
        const auto tick = std::chrono::milliseconds(200);
        std::size_t announced = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        while (announced < m_ended.size() || m_workersGone < workerCount) {
            if (announced < m_ended.size()) {
                const FrameOutcome outcome = m_outcomes[m_ended[announced++]];
                lock.unlock();
                if (onOutcome) onOutcome(outcome);
                lock.lock();
            } else if (m_changed.wait_for(lock, tick) == std::cv_status::timeout) {
                lock.unlock();
                if (onTick) onTick();
                lock.lock();
            }
        }
    }

    std::vector<FrameOutcome> takeOutcomes() { return std::move(m_outcomes); }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<FrameOutcome> m_outcomes;
    std::vector<std::size_t> m_ended;  ///< indices, in the order in which the frames ended
    std::size_t m_next = 0;
    std::size_t m_workersGone = 0;
    bool m_ending = false;
    const RunRules& m_rules;
};

}  // namespace

std::vector<FrameOutcome> runFrames(const std::vector<std::int64_t>& frames,
                                    const std::vector<FrameWork>& workers, const RunRules& rules,
                                    const std::function<void(const FrameOutcome&)>& onOutcome,
                                    const std::function<void()>& onTick) {
    Run run(frames, rules);
    std::vector<std::thread> threads;
    try {
        for (const FrameWork& worker : workers)
            threads.emplace_back([&run, &worker] { run.workOn(worker); });
    } catch (const std::system_error&) {
        // The system grants no further thread: those that run do the work, if there is one.
        if (threads.empty())
            throw CommandError(TryAgainLater, "the system grants no thread to render on");
    }
    run.watch(threads.size(), onOutcome, onTick);
    for (std::thread& thread : threads) thread.join();
    return run.takeOutcomes();
}

}  // namespace render
