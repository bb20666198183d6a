#include "host/editor/PreviewController.h"

#include <QGuiApplication>
#include <algorithm>
#include <cmath>

#include "host/document/ChainCheck.h"
#include "host/editor/EditorDocument.h"
#include "host/kernel/KernelNotifier.h"

namespace editor {

namespace {

constexpr double kQuickEnough = 40;  // milliseconds: a frame of film
constexpr int kLargestReduction = 4;
constexpr std::size_t kCacheBytes = std::size_t{512} << 20;

bool isDragging() {
    return QGuiApplication::mouseButtons() != Qt::NoButton;
}

}  // namespace

PreviewController::PreviewController(EditorDocument& document, EditorState& state, QObject* parent)
    : QObject(parent),
      m_document(document),
      m_state(state),
      m_arrived([this](const std::shared_ptr<const Preview>& preview) { deliver(preview); }),
      m_worker([this](const std::shared_ptr<const Preview>& preview) { m_arrived.post(preview); },
               kCacheBytes) {
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::objectChanged, this, [this] {
        m_worker.noteEdit();
        request();
    });
    connect(store, &KernelNotifier::orderChanged, this, &PreviewController::chainChanged);
    connect(&document, &EditorDocument::sourceChanged, this, &PreviewController::request);
    connect(&state, &EditorState::currentFrameChanged, this, &PreviewController::request);
    connect(&state, &EditorState::shownStageChanged, this, &PreviewController::request);
    connect(&state, &EditorState::comparisonChanged, this, &PreviewController::request);
    m_refine.setInterval(40);
    connect(&m_refine, &QTimer::timeout, this, [this] {
        if (isDragging()) return;
        m_refine.stop();
        request();
    });
    chainChanged();
}

PreviewController::~PreviewController() = default;

void PreviewController::chainChanged() {
    m_worker.noteEdit();
    m_chain.reset();  // made anew with the next request: several filters may go at once
    request();
}

/// Changes come in bursts (one edit changes several parameters): one request stands for all that
/// come before control returns to the event loop.
void PreviewController::request() {
    if (m_isRequested) return;
    m_isRequested = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isRequested = false;
            m_chainProblem.clear();
            try {
                if (!m_chain) m_chain = std::make_shared<document::ChainRenderer>();
            } catch (const std::exception& error) {
                m_chainProblem = QString::fromUtf8(error.what());
                m_chain = std::make_shared<document::ChainRenderer>(std::vector<InstanceId>());
            }
            PreviewRequest next;
            next.source = m_document.source();
            next.sourceId = m_document.sourceId();
            next.chain = m_chain;
            next.frame = m_state.currentFrame();
            next.stage = m_state.shownStage();
            next.comparison = m_state.comparison();
            next.drawnSize = m_state.drawnSize();
            if (isDragging() && m_fullMilliseconds > kQuickEnough) {
                const double factor = std::ceil(std::sqrt(m_fullMilliseconds / kQuickEnough));
                next.reduction = std::clamp(static_cast<int>(factor), 2, kLargestReduction);
                m_refine.start();
            }
            next.number = ++m_asked;
            m_worker.request(next);
        },
        Qt::QueuedConnection);
}

std::vector<Objection> PreviewController::objectionsToKeys() const {
    std::vector<Objection> objections;
    const auto& frames = m_state.frames();
    if (frames.empty()) return objections;
    const KernelStore& store = KernelStore::instance();
    const document::FilterCatalog& catalog = m_document.session().catalog();
    for (const InstanceId& id : store.instances())
        for (const std::string& advice :
             document::adviceOnKeys(*store.state(id.objectId), catalog.descriptor(id.typeId),
                                    frames.front(), frames.back()))
            objections.push_back({id.objectId, QString::fromStdString(advice)});
    return objections;
}

void PreviewController::deliver(std::shared_ptr<const Preview> preview) {
    if (preview->reduction == 1 && preview->milliseconds > 0)
        m_fullMilliseconds = preview->milliseconds;
    const std::vector<Objection> toKeys = objectionsToKeys();
    if (!m_chainProblem.isEmpty() || !toKeys.empty()) {
        auto explained = std::make_shared<Preview>(*preview);
        if (!m_chainProblem.isEmpty()) explained->problem = m_chainProblem;
        explained->objections.insert(explained->objections.end(), toKeys.begin(), toKeys.end());
        preview = explained;
    }
    m_state.setPreview(preview);
    // The counts of levels end the delivery of a full picture.
    if (preview->afterLevels.channels > 0 || !preview->after) {
        m_answered = preview->request;
        if (isIdle()) emit idle();
    }
}

}  // namespace editor
