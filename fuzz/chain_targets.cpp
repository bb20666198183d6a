// The filters of the built library, through its entry points and the contract alone, with values
// that no page offers but a document may hold; and the store under any order of edits.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QCoreApplication>
#include <QDomDocument>
#include <QEvent>
#include <QToolBox>
#include <QUndoStack>
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "fuzz/session.h"
#include "fuzz/targets.h"
#include "host/document/ChainRenderer.h"
#include "host/document/FilterSettings.h"
#include "host/document/Keyframes.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/FilterElement.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/UndoGesture.h"
#include "tests/host/kernel/plugins/TestFilter.h"
#include "tests/kit/pixels.h"

namespace fuzz {

namespace {

int anyInt(Input& input) {
    const int special[] = {std::numeric_limits<int>::min(), -1, 0, 1, 2, 255,
                           std::numeric_limits<int>::max()};
    switch (input.number(0, 3)) {
        case 0:
            return input.oneOf(special);
        case 1:
            return input.any<int>();
        default:
            return input.number(0, 60);
    }
}

double anyDouble(Input& input) {
    const double value =
        input.number(0, 1) == 0 ? input.any<double>() : input.number(-20, 200) / 8.0;
    return std::isfinite(value) ? value : 0;  // the store takes no others
}

QVariant anyValue(Input& input, QMetaType::Type type) {
    switch (type) {
        case QMetaType::Bool:
            return input.number(0, 1) == 1;
        case QMetaType::Double:
            return anyDouble(input);
        case QMetaType::QString:
            return QString::number(anyInt(input));
        default:
            return anyInt(input);
    }
}

qint64 anyFrame(Input& input) {
    return input.number(0, 7) == 0 ? input.any<qint64>() : input.number(0, 20);
}

InstanceState anyState(Input& input, const HkKernelObjectDataDescr& descr) {
    InstanceState state = defaultState(descr);
    state.animated = input.number(0, 3) == 0;
    for (int index = 0; index < descr.paramCount(); ++index) {
        InstanceParam& param = state.params[static_cast<std::size_t>(index)];
        const ParamDescr& declared = descr.param(index);
        if (input.number(0, 2) != 0) param.base = anyValue(input, declared.type);
        if (index == kEnabledParam && input.number(0, 3) != 0) param.base = 1;
        if (!state.animated || declared.kind == ParamDescr::Constant) continue;
        for (int keys = input.number(0, 3); keys > 0; --keys) {
            const bool held = input.number(0, 1) == 1 || declared.kind == ParamDescr::Stepped;
            param.keys[anyFrame(input)] = {anyValue(input, declared.type), held};
        }
    }
    return state;
}

int anyType(Input& input) {
    return input.oneOf(KernelStore::instance().types());
}

const HkKernelObjectDataDescr& descriptor(int typeId) {
    return *HkFXKernelData::getInstance()->getDataDescriptor(typeId);
}

std::unique_ptr<HkImage> anyPicture(Input& input) {
    const int width = input.number(1, 48), height = input.number(1, 32);
    const int channels = input.number(1, 4);
    const unsigned alignments[] = {1, 4, 32};
    auto image =
        std::make_unique<HkImage>(width, height, channels, nullptr, input.oneOf(alignments));
    const std::string pattern = input.rest() + 'x';
    std::size_t next = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * channels; ++x)
            image->data[y * image->step + x] =
                static_cast<unsigned char>(pattern[next++ % pattern.size()]);
    return image;
}

std::unique_ptr<HkImage> copyOf(const HkImage& image) {
    auto copy = std::make_unique<HkImage>(image.width, image.height, image.channels, nullptr, 4u);
    for (int y = 0; y < image.height; ++y)
        std::copy_n(image.data + y * image.step, image.width * image.channels,
                    copy->data + y * copy->step);
    return copy;
}

/// What the filter answers; the frame it was given is gone when that is another.
std::unique_ptr<HkImage> processed(HkImageFilter& filter, std::unique_ptr<HkImage> image,
                                   qint64 frame) {
    return std::unique_ptr<HkImage>(filter.processImage(image.release(), frame));
}

/// The deconvolution does as many iterations as its document asks for; a renderer refuses such a
/// frame beforehand, and hosts in general must not wait for it here.
bool takesForEver(const InstanceId& instance, const InstanceState& state, qint64 frame) {
    const int mostAmount = 40;
    if (KernelStore::instance().filterKey(instance.typeId) != QLatin1String("Degauss"))
        return false;
    const HkKernelObjectDataDescr& descr = descriptor(instance.typeId);
    return valueInForce(state, descr, descr.indexOf(QStringLiteral("Threshold")), frame).toInt() >
           mostAmount;
}

}  // namespace

void chain(Input input) {
    filters();
    KernelStore& kernel = KernelStore::instance();
    kernel.clear();
    const qint64 frame = anyFrame(input);
    std::vector<std::unique_ptr<HkImageFilter>> chain;
    for (int count = input.number(1, 4); count > 0; --count) {
        const int typeId = anyType(input);
        const InstanceState state = anyState(input, descriptor(typeId));
        ASSERT_TRUE(stateFits(state, descriptor(typeId)));
        const InstanceId instance{typeId, kernel.add(typeId, state)};
        ASSERT_GE(instance.objectId, 0);
        if (takesForEver(instance, state, frame)) {
            kernel.remove(instance.objectId);
            continue;
        }
        chain.emplace_back(kernel.manipulator(typeId)->createImageFilter(instance.objectId));
        ASSERT_TRUE(chain.back());
    }
    const std::unique_ptr<HkImage> source = anyPicture(input);
    std::unique_ptr<HkImage> image = copyOf(*source);
    for (const auto& filter : chain) {
        image = processed(*filter, std::move(image), frame);
        ASSERT_TRUE(image);
        ASSERT_TRUE(image->data);
        EXPECT_EQ(image->width, source->width);
        EXPECT_EQ(image->height, source->height);
        EXPECT_EQ(image->roiWidth, source->width);
        EXPECT_EQ(image->roiHeight, source->height);
        EXPECT_TRUE(image->channels >= 1 && image->channels <= 4);
        EXPECT_GE(image->step, image->width * image->channels);
    }
    // A filter that worked before, and others at other times, give the same.
    std::unique_ptr<HkImage> again = copyOf(*source);
    for (const auto& filter : chain) again = processed(*filter, std::move(again), frame);
    EXPECT_TRUE(pixels(*image) == pixels(*again));
    // The renderer refuses the frame, or gives the same.
    try {
        document::ChainRenderer renderer;
        EXPECT_TRUE(pixels(*renderer.render(copyOf(*source), frame)) == pixels(*image));
    } catch (const document::FrameRefused&) {
    }
}

namespace {

qint64 now = 0;  ///< of the clock that tells which edits belong together

/// What a host or a document may bring, whatever the parameter's type.
QVariant anyVariant(Input& input) {
    const QVariant values[] = {{},           "", "true", "0", "x", "1e999", input.any<double>(),
                               anyInt(input)};
    return input.oneOf(values);
}

/// An edit as a window makes it, with its step on the stack.
void edit(Input& input, QUndoStack& undo) {
    KernelStore& kernel = KernelStore::instance();
    const std::vector<InstanceId> instances = kernel.instances();
    const int typeId = anyType(input);
    if (instances.empty()) {
        kernel.manipulator(typeId)->addFilter();
        return;
    }
    const InstanceId instance = input.oneOf(instances);
    HkFilterManipulator& manipulator = *kernel.manipulator(instance.typeId);
    const HkKernelObjectDataDescr& descr = descriptor(instance.typeId);
    kernel.setCurrentFrame(input.byte());
    switch (input.number(0, 11)) {
        case 0:
            manipulator.addFilter();
            break;
        case 1:
            manipulator.enableFilter(instance.objectId, input.number(0, 1) == 1);
            break;
        case 2:
            manipulator.changeFilterAnimationState(instance.objectId, input.number(0, 1) == 1,
                                                   true);
            break;
        case 3:
            manipulator.removeFilter(manipulator.getFilterGui(instance.objectId));
            break;
        case 4: {
            const InstanceId before = input.oneOf(instances);
            manipulator.moveFilter(
                manipulator.getFilterGui(instance.objectId),
                input.number(0, 3) == 0
                    ? nullptr
                    : kernel.manipulator(before.typeId)->getFilterGui(before.objectId));
            break;
        }
        case 5: {
            std::vector<ChainItem> chain = currentChain();
            if (input.number(0, 1) == 0) std::reverse(chain.begin(), chain.end());
            if (input.number(0, 1) == 0) chain.pop_back();
            chain.push_back({{typeId, -1}, anyState(input, descriptor(typeId))});
            chain.back().state.name = anyVariant(input).toString();
            undo.push(new CmdSetChain(QStringLiteral("chain"), std::move(chain)));
            break;
        }
        case 6:
            undo.undo();
            break;
        case 7:
            undo.redo();
            break;
        case 8:
            now += 2000;  // a pause ends what the user does at a stretch
            break;
        case 9:
            for (QWidget* control :
                 manipulator.getFilterGui(instance.objectId)->findChildren<QWidget*>()) {
                if (input.number(0, 3) != 0) continue;
                if (auto* slider = qobject_cast<QAbstractSlider*>(control))
                    slider->setValue(anyInt(input));
                if (auto* button = qobject_cast<QAbstractButton*>(control)) button->click();
            }
            break;
        default: {
            HkParamKeyframeVector values = descr.createKeyframeVector();
            const int index = input.number(0, descr.paramCount() - 1);
            descr.setValue(values, descr.param(index).name,
                           anyValue(input, descr.param(index).type));
            if (input.number(0, 1) == 0) values.setFrameNumber(anyFrame(input));
            undo.push(new CmdChangeObject(instance.typeId, instance.objectId, values,
                                          input.number(0, 1) == 0));
        }
    }
}

/// The instance's element with damage is refused, or makes one more instance.
void editElement(Input& input, const InstanceId& instance) {
    HkFilterManipulator& manipulator = *KernelStore::instance().manipulator(instance.typeId);
    QDomDocument document;
    std::vector<QDomElement> nodes{manipulator.saveDataObject(instance.objectId, document)};
    for (std::size_t i = 0; i < nodes.size(); ++i)
        for (QDomElement child = nodes[i].firstChildElement(); !child.isNull();
             child = child.nextSiblingElement())
            nodes.push_back(child);
    for (int changes = input.number(1, 3); changes > 0; --changes) {
        const QString name =
            input.oneOf(QStringList{"name", "value", "frame", "held", "animated", "type"});
        QDomElement node = input.oneOf(nodes);
        const int change = input.number(0, 5);
        if (change == 0) node.removeAttribute(name);
        if (change == 1) node.appendChild(input.oneOf(nodes).cloneNode());
        if (change == 2) node.setTagName(QStringLiteral("other"));
        if (change >= 3) node.setAttribute(name, anyVariant(input).toString());
    }
    QString error;
    const auto state = readFilterElement(nodes.front(), descriptor(instance.typeId), &error);
    EXPECT_EQ(error.isEmpty(), state.has_value());
    std::vector<ChainItem> chain = currentChain();
    const HkKernelObjectData* made = manipulator.constructDataObject(nodes.front());
    EXPECT_EQ(made != nullptr, state.has_value());
    if (made) chain.push_back({{instance.typeId, currentChain().back().id.objectId}, *state});
    EXPECT_TRUE(currentChain() == chain);
}

/// Without an undo step: what the timeline and documents do.
void editKeys(Input& input) {
    KernelStore& kernel = KernelStore::instance();
    const std::vector<InstanceId> instances = kernel.instances();
    if (instances.empty()) return;
    const InstanceId instance = input.oneOf(instances);
    const HkKernelObjectDataDescr& descr = descriptor(instance.typeId);
    const int index = input.number(-1, descr.paramCount());
    const qint64 frame = anyFrame(input);
    const InstanceState before = *kernel.state(instance.objectId);
    const document::FrameSet frames = document::keyFrames(before);
    switch (input.number(0, 12)) {
        case 0:
            kernel.setKey(instance.objectId, index, frame, anyVariant(input),
                          input.number(0, 1) == 1);
            break;
        case 1:
            kernel.eraseKey(instance.objectId, index, frame);
            break;
        case 2:
            kernel.setBaseValue(instance.objectId, index, anyVariant(input));
            break;
        case 3:
            EXPECT_TRUE(
                kernel.setState(instance.objectId, document::withKeyAt(before, descr, frame)));
            break;
        case 4:
            EXPECT_TRUE(kernel.setState(instance.objectId, document::withoutKeys(before, frames)));
            break;
        case 5:
            EXPECT_TRUE(
                kernel.setState(instance.objectId, document::withKeysMoved(before, frames, frame)));
            break;
        case 6:
            kernel.move(instance.objectId, input.number(-1, 5));
            break;
        case 7:
            kernel.setAnimated(instance.objectId, input.number(0, 1) == 1);
            break;
        case 8: {
            const RenderLease lease;
            const int trial = kernel.addTrial(instance.typeId, before);
            EXPECT_TRUE(kernel.removeTrial(trial));
            break;
        }
        case 9:
            kernel.manipulator(instance.typeId)
                ->changeFilterAnimationState(instance.objectId, !before.animated, false);
            break;
        case 10:
            editElement(input, instance);
            break;
        default: {
            // All or nothing, and the edits that come back undo it.
            std::vector<ParamEdit> edits;
            for (int i = input.number(1, 3); i > 0; --i) {
                ParamEdit change;
                change.index = input.number(-1, descr.paramCount());
                if (input.number(0, 1) == 0) change.frame = frame + i;
                if (input.number(0, 3) != 0)
                    change.key = ParamKey{anyInt(input), input.number(0, 1) == 1};
                edits.push_back(change);
            }
            const auto back = kernel.apply(instance.objectId, edits);
            const InstanceState after = *kernel.state(instance.objectId);
            if (!back) {
                EXPECT_TRUE(after == before);
                break;
            }
            const auto forth = kernel.apply(instance.objectId, *back);
            ASSERT_TRUE(forth);
            EXPECT_TRUE(*kernel.state(instance.objectId) == before);
            ASSERT_TRUE(kernel.apply(instance.objectId, *forth));
            EXPECT_TRUE(*kernel.state(instance.objectId) == after);
        }
    }
    EXPECT_TRUE(stateFits(*kernel.state(instance.objectId), descr));
}

/// Each instance's element gives an instance of the same state.
void expectDocumentsKeepAll() {
    KernelStore& kernel = KernelStore::instance();
    QDomDocument document;
    for (const InstanceId& instance : kernel.instances()) {
        HkFilterManipulator& manipulator = *kernel.manipulator(instance.typeId);
        const QDomElement element = manipulator.saveDataObject(instance.objectId, document);
        ASSERT_TRUE(manipulator.constructDataObject(element));
        const int made = kernel.instances().back().objectId;
        EXPECT_TRUE(*kernel.state(made) == *kernel.state(instance.objectId));
        kernel.remove(made);
    }
}

}  // namespace

void store(Input input) {
    filters();
    KernelStore& kernel = KernelStore::instance();
    kernel.clear();
    QUndoStack& undo = *KernelStore::undoStackOf(*kernel.manipulator(kernel.types().front()));
    undo.clear();
    setGestureClock([] { return now; });
    std::optional<TestManipulator> guest;
    static QToolBox& toolBox = *new QToolBox;
    if (input.number(0, 1) == 1) {
        guest.emplace();
        guest->setUndoStack(&undo);
        guest->initManipulator(&toolBox);
    }
    const int mostEdits = 30;
    for (int left = mostEdits; left > 0 && !input.isEmpty() && input.number(0, 2) == 0; --left)
        editKeys(input);
    const std::vector<ChainItem> before = currentChain();
    for (int left = mostEdits; left > 0 && !input.isEmpty(); --left) edit(input, undo);
    while (undo.canRedo()) undo.redo();
    const std::vector<ChainItem> after = currentChain();
    expectDocumentsKeepAll();
    while (undo.canUndo()) undo.undo();
    EXPECT_TRUE(currentChain() == before);
    while (undo.canRedo()) undo.redo();
    EXPECT_TRUE(currentChain() == after);
    for (int left = mostEdits; left > 0 && !input.isEmpty(); --left) editKeys(input);
    // A filter that goes takes its instances along, and edits of them do nothing.
    guest.reset();
    while (undo.canUndo()) undo.undo();
    while (undo.canRedo()) undo.redo();
    for (const InstanceId& instance : kernel.instances())
        EXPECT_TRUE(kernel.manipulator(instance.typeId));
    undo.clear();
    kernel.clear();
    // The entries of what is gone go with the next turn of an event loop.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace fuzz
