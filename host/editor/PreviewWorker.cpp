#include "host/editor/PreviewWorker.h"

#include <QCoreApplication>
#include <new>
#include <utility>

#include "host/imaging/Areas.h"

namespace editor {

namespace {

/// A drag seems to stand still when no picture has come for so long.
constexpr std::chrono::milliseconds kLongestWait{150};

struct GivenUp {};

double millisecondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
        .count();
}

std::unique_ptr<HkImage> workingCopy(const HkImage& picture) {
    std::unique_ptr<HkImage> copy = copyPicture(picture);
    if (!copy) throw std::bad_alloc();
    return copy;
}

/// The steps to take for a stage: 0 for the source, all for one that is not in the chain.
int stepsUpTo(int stage, const document::ChainRenderer& chain) {
    if (stage == kSourceStage) return 0;
    for (int step = 0; step < chain.stepCount(); ++step)
        if (chain.objectIdOf(step) == stage) return step + 1;
    return chain.stepCount();
}

}  // namespace

PreviewWorker::PreviewWorker(Deliver deliver, std::size_t cacheBytes)
    : m_deliver(std::move(deliver)), m_cache(cacheBytes), m_thread([this] { run(); }) {}

PreviewWorker::~PreviewWorker() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void PreviewWorker::request(PreviewRequest request) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_next = std::move(request);
    }
    m_changed.notify_one();
}

bool PreviewWorker::hasNewer() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_next || m_isEnding;
}

bool PreviewWorker::isToBeGivenUp() {
    return hasNewer() && Clock::now() - m_lastDelivery < kLongestWait;
}

void PreviewWorker::run() {
    for (;;) {
        PreviewRequest request;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait(lock, [this] { return m_next || m_isEnding; });
            if (m_isEnding) return;
            request = std::move(*m_next);
            m_next.reset();
        }
        try {
            const std::shared_ptr<Preview> preview = render(request);
            m_deliver(preview);
            m_lastDelivery = Clock::now();
            if (hasNewer() || !preview->after) continue;
            // Counting levels takes as long as a quick filter: the picture does not wait for it.
            auto complete = std::make_shared<Preview>(*preview);
            complete->beforeLevels = levelCounts(*preview->before);
            complete->afterLevels = levelCounts(*preview->after);
            m_deliver(complete);
        } catch (const GivenUp&) {
        } catch (const std::bad_alloc&) {  // what was delivered before stays
        }
    }
}

StageCache::Stage PreviewWorker::sourceStage(const PreviewRequest& request, Preview& preview) {
    const auto info = request.source->info(request.frame);
    preview.width = info.width;
    preview.height = info.height;
    Picture picture = request.source->read(request.frame);
    if (request.reduction > 1) picture = reducedPicture(*picture, request.reduction);
    if (!picture) throw std::bad_alloc();
    return {picture, {}};
}

std::shared_ptr<Preview> PreviewWorker::render(const PreviewRequest& request) {
    auto preview = std::make_shared<Preview>();
    preview->request = request.number;
    preview->frame = request.frame;
    preview->stage = request.stage;
    preview->reduction = request.reduction;
    if (!request.source) return preview;
    document::ChainRenderer& chain = *request.chain;
    StageCache::Stage source;
    try {
        // What each stage depends on: the input, then the settings of each filter up to it.
        const quint64 editsBefore = m_edits;
        const int steps = stepsUpTo(request.stage, chain);
        std::vector<std::string> keys = {std::to_string(request.sourceId) + '/' +
                                         std::to_string(request.frame) + '/' +
                                         std::to_string(request.reduction)};
        for (int step = 0; step < steps; ++step)
            keys.push_back(keys.back() + '|' + chain.settingsOf(step, request.frame));

        if (const auto kept = m_cache.find(keys[0])) {
            source = *kept;
            const int factor = request.reduction;
            preview->width = source.picture->roiWidth * factor;
            preview->height = source.picture->roiHeight * factor;
            if (factor > 1) {  // the division left a rest
                const auto info = request.source->info(request.frame);
                preview->width = info.width;
                preview->height = info.height;
            }
        } else {
            source = sourceStage(request, *preview);
            m_cache.keep(keys[0], source);
        }

        int done = steps;
        StageCache::Stage stage = source;
        for (; done > 0; --done)
            if (const auto kept = m_cache.find(keys[static_cast<std::size_t>(done)])) {
                stage = *kept;
                break;
            }
        Picture input = source.picture;
        if (done > 0)
            if (const auto kept = m_cache.find(keys[static_cast<std::size_t>(done - 1)]))
                input = kept->picture;

        bool isToBeKept = true;
        for (int step = done; step < steps; ++step) {
            if (isToBeGivenUp()) throw GivenUp();
            input = stage.picture;
            const auto begin = Clock::now();
            stage.picture = chain.renderStep(step, workingCopy(*input), request.frame);
            preview->milliseconds += millisecondsSince(begin);
            for (const std::string& text :
                 chain.objectionsTo(step, *input, *stage.picture, request.frame))
                stage.objections.push_back({chain.objectIdOf(step), QString::fromStdString(text)});
            // The filter read the store itself: only when nothing was edited since the settings
            // were read does the key tell what it saw. The store is changed before the edit is
            // noted, hence both comparisons.
            const std::string& key = keys[static_cast<std::size_t>(step + 1)];
            isToBeKept = isToBeKept && m_edits == editsBefore &&
                         keys[static_cast<std::size_t>(step)] + '|' +
                                 chain.settingsOf(step, request.frame) ==
                             key;
            if (isToBeKept) m_cache.keep(key, stage);
        }
        preview->before = request.stage == kResultStage ? source.picture : input;
        preview->after = stage.picture;
        preview->objections = stage.objections;
        if (steps > 0 && chain.showsObjectsAfter(steps - 1, request.frame)) {
            const int count = countWhiteAreas(*stage.picture);
            if (count >= 0) preview->objectCount = count;
        }
    } catch (const GivenUp&) {
        throw;
    } catch (const std::bad_alloc&) {
        preview->problem = QCoreApplication::translate("editor", "not enough memory");
    } catch (const std::exception& error) {
        preview->problem = QString::fromUtf8(error.what());
    }
    // What the filters could not do does not take the picture away.
    if (!preview->after) preview->before = preview->after = source.picture;
    addComparison(request, *preview);
    addFitted(request, *preview);
    return preview;
}

void PreviewWorker::addComparison(const PreviewRequest& request, Preview& preview) const {
    preview.display = preview.after;
    if (!preview.after) return;
    Picture made;
    const int gain = 4;  // differences that matter are small
    if (request.comparison == Comparison::Difference)
        made = differencePicture(*preview.before, *preview.after, gain);
    if (request.comparison == Comparison::Objects)
        made = withAreasTinted(*preview.before, *preview.after);
    if (made) preview.display = made;
}

void PreviewWorker::addFitted(const PreviewRequest& request, Preview& preview) const {
    const QSize size = request.drawnSize;
    const auto fitted = [size](const Picture& picture) -> Picture {
        if (!picture || size.width() >= picture->roiWidth) return nullptr;
        return scaledPicture(*picture, size.width(), size.height());
    };
    preview.fittedDisplay = fitted(preview.display);
    if (request.comparison == Comparison::Wipe || request.comparison == Comparison::SideBySide)
        preview.fittedBefore = fitted(preview.before);
}

}  // namespace editor
