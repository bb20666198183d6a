#include "host/document/ChainCheck.h"

#include <algorithm>
#include <memory>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/document/ChainRenderer.h"
#include "host/document/FilterAdvice.h"
#include "host/kernel/KernelStore.h"

namespace document {

void ChainCheck::lookAtSettings(std::int64_t frame, int width, int height) {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& instance : store.instances()) {
        const HkKernelObjectData* object =
            HkFXKernelData::getInstance()->getObject(instance.typeId, instance.objectId);
        if (!object) continue;
        const QString key = store.filterKey(instance.typeId);
        const FilterValues values(instance.typeId, object->getKeyframesAt(frame));
        // No filter changes the size of a frame.
        for (const std::string& advice : adviceOnSettings(key, values, width, height))
            this->object(frame, key.toStdString() + ": " + advice);
    }
}

bool ChainCheck::wantsPicture() {
    const KernelStore& store = KernelStore::instance();
    const auto instances = store.instances();
    return std::any_of(instances.begin(), instances.end(), [&](const InstanceId& instance) {
        return looksAtPicture(store.filterKey(instance.typeId));
    });
}

void ChainCheck::lookAtPicture(std::int64_t frame, std::unique_ptr<HkImage> picture) {
    ChainRenderer chain;
    chain.render(std::move(picture), frame, [&](const std::string& key, const HkImage& input) {
        for (const std::string& advice : adviceOnPicture(QString::fromStdString(key), input))
            object(frame, key + ": " + advice);
    });
}

void ChainCheck::object(std::int64_t frame, const std::string& objection) {
    const auto known = std::find_if(m_objections.begin(), m_objections.end(),
                                    [&](const Objection& o) { return o.text == objection; });
    if (known == m_objections.end()) {
        m_objections.push_back({objection, frame, frame, 1});
        return;
    }
    known->lastFrame = std::max(known->lastFrame, frame);
    ++known->frameCount;
}

std::vector<std::string> ChainCheck::objections() const {
    std::vector<std::string> lines;
    for (const Objection& o : m_objections) {
        const std::string first = std::to_string(o.firstFrame);
        const std::string frames = o.frameCount == 1
                                       ? "frame " + first
                                       : std::to_string(o.frameCount) + " frames, " + first +
                                             " to " + std::to_string(o.lastFrame);
        lines.push_back(o.text + " (" + frames + ")");
    }
    return lines;
}

}  // namespace document
