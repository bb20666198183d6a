#include "host/document/ChainCheck.h"

#include <QStringList>
#include <algorithm>
#include <utility>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/document/ChainRenderer.h"
#include "host/document/FilterAdvice.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

/// "a key at frame 20", "keys at frames 20, 30 and 7 more".
std::string keysText(const std::vector<qint64>& frames) {
    const std::size_t mostNamed = 4;
    QStringList named;
    for (std::size_t i = 0; i < std::min(frames.size(), mostNamed); ++i)
        named.append(QString::number(frames[i]));
    QString text =
        frames.size() == 1 ? QStringLiteral("a key at frame ") : QStringLiteral("keys at frames ");
    text += named.join(QStringLiteral(", "));
    if (frames.size() > mostNamed)
        text += QStringLiteral(" and %1 more").arg(frames.size() - mostNamed);
    return text.toStdString();
}

}  // namespace

std::vector<std::string> adviceOnKeys(const InstanceState& state,
                                      const HkKernelObjectDataDescr& descr, std::int64_t firstFrame,
                                      std::int64_t lastFrame) {
    std::vector<std::string> advice;
    if (!state.animated) return advice;
    const std::string first = std::to_string(firstFrame), last = std::to_string(lastFrame);
    const std::string there =
        firstFrame == lastFrame ? "frame " + first + " only" : "frames " + first + " to " + last;
    // Parameters that were edited together have their keys together.
    std::vector<std::pair<std::string, QStringList>> missed;
    for (int index = 0; index < descr.paramCount(); ++index) {
        const ParamTrack& keys = state.params[static_cast<std::size_t>(index)].keys;
        std::vector<qint64> outside;
        for (const auto& [frame, key] : keys)
            if (frame < firstFrame || frame > lastFrame) outside.push_back(frame);
        if (outside.empty()) continue;
        const std::string what =
            (outside.size() == keys.size() ? "no key inside, but " : "") + keysText(outside);
        if (missed.empty() || missed.back().first != what) missed.push_back({what, {}});
        missed.back().second << descr.param(index).name;
    }
    for (const auto& [what, names] : missed)
        advice.push_back(names.join(QStringLiteral(", ")).toStdString() +
                         (names.size() == 1 ? " has " : " have ") + what + ", and the input has " +
                         there + "; move or delete what is not meant to work from there");
    return advice;
}

ChainCheck::ChainCheck() {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& id : store.instances())
        m_instances.push_back(
            {id.typeId, id.objectId, store.filterKey(id.typeId), FilterLimits(id.typeId)});
}

void ChainCheck::lookAtKeys(std::int64_t firstFrame, std::int64_t lastFrame) {
    for (const Instance& instance : m_instances) {
        const auto state = KernelStore::instance().state(instance.objectId);
        const HkKernelObjectDataDescr* descr =
            HkFXKernelData::getInstance()->getDataDescriptor(instance.typeId);
        if (!state || !descr) continue;
        for (const std::string& advice : adviceOnKeys(*state, *descr, firstFrame, lastFrame))
            m_objections.push_back({Advice, instance.key.toStdString() + ": " + advice, {}});
    }
}

void ChainCheck::lookAtSettings(std::int64_t frame, int width, int height) {
    for (const Instance& instance : m_instances) {
        const HkKernelObjectData* object =
            HkFXKernelData::getInstance()->getObject(instance.typeId, instance.objectId);
        if (!object) continue;
        const std::string where = instance.key.toStdString() + ": ";
        const FilterValues values(instance.typeId, object->getKeyframesAt(frame));
        // No filter changes the size of a frame.
        if (const auto refusal = instance.limits.refusal(values, width, height))
            note(Obstacle, frame, where + *refusal);
        for (const std::string& advice : adviceOnSettings(instance.key, values))
            note(Advice, frame, where + advice);
    }
}

bool ChainCheck::wantsPicture(int channels) const {
    return std::any_of(m_instances.begin(), m_instances.end(), [=](const Instance& instance) {
        return looksAtInput(instance.key, channels) || looksAtResult(instance.key);
    });
}

void ChainCheck::lookAtPicture(std::int64_t frame, std::unique_ptr<HkImage> picture) {
    bool said = false;  // what comes of a bad picture further on is not worth a second line
    const auto say = [&](const QString& key, const std::vector<std::string>& advice) {
        for (const std::string& text : advice)
            if (!said) note(Advice, frame, key.toStdString() + ": " + text);
        said |= !advice.empty();
    };
    ChainRenderer::Observer observer;
    observer.input = [&](const QString& key, const HkImage& input) {
        say(key, adviceOnInput(key, input));
    };
    observer.result = [&](const QString& key, const HkImage& result) {
        say(key, adviceOnResult(key, result));
    };
    try {
        ChainRenderer().render(std::move(picture), frame, observer);
    } catch (const FrameRefused&) {
        // The look at the settings says so.
    }
}

void ChainCheck::object(std::int64_t frame, const std::string& objection) {
    note(Obstacle, frame, objection);
}

void ChainCheck::note(Kind kind, std::int64_t frame, const std::string& text) {
    const auto known = std::find_if(m_objections.begin(), m_objections.end(),
                                    [&](const Objection& o) { return o.text == text; });
    if (known == m_objections.end())
        m_objections.push_back({kind, text, {frame}});
    else
        known->frames.insert(frame);
}

std::string ChainCheck::line(const Objection& objection) {
    if (objection.frames.empty()) return objection.text;
    const std::string first = std::to_string(*objection.frames.begin());
    const std::string frames = objection.frames.size() == 1
                                   ? "frame " + first
                                   : std::to_string(objection.frames.size()) + " frames, " + first +
                                         " to " + std::to_string(*objection.frames.rbegin());
    return objection.text + " (" + frames + ")";
}

std::vector<std::string> ChainCheck::objections() const {
    std::vector<std::string> lines;
    for (const Objection& objection : m_objections) lines.push_back(line(objection));
    return lines;
}

std::vector<std::string> ChainCheck::advice() const {
    std::vector<std::string> lines;
    for (const Objection& objection : m_objections)
        if (objection.kind == Advice) lines.push_back(line(objection));
    return lines;
}

std::vector<std::string> ChainCheck::objectionsAt(std::int64_t frame) const {
    std::vector<std::string> texts;
    for (const Objection& objection : m_objections)
        if (objection.frames.count(frame) > 0) texts.push_back(objection.text);
    return texts;
}

}  // namespace document
