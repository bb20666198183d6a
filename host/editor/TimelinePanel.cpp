#include "host/editor/TimelinePanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>
#include <limits>

#include "host/editor/EditorDocument.h"
#include "host/editor/Glyphs.h"
#include "host/editor/PreviewController.h"
#include "host/kernel/KernelNotifier.h"

namespace editor {

namespace {
constexpr int kMostHeight = 190;  // that the timeline asks for
}

TimelinePanel::TimelinePanel(EditorDocument& document, EditorState& state,
                             PreviewController& preview, QWidget* parent)
    : QWidget(parent),
      m_document(document),
      m_state(state),
      m_preview(preview),
      m_counted([this](const Counted& counted) {
          if (counted.job == m_job) m_view->setCount(counted.frame, counted.objects);
      }),
      m_counter([this](quint64 job, qint64 frame, int objects) {
          m_counted.post({job, frame, objects});
      }) {
    setObjectName(QStringLiteral("timelinePanel"));
    m_keys =
        new TimelineKeys(state, document.session().undoStack(), document.session().catalog(), this);
    m_view = new TimelineView(state, *m_keys, this);
    auto* bar = new QHBoxLayout;
    bar->setSpacing(2);
    const auto add = [&](Glyph glyph, const char* name, const QString& toolTip,
                         const std::function<void()>& action) {
        auto* button = new QToolButton(this);
        button->setObjectName(QLatin1String(name));
        button->setIcon(glyphIcon(glyph));
        button->setAutoRaise(true);
        button->setToolTip(toolTip);
        button->setAccessibleName(toolTip);
        connect(button, &QToolButton::clicked, this, action);
        bar->addWidget(button);
        return button;
    };
    add(Glyph::First, "timelineFirst", tr("First frame (Home)"), [this] {
        if (!m_state.frames().empty()) m_state.setCurrentFrame(m_state.frames().front());
    });
    add(Glyph::Previous, "timelinePrevious", tr("Previous frame (,)"),
        [this] { m_state.stepFrames(-1); });
    m_playButton =
        add(Glyph::Play, "timelinePlay", tr("Play or stop (Space)"), [this] { togglePlay(); });
    add(Glyph::Next, "timelineNext", tr("Next frame (.)"), [this] { m_state.stepFrames(1); });
    add(Glyph::Last, "timelineLast", tr("Last frame (End)"), [this] {
        if (!m_state.frames().empty()) m_state.setCurrentFrame(m_state.frames().back());
    });
    m_frame = new QSpinBox(this);
    m_frame->setObjectName(QStringLiteral("timelineFrame"));
    m_frame->setAccessibleName(tr("Current frame"));
    m_frame->setToolTip(tr("Current frame"));
    m_frame->setKeyboardTracking(false);
    bar->addSpacing(8);
    bar->addWidget(m_frame);
    bar->addSpacing(8);
    add(Glyph::PreviousKey, "timelinePreviousKey", tr("Previous key (Ctrl+,)"),
        [this] { m_keys->goToKey(-1); });
    add(Glyph::NextKey, "timelineNextKey", tr("Next key (Ctrl+.)"), [this] { m_keys->goToKey(1); });
    add(Glyph::AddKey, "timelineAddKey", tr("Make a key of the values here (K)"),
        [this] { m_keys->addHere(); });
    add(Glyph::RemoveKey, "timelineDeleteKey", tr("Delete the selected keys (Delete)"),
        [this] { m_keys->deleteSelected(); });
    bar->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 4);
    layout->setSpacing(2);
    layout->addLayout(bar);
    // Many lanes are scrolled through, so that there is room for the picture.
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(m_view);
    layout->addWidget(scroll, 1);
    const auto fit = [this, scroll] {
        scroll->setMinimumHeight(std::min(m_view->minimumHeight(), kMostHeight));
    };
    connect(m_view, &TimelineView::heightChanged, scroll, fit);
    connect(m_view, &TimelineView::laneChosen, scroll, [scroll](const QRect& lane) {
        scroll->ensureVisible(0, lane.center().y(), 0, lane.height());
    });
    fit();

    connect(m_frame, qOverload<int>(&QSpinBox::valueChanged), this,
            [this](int frame) { m_state.setCurrentFrame(frame); });
    connect(&state, &EditorState::framesChanged, this, &TimelinePanel::showFrames);
    connect(&state, &EditorState::currentFrameChanged, this, [this](qint64 frame) {
        const QSignalBlocker quiet(m_frame);
        m_frame->setValue(static_cast<int>(frame));
    });
    const int millisecondsPerFrame = 40;
    m_play.setInterval(millisecondsPerFrame);
    connect(&m_play, &QTimer::timeout, this, [this] {
        // Every frame is shown: a slow chain plays slowly.
        if (!m_preview.isIdle()) return;
        if (m_state.currentFrame() == m_state.frames().back())
            m_state.setCurrentFrame(m_state.frames().front());
        else
            m_state.stepFrames(1);
    });
    const int calm = 700;
    m_pause.setInterval(calm);
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &TimelinePanel::count);
    KernelNotifier* const store = KernelNotifier::instance();
    connect(store, &KernelNotifier::objectChanged, this, &TimelinePanel::restartCount);
    connect(store, &KernelNotifier::orderChanged, this, &TimelinePanel::restartCount);
    connect(&document, &EditorDocument::sourceChanged, this, &TimelinePanel::restartCount);
    showFrames();
}

void TimelinePanel::togglePlay() {
    if (isPlaying())
        m_play.stop();
    else if (m_state.frames().size() > 1)
        m_play.start();
    m_playButton->setIcon(glyphIcon(isPlaying() ? Glyph::Pause : Glyph::Play));
}

void TimelinePanel::showFrames() {
    if (isPlaying()) togglePlay();
    const auto& frames = m_state.frames();
    const QSignalBlocker quiet(m_frame);
    const auto fitting = [](std::int64_t frame) {
        return static_cast<int>(
            std::clamp<std::int64_t>(frame, 0, std::numeric_limits<int>::max()));
    };
    m_frame->setRange(frames.empty() ? 0 : fitting(frames.front()),
                      frames.empty() ? 0 : fitting(frames.back()));
    m_frame->setValue(fitting(m_state.currentFrame()));
    for (QToolButton* button : findChildren<QToolButton*>()) button->setEnabled(frames.size() > 1);
    m_frame->setEnabled(frames.size() > 1);
}

void TimelinePanel::restartCount() {
    m_counter.start({++m_job, nullptr, nullptr, {}});
    m_pause.start();
}

void TimelinePanel::count() {
    const auto source = m_document.source();
    if (!source || m_state.frames().size() < 2) {
        m_view->clearCounts();
        return;
    }
    std::shared_ptr<document::ChainRenderer> chain;
    try {
        chain = std::make_shared<document::ChainRenderer>();
    } catch (const std::exception&) {
        return;  // the preview says so
    }
    m_view->clearCounts();
    if (!chain->showsObjectsAfter(chain->stepCount() - 1, m_state.currentFrame())) return;
    // What is near the frame that is looked at is known first.
    std::vector<std::int64_t> frames = m_state.frames();
    const qint64 here = m_state.currentFrame();
    std::stable_sort(frames.begin(), frames.end(), [here](std::int64_t a, std::int64_t b) {
        return std::abs(a - here) < std::abs(b - here);
    });
    m_counter.start({m_job, source, chain, frames});
}

}  // namespace editor
