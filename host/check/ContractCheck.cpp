#include "host/check/ContractCheck.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/imaging/HkImageAccess.h"
#include "host/kernel/HeapWatch.h"
#include "host/kernel/KernelStore.h"

namespace check {

namespace {

using Picture = std::unique_ptr<HkImage>;
using Samples = std::vector<unsigned char>;
using OwnedFilter = std::unique_ptr<HkImageFilter>;

const int kNoInstance = -5;
const unsigned int kRowAlignment = 4;

/// What breaks a promise; caught in this file.
class Fault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void require(bool kept, const std::string& otherwise) {
    if (!kept) throw Fault(otherwise);
}

/// Colours with black blocks: objects and background for any filter.
unsigned char sampleAt(int x, int y, int channel, int seed) {
    const bool isBlack = (x / 4 + y / 4) % 3 == 0;
    return static_cast<unsigned char>(isBlack ? 0 : (x * 29 + y * 53 + channel * 97 + seed * 31));
}

struct Shape {
    int width, height, channels;

    std::string text() const {
        return std::to_string(width) + " x " + std::to_string(height) + ", " +
               std::to_string(channels) + (channels == 1 ? " channel" : " channels");
    }
};

Picture makePicture(const Shape& shape, int seed = 0) {
    auto picture = std::make_unique<HkImage>(shape.width, shape.height, shape.channels, nullptr,
                                             kRowAlignment);
    if (!picture->data) throw std::bad_alloc();
    for (int y = 0; y < shape.height; ++y)
        for (int i = 0; i < shape.width * shape.channels; ++i)
            picture->data[static_cast<std::ptrdiff_t>(y) * picture->step + i] =
                sampleAt(i / shape.channels, y, i % shape.channels, seed);
    return picture;
}

/// The samples of the first width x height pixels, after sizes and channels.
Samples samplesOf(const HkImage& picture, int width, int height) {
    Samples samples = {static_cast<unsigned char>(picture.channels)};
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = picture.data + static_cast<std::ptrdiff_t>(y) * picture.step;
        samples.insert(samples.end(), row, row + width * picture.channels);
    }
    return samples;
}

Samples regionOf(const HkImage& picture) {
    return samplesOf(picture, picture.roiWidth, picture.roiHeight);
}

/// Hands the picture over as a host does, and checks what comes back.
Picture rendered(HkImageFilter& filter, Picture picture) {
    const int width = picture->width, height = picture->height;
    const int roiWidth = picture->roiWidth, roiHeight = picture->roiHeight;
    Picture result(filter.processImage(picture.release(), 0));
    require(result != nullptr, "gives no picture");
    if (const char* fault = HkImageAccess::faultOf(*result))
        throw Fault(std::string("gives a picture that has ") + fault);
    require(result->width == width && result->height == height, "changes the size");
    require(result->roiWidth == roiWidth && result->roiHeight == roiHeight, "changes the region");
    return result;
}

/// One filter type, applied anew for each promise.
class Subject {
public:
    Subject(HkFilterManipulator& manipulator, QUndoStack& undo)
        : m_manipulator(manipulator),
          m_undo(undo),
          m_typeId(KernelStore::filterTypeOf(manipulator)) {
        clear();
        m_objectId = manipulator.addFilter();
        require(m_objectId > 0, "cannot be applied");
        m_entry = manipulator.getFilterGui(m_objectId);
        m_undo.clear();
    }
    ~Subject() { clear(); }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    HkFilterManipulator& manipulator() { return m_manipulator; }
    QUndoStack& undo() { return m_undo; }
    int typeId() const { return m_typeId; }
    int objectId() const { return m_objectId; }

    OwnedFilter filter(int objectId) {
        OwnedFilter made(m_manipulator.createImageFilter(objectId));
        require(made != nullptr, "makes no filter for frames");
        return made;
    }
    OwnedFilter filter() { return filter(m_objectId); }

    QWidget& page() {
        require(m_entry && m_entry->controlPage, "makes no control page");
        return *m_entry->controlPage;
    }

    std::vector<QVariant> values() const {
        std::vector<QVariant> values;
        const auto* object = HkFXKernelData::getInstance()->getObject(m_typeId, m_objectId);
        require(object != nullptr, "its instance is gone");
        for (const HkParamKeyframe& value : object->getKeyframesAt(0))
            values.push_back(value.getValue());
        return values;
    }

    /// Everything on the page to its other end, so that filters that do nothing at first do work.
    void changeAll() {
        for (auto* slider : page().findChildren<QAbstractSlider*>())
            slider->setValue(slider->maximum());
    }

private:
    void clear() {
        m_undo.clear();
        KernelStore::instance().clear();
        KernelStore::instance().setCurrentFrame(0);
    }

    HkFilterManipulator& m_manipulator;
    QUndoStack& m_undo;
    const int m_typeId;
    int m_objectId = -1;
    FxGuiImageFilter* m_entry = nullptr;
};

// --- The promises ---

void saysWhatItIs(Subject& subject) {
    HkFilterManipulator& manipulator = subject.manipulator();
    require(subject.typeId() > 0, "its type id is below 1");
    require(!manipulator.filterTitle().isEmpty(), "it has no title");
    require(!manipulator.filterDescription().isEmpty(), "it has no description");
    require(subject.filter()->filterTypeId() == subject.typeId(),
            "its filter for frames has another type id");
    const auto* descr = HkFXKernelData::getInstance()->getDataDescriptor(subject.typeId());
    require(descr && descr->paramCount() > 0, "it declares no parameters");
    require(descr->param(0).name == QLatin1String("Enabled") &&
                descr->param(0).type == QMetaType::Int &&
                descr->param(0).kind == ParamDescr::Constant,
            "its first parameter is not \"Enabled\", an int for all frames");
}

void fillsDefaults(Subject& subject) {
    const auto* descr = HkFXKernelData::getInstance()->getDataDescriptor(subject.typeId());
    HkParamKeyframeVector values = descr->createKeyframeVector();
    require(subject.manipulator().fillDefaultValues(descr, values, 0), "it refuses to");
    require(values.size() == descr->paramCount(), "their number is not that of the parameters");
    for (int i = 0; i < values.size(); ++i)
        require(int(values.at(i).getValue().userType()) == int(descr->param(i).type),
                "that of \"" + descr->param(i).name.toStdString() + "\" is of another type");
    require(values.at(0).getValue().toInt() != 0, "it is switched off when it is new");
    HkParamKeyframeVector wrong = descr->createKeyframeVector();
    wrong.clear();
    static_cast<void>(subject.manipulator().fillDefaultValues(descr, wrong, 0));
    require(wrong.isEmpty(), "it changes a vector of another size");
}

/// One control, edited: one undo step, there and back again, and the page shows it.
template <typename Edit, typename Shown>
bool survivesUndo(Subject& subject, const QString& name, Edit edit, Shown shown) {
    const std::string control = "\"" + name.toStdString() + "\"";
    const auto before = subject.values();
    const int shownBefore = shown();
    subject.undo().clear();
    edit();
    const auto after = subject.values();
    const int shownAfter = shown();
    const bool hasChanged = after != before;
    require(
        subject.undo().count() == (hasChanged ? 1 : 0),
        "an edit of " + control + " is " + std::to_string(subject.undo().count()) + " undo steps");
    if (!hasChanged) return false;
    subject.undo().undo();
    require(subject.values() == before, "undo does not bring back what " + control + " changed");
    require(shown() == shownBefore, "after undo the page does not show " + control + " as it was");
    subject.undo().redo();
    require(subject.values() == after, "redo does not repeat what " + control + " changed");
    require(shown() == shownAfter, "after redo the page does not show " + control + " as it was");
    require(subject.undo().count() == 1, "showing " + control + " is taken for an edit");
    subject.undo().undo();
    return true;
}

void pageAndUndoAgree(Subject& subject) {
    int changing = 0, controls = 0;
    for (auto* slider : subject.page().findChildren<QAbstractSlider*>()) {
        ++controls;
        for (const int end : {slider->minimum(), slider->maximum()})
            changing += survivesUndo(
                subject, slider->objectName(), [&] { slider->setValue(end); },
                [&] { return slider->value(); });
    }
    for (auto* button : subject.page().findChildren<QAbstractButton*>()) {
        ++controls;
        changing += survivesUndo(
            subject, button->text(), [&] { button->click(); }, [&] { return button->isChecked(); });
    }
    require(controls == 0 || changing > 0, "no control of its page changes anything");
}

void givesNullForNull(Subject& subject) {
    require(!subject.filter()->processImage(nullptr, 0), "null becomes a picture");
    require(!subject.filter(kNoInstance)->processImage(nullptr, 0),
            "null becomes a picture when the instance is unknown");
}

void requirePassedThrough(HkImageFilter& filter) {
    for (int channels = 1; channels <= 4; ++channels) {
        Picture picture = makePicture({13, 9, channels});
        const Samples before = regionOf(*picture);
        HkImage* const given = picture.release();
        picture.reset(filter.processImage(given, 0));
        require(picture.get() == given, "it gives another picture");
        require(regionOf(*picture) == before, "it changes the picture");
    }
}

void passesUnknownInstancesThrough(Subject& subject) {
    requirePassedThrough(*subject.filter(kNoInstance));
}

void passesThroughWhenDisabled(Subject& subject) {
    subject.changeAll();
    KernelStore::instance().setBaseValue(subject.objectId(), 0, 0);
    requirePassedThrough(*subject.filter());
}

/// As it is applied, and with the page's sliders at their ends.
template <typename Check>
void withBothSettings(Subject& subject, Check check) {
    check();
    subject.changeAll();
    check();
}

/// A fresh filter gives the same picture again.
void requireRepeatable(Subject& subject, const Shape& shape) {
    try {
        const Picture first = rendered(*subject.filter(), makePicture(shape));
        const Picture second = rendered(*subject.filter(), makePicture(shape));
        require(regionOf(*first) == regionOf(*second), "gives another picture the second time");
    } catch (const Fault& fault) {
        throw Fault(shape.text() + ": it " + fault.what());
    }
}

void takesOneToFourChannels(Subject& subject) {
    withBothSettings(subject, [&] {
        for (int channels = 1; channels <= 4; ++channels)
            requireRepeatable(subject, {32, 24, channels});
    });
}

void takesOddSizes(Subject& subject) {
    const Shape shapes[] = {{1, 1, 1}, {1, 1, 3}, {1, 17, 3},  {19, 1, 1}, {2, 2, 4},
                            {3, 5, 3}, {7, 3, 1}, {31, 33, 3}, {65, 2, 1}, {17, 129, 1}};
    withBothSettings(subject, [&] {
        for (const Shape& shape : shapes) requireRepeatable(subject, shape);
    });
}

void keepsToTheRegion(Subject& subject) {
    const int width = 33, height = 21, roiWidth = 20, roiHeight = 13;
    withBothSettings(subject, [&] {
        for (const int channels : {1, 3}) {
            Samples results[2];
            for (const int seed : {0, 1}) {
                // The same region, and other pixels around it.
                Picture picture = makePicture({width, height, channels}, seed);
                const Picture inside = makePicture({width, height, channels});
                for (int y = 0; y < roiHeight; ++y)
                    std::copy_n(inside->data + static_cast<std::ptrdiff_t>(y) * inside->step,
                                roiWidth * channels,
                                picture->data + static_cast<std::ptrdiff_t>(y) * picture->step);
                picture->roiWidth = roiWidth;
                picture->roiHeight = roiHeight;
                picture = rendered(*subject.filter(), std::move(picture));
                results[seed] = regionOf(*picture);
            }
            require(results[0] == results[1], "pixels outside the region show in the result");
        }
    });
}

void forgetsEarlierFrames(Subject& subject) {
    withBothSettings(subject, [&] {
        const Shape shapes[] = {{32, 24, 3}, {45, 18, 1}, {32, 24, 1}, {20, 24, 3}};
        const OwnedFilter filter = subject.filter();
        for (int round = 0; round < 2; ++round)
            for (std::size_t i = 0; i < std::size(shapes); ++i) {
                const Shape& shape = shapes[round == 0 ? i : std::size(shapes) - 1 - i];
                const Picture alone = rendered(*subject.filter(), makePicture(shape, round));
                const Picture after = rendered(*filter, makePicture(shape, round));
                require(regionOf(*alone) == regionOf(*after),
                        shape.text() + ": the result depends on the frames before");
            }
    });
}

void servesSeveralThreads(Subject& subject) {
    const int rounds = 20;
    const Shape shapes[] = {{33, 20, 3}, {33, 20, 1}, {18, 27, 3}};
    subject.changeAll();
    std::vector<Samples> expected;
    for (const Shape& shape : shapes)
        expected.push_back(regionOf(*rendered(*subject.filter(), makePicture(shape))));
    const OwnedFilter shared = subject.filter();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < std::size(shapes); ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                const std::size_t which = (i + static_cast<std::size_t>(round)) % std::size(shapes);
                try {
                    const RenderLease lease;
                    if (regionOf(*rendered(*shared, makePicture(shapes[which]))) != expected[which])
                        ++wrong;
                } catch (...) {
                    ++wrong;
                }
            }
        });
    for (std::thread& thread : threads) thread.join();
    require(wrong == 0, std::to_string(wrong) + " frames of " +
                            std::to_string(rounds * int(std::size(shapes))) +
                            " came out wrong when three threads shared a filter");
}

void survivesShortMemory(Subject& subject) {
    subject.changeAll();
    const unsigned long most = 2000;
    for (const Shape& shape : {Shape{32, 24, 3}, Shape{32, 24, 1}}) {
        const Samples expected = regionOf(*rendered(*subject.filter(), makePicture(shape)));
        for (unsigned long failing = 1, seen = failing; seen >= failing && failing < most;
             ++failing) {
            const OwnedFilter filter = subject.filter();
            HkImage* const given = makePicture(shape).release();
            Picture result;
            bool isThrown = false;
            failAllocation(failing);
            try {
                result.reset(filter->processImage(given, 0));
            } catch (const std::bad_alloc&) {
                isThrown = true;  // which a host understands
            }
            seen = failAllocation(0);
            const std::string when = "when allocation " + std::to_string(failing) + " failed";
            require(isThrown || (result && !HkImageAccess::faultOf(*result)),
                    "gives what is no picture " + when);
            const Picture next = rendered(*filter, makePicture(shape));
            require(regionOf(*next) == expected, "the frame after is wrong " + when);
        }
    }
}

const struct {
    const char* promise;
    void (*check)(Subject&);
} kChecks[] = {{"registration", saysWhatItIs},
               {"defaults", fillsDefaults},
               {"page and undo", pageAndUndoAgree},
               {"null image", givesNullForNull},
               {"unknown instance", passesUnknownInstancesThrough},
               {"disabled", passesThroughWhenDisabled},
               {"1 to 4 channels", takesOneToFourChannels},
               {"odd sizes", takesOddSizes},
               {"regions", keepsToTheRegion},
               {"order of frames", forgetsEarlierFrames},
               {"threads", servesSeveralThreads},
               {"short memory", survivesShortMemory}};

std::string faultFoundBy(void (*check)(Subject&), HkFilterManipulator& manipulator,
                         QUndoStack& undo) {
    try {
        Subject subject(manipulator, undo);
        check(subject);
        return {};
    } catch (const Fault& fault) {
        return fault.what();
    } catch (const std::exception& error) {
        return std::string("throws an exception: ") + error.what();
    } catch (...) {
        return "throws an exception";
    }
}

}  // namespace

std::vector<std::string> promises() {
    std::vector<std::string> names;
    for (const auto& row : kChecks) names.emplace_back(row.promise);
    return names;
}

std::vector<Finding> checkFilter(HkFilterManipulator& manipulator, QUndoStack& undo,
                                 const std::function<void(const std::string&)>& onBegin) {
    const int typeId = KernelStore::filterTypeOf(manipulator);
    const std::string key = KernelStore::instance().filterKey(typeId).toStdString();
    std::vector<Finding> findings;
    for (const auto& row : kChecks) {
        if (onBegin) onBegin(row.promise);
        findings.push_back({key, row.promise, faultFoundBy(row.check, manipulator, undo)});
    }
    return findings;
}

}  // namespace check
