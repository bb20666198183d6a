// A plug-in library with one good filter, or with the fault that its file name names.
#include <dlfcn.h>

#include <QFileInfo>
#include <QObject>
#include <cstring>
#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

/// Whether the library that this code was loaded from is called so.
bool isCalled(const char* fault) {
    static const QString name = [] {
        Dl_info library;
        dladdr(reinterpret_cast<void*>(&isCalled), &library);
        return QFileInfo(QFile::decodeName(library.dli_fname)).baseName();
    }();
    return name == QLatin1String(fault);
}

void throwIfCalled(const char* fault) {
    if (isCalled(fault)) throw std::runtime_error(std::string(fault) + " went wrong");
}

class FaultyManipulator : public TestManipulator {
public:
    explicit FaultyManipulator(int typeId) : TestManipulator(typeId, "From a library") {}

    void initManipulator(QToolBox* toolBox) override {
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
        throwIfCalled("KeysThrow");
        if (isCalled("NoKeys")) return {};
        if (isCalled("EmptyKey")) return {"First", ""};
        if (isCalled("SameKeyTwice")) return {"First", "First"};
        for (const char* fault : {"SecondCreateFails", "SameManipulatorTwice", "SameTypeIdTwice"})
            if (isCalled(fault)) return {"First", "Second"};
        return {"First"};
    }

    bool create(const QString& key, HkFilterManipulator*& manipulator, QObject*) override {
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
    throwIfCalled("InstanceThrows");
    if (isCalled("NullInstance")) return nullptr;
    static Root root;
    return &root;
}
