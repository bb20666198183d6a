// A plug-in library with one good filter, or with the fault that kFault names.
#include <QObject>
#include <cstring>
#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "tests/host/plugins/Fault.h"
#include "tests/host/plugins/TestFilter.h"

namespace {

const char kIdentifier[] = "com.Quellophanica.plugin.FilterManipulatorPluginInterface/1.0";
const char kNextIdentifier[] = "com.Quellophanica.plugin.FilterManipulatorPluginInterface/2.0";

class FaultyManipulator : public TestManipulator {
public:
    explicit FaultyManipulator(int typeId) : TestManipulator(typeId, "From a library") {}

    void initManipulator(QToolBox* toolBox) override {
        if (kFault == Fault::NeverRegisters) return;
        TestManipulator::initManipulator(toolBox);
        if (kFault == Fault::InitThrows) throw std::runtime_error("init went wrong");
    }
    bool fillDefaultValues(const HkKernelObjectDataDescr* descr, HkParamKeyframeVector& values,
                           int reserved) override {
        return kFault != Fault::DefaultsFail &&
               TestManipulator::fillDefaultValues(descr, values, reserved);
    }
};

class Root : public QObject, public HkFilterManipulatorPluginInterface {
public:
    void* qt_metacast(const char* name) override {
        const char* const offered =
            kFault == Fault::OtherInterfaceVersion ? kNextIdentifier : kIdentifier;
        if (kFault != Fault::NoInterface && std::strcmp(name, offered) == 0)
            return static_cast<HkFilterManipulatorPluginInterface*>(this);
        return QObject::qt_metacast(name);
    }

    QStringList keys() override {
        switch (kFault) {
            case Fault::KeysThrow:
                throw std::runtime_error("keys went wrong");
            case Fault::NoKeys:
                return {};
            case Fault::EmptyKey:
                return {"First", ""};
            case Fault::SameKeyTwice:
                return {"First", "First"};
            case Fault::SecondCreateFails:
            case Fault::SameManipulatorTwice:
            case Fault::SameTypeIdTwice:
                return {"First", "Second"};
            default:
                return {"First"};
        }
    }

    bool create(const QString& key, HkFilterManipulator*& manipulator, QObject*) override {
        manipulator = nullptr;
        switch (kFault) {
            case Fault::CreateFails:
                return false;
            case Fault::CreateGivesNull:
                return true;
            case Fault::CreateThrows:
                throw std::runtime_error("create went wrong");
            case Fault::CreateThrowsNumber:
                throw 17;
            case Fault::SecondCreateFails:
                if (key == "Second") return false;
                break;
            case Fault::SameManipulatorTwice:
                if (key == "Second") {
                    manipulator = m_last;
                    return true;
                }
                break;
            default:
                break;
        }
        m_last = new FaultyManipulator(kFault == Fault::TypeIdZero ? 0 : 9101);
        manipulator = m_last;
        return true;
    }

private:
    HkFilterManipulator* m_last = nullptr;
};

}  // namespace

const char* verificationText() {
    switch (kFault) {
        case Fault::NullText:
            return nullptr;
        case Fault::EmptyText:
            return "";
        case Fault::TextThrows:
            throw std::runtime_error("text went wrong");
        case Fault::WrongText:
            return "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.8.0\ndebug=false\n"
                   "buildkey=Windows msvc release full-config";
        case Fault::LongerText:
            return "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.7.1\ndebug=false\n"
                   "buildkey=Windows msvc release full-config\n";
        default:
            return "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.7.1\ndebug=false\n"
                   "buildkey=Windows msvc release full-config";
    }
}

QObject* rootObject() {
    if (kFault == Fault::NullInstance) return nullptr;
    if (kFault == Fault::InstanceThrows) throw std::runtime_error("instance went wrong");
    static Root root;
    return &root;
}
