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

/// Says why the exception that is being handled ended the frame.
void describe(FrameOutcome& outcome) {
    try {
        throw;
    } catch (const media::MediaError& error) {
        outcome.code = exitCodeOf(error.kind());
        outcome.error = error.what();
    } catch (const CommandError& error) {
        outcome.code = error.code();
        outcome.error = error.what();
    } catch (const std::bad_alloc&) {
        outcome.code = TryAgainLater;
        outcome.error = "frame " + std::to_string(outcome.frame) + ": " + kNoMemoryText;
    } catch (const std::system_error& error) {
        outcome.code = TryAgainLater;
        outcome.error = "frame " + std::to_string(outcome.frame) + ": the system refused (" +
                        error.code().message() + "); close other programs or use fewer --jobs";
    } catch (const std::exception& error) {
        outcome.code = InvalidData;
        outcome.error = "frame " + std::to_string(outcome.frame) + ": " + error.what();
    } catch (...) {
        outcome.code = InvalidData;
        outcome.error = "frame " + std::to_string(outcome.frame) +
                        ": a filter broke off without a word; use another plug-in library";
    }
}

/// Does a part of a frame's work; when it fails, the outcome says why.
template <typename Part>
void attempt(FrameOutcome& outcome, const Part& part) {
    const auto begin = Clock::now();
    try {
        part();
        outcome.status = FrameOutcome::Finished;
    } catch (...) {
        outcome.status = FrameOutcome::Failed;
        try {
            describe(outcome);
        } catch (const std::bad_alloc&) {
            outcome.code = TryAgainLater;
            outcome.error = "no memory";  // so short that it takes none
        }
    }
    outcome.seconds += std::chrono::duration<double>(Clock::now() - begin).count();
}

/// What the threads share: the frames still to do, and the outcomes.
class Run {
public:
    /// All memory is taken here: the threads have nobody to tell when they get none.
    Run(const std::vector<std::int64_t>& frames, std::size_t workerCount, const RunRules& rules)
        : m_mostWaiting(2 * workerCount), m_outcomes(frames.size()), m_rules(rules) {
        m_rests.reserve(m_mostWaiting);
        m_ended.reserve(frames.size());
        for (std::size_t i = 0; i < frames.size(); ++i) m_outcomes[i].frame = frames[i];
    }

    void workOn(const FrameWork& work) {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (m_next < m_outcomes.size() && !m_ending) {
            if (m_rules.shouldStop && m_rules.shouldStop()) break;
            const std::size_t index = m_next++;
            FrameOutcome outcome = m_outcomes[index];
            lock.unlock();
            FrameRest rest;
            attempt(outcome, [&] { rest = work(outcome.frame); });
            lock.lock();
            if (rest) {
                m_restTaken.wait(lock, [&] { return m_rests.size() < m_mostWaiting; });
                m_rests.push_back({index, std::move(outcome), std::move(rest)});
                m_restWaits.notify_one();
            } else {
                end(index, std::move(outcome));
            }
        }
        ++m_workersGone;
        m_restWaits.notify_all();
        m_changed.notify_one();
    }

    /// For a worker that cannot begin.
    void dismissWorker() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_workersGone;
        m_restWaits.notify_all();
    }

    /// Until all workers are gone and nothing is left of their frames.
    void workOnRests(std::size_t workerCount) {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (true) {
            m_restWaits.wait(lock,
                             [&] { return !m_rests.empty() || m_workersGone == workerCount; });
            if (m_rests.empty()) break;
            Rest rest = std::move(m_rests.front());
            m_rests.erase(m_rests.begin());
            ++m_restsRunning;
            m_restTaken.notify_one();
            lock.unlock();
            attempt(rest.outcome, rest.work);
            rest.work = nullptr;  // what it holds is freed outside the lock
            lock.lock();
            --m_restsRunning;
            end(rest.index, std::move(rest.outcome));
        }
    }

    void watch(std::size_t workerCount, const std::function<void(const FrameOutcome&)>& onOutcome,
               const std::function<void()>& onTick) {
        const auto tick = std::chrono::milliseconds(200);
        std::size_t announced = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        while (announced < m_ended.size() || m_workersGone < workerCount || !m_rests.empty() ||
               m_restsRunning > 0) {
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

    /// No more frames begin.
    void stop() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }

    std::vector<FrameOutcome> takeOutcomes() { return std::move(m_outcomes); }

private:
    struct Rest {
        std::size_t index;
        FrameOutcome outcome;
        FrameRest work;
    };

    /// Under the lock.
    void end(std::size_t index, FrameOutcome outcome) {
        if (outcome.status == FrameOutcome::Failed && !m_rules.keepGoing) m_ending = true;
        m_outcomes[index] = std::move(outcome);
        m_ended.push_back(index);
        m_changed.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;    ///< for watch(): a frame ended or a worker is gone
    std::condition_variable m_restWaits;  ///< or no more will come
    std::condition_variable m_restTaken;
    const std::size_t m_mostWaiting;  ///< rests
    std::vector<Rest> m_rests;        ///< in the order in which they came
    std::size_t m_restsRunning = 0;
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
    const std::size_t wanted = workers.size();
    Run run(frames, wanted, rules);
    std::vector<std::thread> threads;
    threads.reserve(2 * wanted);
    const auto begin = [&](auto function) {
        try {
            threads.emplace_back(function);
            return true;
        } catch (const std::exception&) {
            return false;  // the system grants no further thread, or no memory for one
        }
    };
    const auto join = [&] {
        for (std::thread& thread : threads) thread.join();
    };
    // As many for the rests: they mostly sleep, and a disk likes several at a time.
    std::size_t restThreads = 0;
    while (restThreads < wanted && begin([&] { run.workOnRests(wanted); })) ++restThreads;
    // Those that run do all the work; for those that cannot, it is as if they had gone.
    std::size_t begun = 0;
    if (restThreads > 0)
        for (const FrameWork& worker : workers)
            if (begin([&run, &worker] { run.workOn(worker); })) ++begun;
    for (std::size_t i = begun; i < wanted; ++i) run.dismissWorker();
    if (begun == 0) {
        join();
        throw CommandError(TryAgainLater, "the system grants no thread to render on");
    }
    try {
        run.watch(wanted, onOutcome, onTick);
    } catch (...) {
        run.stop();
        join();
        throw;
    }
    join();
    return run.takeOutcomes();
}

}  // namespace render
