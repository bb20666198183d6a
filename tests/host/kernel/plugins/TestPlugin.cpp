// A plug-in library with one good filter, or with the fault that its file name names: a word, or
// "deed-place", what it does to the program and where.
#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <QFileInfo>
#include <QObject>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "framework/contract/ImageProcessor/HkImage.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

/// What the library that this code was loaded from is called.
const QString& libraryName() {
    static const QString name = [] {
        Dl_info library;
        dladdr(reinterpret_cast<void*>(&libraryName), &library);
        return QFileInfo(QFile::decodeName(library.dli_fname)).baseName();
    }();
    return name;
}

bool isCalled(const char* fault) {
    return libraryName() == QLatin1String(fault);
}

/// Does the deed that belongs to this place, if any.
void act(const char* place) {
    const QStringList words = libraryName().split('-');
    if (words.size() != 2 || words.at(1) != QLatin1String(place)) return;
    const QString deed = words.at(0);
    if (deed == "exit0") std::exit(0);
    if (deed == "exit3") std::exit(3);
    if (deed == "leave") _exit(0);
    if (deed == "abort") std::abort();
    if (deed == "crash") raise(SIGSEGV);
    if (deed == "kill") raise(SIGKILL);
    if (deed == "stopped") raise(SIGTERM);
    if (deed == "sleep")
        for (;;) pause();
    if (deed == "loop")
        for (volatile unsigned turn = 0;; turn = turn + 1) {
        }
    if (deed == "recurse") {
        volatile char block[1 << 16];
        for (volatile char& byte : block) byte = 1;
        act(place);
        block[0] = 2;
    }
    if (deed == "text") throw std::runtime_error("a text");
    if (deed == "number") throw 17;
}

const bool g_initialised = (act("initialiser"), true);
struct Finaliser {
    ~Finaliser() { act("finaliser"); }
} g_finaliser;

void throwIfCalled(const char* fault) {
    if (isCalled(fault)) throw std::runtime_error(std::string(fault) + " went wrong");
}

/// Gives a picture that cannot be, or none, or does what the name says.
class FaultyImageFilter : public HkImageFilter {
public:
    FaultyImageFilter(int typeId, int instance) : HkImageFilter(instance), m_typeId(typeId) {}
    ~FaultyImageFilter() override { act("destroy"); }
    int filterTypeId() override { return m_typeId; }

    HkImage* processImage(HkImage* image, __int64 frame) override {
        act("process");
        if (!image) return isCalled("NullBecomesPicture") ? new HkImage : nullptr;
        const auto* object = HkFXKernelData::getInstance()->getObject(m_typeId, objectId);
        const bool isOn = object && object->getKeyframesAt(frame).at(0).getValue().toInt() != 0;
        if (!isOn && !isCalled("IgnoresSwitch")) return image;
        if (isCalled("IgnoresSwitch")) image->data[0] ^= 255;
        if (isCalled("Remembers"))
            image->data[0] = static_cast<unsigned char>(image->data[0] + m_frames++);
        if (isCalled("LooksOutside"))
            image->data[0] = image->data[(image->height - 1) * image->step + image->width - 1];
        if (isCalled("RefusesTwoChannels") && image->channels == 2) image->channels = 0;
        if (isCalled("TrustsMemory")) {
            volatile char* const block = static_cast<char*>(std::malloc(64));
            block[0] = 1;
            std::free(const_cast<char*>(block));
        }
        if (isCalled("GivesNothing") || isCalled("GivesEmptyPicture")) {
            delete image;
            return isCalled("GivesNothing") ? nullptr : new HkImage;
        }
        const struct {
            const char* fault;
            int HkImage::*member;
            int value;
        } rows[] = {{"StepZero", &HkImage::step, 0},
                    {"StepNegative", &HkImage::step, -image->step},
                    {"StepShort", &HkImage::step, image->width - 1},
                    {"StepLong", &HkImage::step, 4 * image->step},
                    {"RegionWider", &HkImage::roiWidth, image->width + 1},
                    {"RegionHigher", &HkImage::roiHeight, image->height + 1},
                    {"RegionEmpty", &HkImage::roiWidth, 0},
                    {"RegionNegative", &HkImage::roiHeight, -5},
                    {"WidthZero", &HkImage::width, 0},
                    {"WidthHuge", &HkImage::width, 1 << 30},
                    {"HeightNegative", &HkImage::height, -1},
                    {"HeightHuge", &HkImage::height, 1 << 30},
                    {"HeightMore", &HkImage::height, image->height + 40},
                    {"ChannelsNone", &HkImage::channels, 0},
                    {"ChannelsFive", &HkImage::channels, 5},
                    {"ChannelsNegative", &HkImage::channels, -3}};
        for (const auto& row : rows)
            if (isCalled(row.fault)) image->*row.member = row.value;
        if (isCalled("NullData")) image->data = nullptr;
        return image;
    }

private:
    int m_typeId;
    int m_frames = 0;
};

class FaultyManipulator : public TestManipulator {
public:
    explicit FaultyManipulator(int typeId) : TestManipulator(typeId, "From a library") {}
    ~FaultyManipulator() override { act("end"); }

    void updateGuiFromKernel(int objectId, const HkKernelObjectData* object) override {
        if (!isCalled("ShowsNothing")) TestManipulator::updateGuiFromKernel(objectId, object);
    }
    HkImageFilter* createImageFilter(int instance) override {
        act("filter");
        return isCalled("NoFilter") ? nullptr : new FaultyImageFilter(filterType, instance);
    }
    QWidget* createFilterGui(QWidget* parent) override {
        act("page");
        return isCalled("NoPage") ? nullptr : TestManipulator::createFilterGui(parent);
    }

    void initManipulator(QToolBox* toolBox) override {
        act("register");
        if (isCalled("NeverRegisters")) return;
        TestManipulator::initManipulator(toolBox);
        throwIfCalled("InitThrows");
    }
    bool fillDefaultValues(const HkKernelObjectDataDescr* descr, HkParamKeyframeVector& values,
                           int reserved) override {
        return !isCalled("DefaultsFail") &&
               TestManipulator::fillDefaultValues(descr, values, reserved);
    }
};

class Root : public QObject, public HkFilterManipulatorPluginInterface {
public:
    void* qt_metacast(const char* name) override {
        const std::string version = isCalled("OtherInterfaceVersion") ? "2.0" : "1.0";
        if (!isCalled("NoInterface") &&
            name == "com.Quellophanica.plugin.FilterManipulatorPluginInterface/" + version)
            return static_cast<HkFilterManipulatorPluginInterface*>(this);
        return QObject::qt_metacast(name);
    }

    QStringList keys() override {
        act("keys");
        throwIfCalled("KeysThrow");
        if (isCalled("NoKeys")) return {};
        if (isCalled("EmptyKey")) return {"First", ""};
        if (isCalled("SameKeyTwice")) return {"First", "First"};
        for (const char* fault : {"SecondCreateFails", "SameManipulatorTwice", "SameTypeIdTwice"})
            if (isCalled(fault)) return {"First", "Second"};
        return {"First"};
    }

    bool create(const QString& key, HkFilterManipulator*& manipulator, QObject*) override {
        act("create");
        throwIfCalled("CreateThrows");
        if (isCalled("CreateThrowsNumber")) throw 17;
        manipulator = nullptr;
        if (isCalled("CreateFails") || (isCalled("SecondCreateFails") && key == "Second"))
            return false;
        if (isCalled("CreateGivesNull")) return true;
        if (!isCalled("SameManipulatorTwice") || key == "First")
            m_last = new FaultyManipulator(isCalled("TypeIdZero") ? 0 : 9101);
        manipulator = m_last;
        return true;
    }

private:
    HkFilterManipulator* m_last = nullptr;
};

}  // namespace

const char* verificationText() {
    act("question");
    throwIfCalled("TextThrows");
    if (isCalled("NullText")) return nullptr;
    if (isCalled("EmptyText")) return "";
    static std::string text =
        "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.7.1\ndebug=false\n"
        "buildkey=Windows msvc release full-config";
    if (isCalled("WrongText")) text.replace(text.find("4.7.1"), 5, "4.8.0");
    if (isCalled("LongerText")) text += '\n';
    return text.c_str();
}

QObject* rootObject() {
    act("object");
    throwIfCalled("InstanceThrows");
    if (isCalled("NullInstance")) return nullptr;
    static Root root;
    return &root;
}
